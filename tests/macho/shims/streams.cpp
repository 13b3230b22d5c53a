// What of streams and locales has another layout on macOS: a position holds the state of a
// conversion, of 128 bytes, and a kind of characters is a number of 32 bits.
#include "tests/macho/shims/characters.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <filesystem>
#include <istream>
#include <locale>

namespace macho {

namespace {

struct Position {
    char state[128];
    std::int64_t offset;
};

// The virtual functions of a stream buffer that return positions.
struct BufferFunctions {
    void *others[4];
    Position (*seekOffset)(std::streambuf *, std::int64_t offset, int from, unsigned mode);
    Position (*seekPosition)(std::streambuf *, Position position, unsigned mode);
};

const BufferFunctions &functionsOf(std::streambuf *buffer) {
    return **reinterpret_cast<BufferFunctions **>(buffer);
}

constexpr Position nowhere = {{}, -1};

Position noOffset(std::streambuf *, std::int64_t, int, unsigned) {
    return nowhere;
}

Position noPosition(std::streambuf *, Position, unsigned) {
    return nowhere;
}

Position tell(std::istream *stream) {
    const std::istream::sentry sentry(*stream, true);
    if (!sentry)
        return nowhere;
    return functionsOf(stream->rdbuf()).seekOffset(stream->rdbuf(), 0, std::ios::cur, std::ios::in);
}

template <class Seek> std::istream *seekWith(std::istream *stream, const Seek &seek) {
    stream->clear(stream->rdstate() & ~std::ios::eofbit);
    const std::istream::sentry sentry(*stream, true);
    if (sentry && seek(functionsOf(stream->rdbuf())).offset == nowhere.offset)
        stream->setstate(std::ios::failbit);
    return stream;
}

std::istream *seekTo(std::istream *stream, Position position) {
    return seekWith(stream, [&](const BufferFunctions &functions) {
        return functions.seekPosition(stream->rdbuf(), position, std::ios::in);
    });
}

std::istream *seekBy(std::istream *stream, std::int64_t offset, int from) {
    return seekWith(stream, [&](const BufferFunctions &functions) {
        return functions.seekOffset(stream->rdbuf(), offset, from, std::ios::in);
    });
}

// Gives out a facet whose table of kinds is macOS's. Everything else of it is the same.
const std::locale::facet *findFacet(const std::locale *locale, const void *id) {
    static const void *kindsId = runtimeSymbol("_ZNSt3__15ctypeIcE2idE");
    static auto *const find = reinterpret_cast<decltype(findFacet) *>(
        const_cast<void *>(runtimeSymbol("_ZNKSt3__16locale9use_facetERNS0_2idE")));
    if (id != kindsId)
        return find(locale, id);
    static const auto *kinds = new std::ctype<char>(
        reinterpret_cast<const std::ctype_base::mask *>(darwinCharacters()), false, 1);
    return kinds;
}

// The kinds of characters that regular expressions know by name.
std::uint32_t namedKind(const char *name, bool ignoresCase) {
    struct Named {
        const char *name;
        std::uint32_t kind;
    };
    constexpr Named all[] = {{"d", darwinDigit},
                             {"digit", darwinDigit},
                             {"xdigit", darwinHexDigit},
                             {"s", darwinSpace},
                             {"space", darwinSpace},
                             {"alpha", darwinAlpha},
                             {"alnum", darwinAlpha | darwinDigit}};
    if (ignoresCase)
        refuse("a kind of characters in either case");
    for (const Named &known : all)
        if (std::string(name) == known.name)
            return known.kind;
    refuse("the kind of characters " + std::string(name));
}

std::filesystem::file_status fileStatus(const std::filesystem::path *path, std::error_code *error) {
    if (error == nullptr)
        refuse("a file's status without room for an error");
    const auto status = std::filesystem::status(*path, *error);
    error->assign(darwinError(error->value()), darwinCategory());
    return status;
}

} // namespace

void addStreams(Imports &imports) {
    imports.add(libCxx, "__ZNSt3__113basic_istreamIcNS_11char_traitsIcEEE5tellgEv", tell);
    imports.add(libCxx,
                "__ZNSt3__113basic_istreamIcNS_11char_traitsIcEEE5seekgENS_4fposI11__mbstate_tEE",
                seekTo);
    imports.add(libCxx,
                "__ZNSt3__113basic_istreamIcNS_11char_traitsIcEEE5seekgExNS_8ios_base7seekdirE",
                seekBy);
    imports.add(
        libCxx,
        "__ZNSt3__115basic_streambufIcNS_11char_traitsIcEEE7seekoffExNS_8ios_base7seekdirEj",
        noOffset);
    imports.add(
        libCxx,
        "__ZNSt3__115basic_streambufIcNS_11char_traitsIcEEE7seekposENS_4fposI11__mbstate_tEEj",
        noPosition);
    imports.add(libCxx, "__ZNKSt3__16locale9use_facetERNS0_2idE", findFacet);
    imports.add(libCxx, "__ZNSt3__115__get_classnameEPKcb", namedKind);
    imports.add(libCxx, "__ZNSt3__116generic_categoryEv", darwinCategory);
    imports.add(libCxx, "__ZNSt3__115system_categoryEv", darwinCategory);
    imports.add(libCxx, "__ZNSt3__14__fs10filesystem8__statusERKNS1_4pathEPNS_10error_codeE",
                fileStatus);
}

} // namespace macho
