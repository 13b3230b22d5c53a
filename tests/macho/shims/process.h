// How far the process has come.
#pragma once

namespace macho {

// The library has ended the process: what it then destroys may still be in use by the thread that
// its signal handler has interrupted.
bool libraryIsExiting();

} // namespace macho
