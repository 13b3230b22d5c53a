// What an X server that answers brings for mirroring.
#pragma once

#include "tools/mirrorctl/doctor/diagnosis.h"
#include "tools/mirrorctl/xServer.h"

#include <vector>

namespace mirrorctl {

// By the session's variables; says nothing of the X server.
bool isWaylandSession();

// Looks at the kind of session, whether and in which format the screen can be read, and the
// extensions. `isLocal`: the server is reached over a socket of this machine.
std::vector<Check> examineX(const XServer &server, bool isLocal);

} // namespace mirrorctl
