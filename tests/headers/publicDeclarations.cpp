// Compares the system's headers, ours or Apple's, with the table of documented declarations.
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CGWindow.h>
#include <CoreGraphics/CoreGraphics.h>
#include <IOSurface/IOSurface.h>
#include <cstddef>
#include <cstdint>
#include <dispatch/dispatch.h>
#include <type_traits>

namespace {

template <class Type, bool isEnum = std::is_enum_v<Type>> struct Underlying { using type = Type; };
template <class Type> struct Underlying<Type, true> { using type = std::underlying_type_t<Type>; };

} // namespace

#define TYPE(name, document, ...) static_assert(std::is_same_v<name, __VA_ARGS__>, document);
#define NUMBER_TYPE(name, document, integer)                                                       \
    static_assert(std::is_same_v<Underlying<name>::type, integer>, document);
#define CONSTANT(name, document, value) static_assert(name == value, document);
#define FIELD(structure, field, document, offset, ...)                                             \
    static_assert(offsetof(structure, field) == offset, document);                                 \
    static_assert(std::is_same_v<decltype(structure::field), __VA_ARGS__>, document);
#define SIZE(structure, document, bytes) static_assert(sizeof(structure) == bytes, document);
#define VARIABLE(name, document, ...)                                                              \
    static_assert(std::is_same_v<decltype(name), __VA_ARGS__>, document);
// A declaration may also be noexcept.
#define FUNCTION(name, document, ...)                                                              \
    static_assert(std::is_convertible_v<decltype(&name), std::add_pointer_t<__VA_ARGS__>>,         \
                  document);

#include "tests/headers/publicDeclarations.inc"
