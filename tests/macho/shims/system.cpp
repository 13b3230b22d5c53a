#include "tests/macho/shims/system.h"

namespace macho {

void addSystem(Imports &imports) {
    addErrors(imports);
    addInterfaces(imports);
    addMemory(imports);
    addOutput(imports);
    addProcess(imports);
    addSignals(imports);
    addSockets(imports);
    addThreads(imports);
}

} // namespace macho
