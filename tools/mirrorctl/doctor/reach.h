// Whether devices can be reached, as far as this machine can tell.
#pragma once

#include "tools/config/configDocument.h"
#include "tools/mirrorctl/doctor/diagnosis.h"

#include <vector>

namespace mirrorctl {

// Looks up the way to each device and sends it a datagram about no panel, which changes nothing;
// then waits for somebody to object, for as long as networks take to find out that an address has
// nobody: 3.5 s, or 0.2 s when all addresses are of this machine's loopback. Lights do not answer,
// so silence is the best there is. One check a device, in their order.
std::vector<Check> tryDevices(const std::vector<config::DeviceEntry> &devices);

} // namespace mirrorctl
