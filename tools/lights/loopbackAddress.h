// For panelwall/web/ only, until it uses address.h.
#pragma once

#include "tools/lights/address.h"

namespace panelwall {
using lights::parseEndpoint;
}
