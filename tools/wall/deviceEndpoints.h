// The socket addresses of a document's devices: no two alike, and all on this machine if need be.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/lights/address.h"

#include <vector>

namespace panelwall {

using lights::Endpoint;

// Which addresses will do: loopback (127.0.0.0/8 or ::1), or any.
enum class Reach { Loopback, Anywhere };

// The endpoint of every device, in order. Appends a problem for each device whose address does not
// parse, is out of reach, or has been taken with its port by a device before. The endpoints are
// complete exactly when no problem was found.
std::vector<Endpoint> findEndpoints(const config::Document &document,
                                    std::vector<config::Problem> &problems,
                                    Reach reach = Reach::Loopback);

} // namespace panelwall
