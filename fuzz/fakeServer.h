// A fake X server that replies with the fuzzer's input. It replaces the few core functions of the
// client library that handle every request, reply and event.
#pragma once

#include <cstddef>
#include <cstdint>

class FuzzedDataProvider;

namespace fuzz {

// From now on the server takes its replies from `input`, which must stay valid. When the input is
// used up, the connection fails.
void setServer(FuzzedDataProvider &input);

} // namespace fuzz
