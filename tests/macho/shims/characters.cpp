#include "tests/macho/shims/characters.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <cctype>
#include <cstddef>
#include <cstdlib>

namespace macho {

namespace {

// The start of Apple's _RuneLocale. Programs read the kinds, through macros.
struct DarwinRunes {
    char magic[8] = {'R', 'u', 'n', 'e', 'M', 'a', 'g', 'A'};
    char encoding[32] = "NONE";
    void *convert[2] = {};
    std::int32_t invalid = 0;
    std::uint32_t kinds[256] = {};
    std::int32_t lower[256] = {};
    std::int32_t upper[256] = {};

    DarwinRunes();
};
static_assert(offsetof(DarwinRunes, kinds) == 60);

// Programs here stay in the C locale, as they do on macOS until they call setlocale().
DarwinRunes::DarwinRunes() {
    struct Kind {
        int (*test)(int);
        std::uint32_t bit;
    };
    constexpr Kind all[] = {
        {std::isalpha, darwinAlpha},     {std::iscntrl, darwinControl},
        {std::isdigit, darwinDigit},     {std::isgraph, darwinGraph},
        {std::islower, darwinLower},     {std::ispunct, darwinPunctuation},
        {std::isspace, darwinSpace},     {std::isupper, darwinUpper},
        {std::isxdigit, darwinHexDigit}, {std::isblank, darwinBlank},
        {std::isprint, darwinPrint},
    };
    for (int character = 0; character < 256; ++character) {
        lower[character] = std::tolower(character);
        upper[character] = std::toupper(character);
        for (const Kind &kind : all)
            if (kind.test(character) != 0)
                kinds[character] |= kind.bit;
    }
}

const DarwinRunes runes;

// Called for what is not ASCII.
int shimHasKind(int character, unsigned long kinds) {
    if (character < 0 || character > 255)
        refuse("the kind of the character " + std::to_string(character));
    return static_cast<int>(runes.kinds[character] & kinds);
}

} // namespace

const std::uint32_t *darwinCharacters() {
    return runes.kinds;
}

void addCharacters(Imports &imports) {
    imports.add(libSystem, "__DefaultRuneLocale", &runes);
    imports.add(libSystem, "___maskrune", shimHasKind);
    imports.add(libSystem, "___tolower", static_cast<int (*)(int)>(std::tolower));
    imports.add(libSystem, "___toupper", static_cast<int (*)(int)>(std::toupper));
    imports.add(libSystem, "_strtold",
                forwarded<static_cast<long double (*)(const char *, char **)>(std::strtold)>);
    imports.add(libSystem, "_strtoll", forwarded<std::strtoll>);
    imports.add(libSystem, "_strtoul", forwarded<std::strtoul>);
    imports.add(libSystem, "_strtoull", forwarded<std::strtoull>);
}

} // namespace macho
