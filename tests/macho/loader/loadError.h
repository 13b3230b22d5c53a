// What is wrong with a file that cannot be loaded, in words that name the place.
#pragma once

#include <stdexcept>
#include <string>

namespace macho {

class LoadError : public std::runtime_error {
public:
    explicit LoadError(const std::string &what) : std::runtime_error(what) {}
};

} // namespace macho
