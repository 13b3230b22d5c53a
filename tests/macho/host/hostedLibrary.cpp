#include "tests/macho/host/hostedLibrary.h"
#include "tests/macho/host/frameworks.h"
#include "tests/macho/shims/cxxRuntime.h"
#include "tests/macho/shims/system.h"

namespace macho {

const Imports &x11Imports() {
    static const Imports imports = [] {
        Imports all;
        addSystem(all);
        addCxxRuntime(all);
        addX11Frameworks(all);
        return all;
    }();
    return imports;
}

} // namespace macho
