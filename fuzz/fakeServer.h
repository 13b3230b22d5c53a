// An X server that answers with whatever it is told to: the few core functions of the client
// library through which every request, reply and event goes.
#pragma once

#include <cstddef>
#include <cstdint>

class FuzzedDataProvider;

namespace fuzz {

// From now on the server answers from `input`, which outlives its use. Once that is used up, the
// connection has failed.
void setServer(FuzzedDataProvider &input);

} // namespace fuzz
