#include "tests/building/treeCopy.h"

#include <stdexcept>

namespace test {

TreeCopy::TreeCopy() {
    // Neither build folders nor the tests, which would make it large.
    const Ending made =
        shell("mkdir -p " + at("tree") +
              " && cd " SOURCE " && cp -R "
              "CHANGELOG.md CMakeLists.txt LICENSE README.md cmake colour copyright "
              "device docs examples mirror net platform scripts tools " +
              at("tree"));
    if (made.status != 0)
        throw std::runtime_error(made.out);
}

} // namespace test
