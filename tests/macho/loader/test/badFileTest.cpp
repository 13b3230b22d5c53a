// Files that cannot be loaded: each is told of in words that name what is wrong, and none takes the
// process with it.
#include "tests/macho/loader/fixups.h"
#include "tests/macho/loader/format.h"
#include "tests/macho/loader/frameSection.h"
#include "tests/macho/loader/image.h"

#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>

namespace macho {

namespace {

using File = std::vector<std::uint8_t>;

File contentOf(const char *path) {
    std::ifstream stream(path, std::ios::binary);
    EXPECT_TRUE(stream) << path;
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Everything that is done with a file before any of its code runs, with memory of exactly its size,
// so that a sanitizer sees each step out of it.
void readAll(const File &content) {
    const auto exact = std::make_unique<std::uint8_t[]>(content.size());
    std::copy(content.begin(), content.end(), exact.get());
    const ImageFile file = readImageFile(Bytes(exact.get(), content.size()));
    rebasesOf(file);
    bindsOf(file);
    exportsOf(file);
    Mapping mapping(file, "test");
    const ThreadLocals threadLocals(file, mapping);
    const FrameSection frames(file, mapping);
    mapping.protect(file);
}

// The complaint about a file; empty when there is none.
std::string complaintAbout(const File &content) {
    try {
        readAll(content);
        return "";
    } catch (const LoadError &error) {
        return error.what();
    }
}

template <class T> T get(const File &file, std::size_t at) {
    T value;
    std::memcpy(&value, file.data() + at, sizeof value);
    return value;
}

template <class T> void put(File &file, std::size_t at, T value) {
    std::memcpy(file.data() + at, &value, sizeof value);
}

// Where the first load command of this kind begins.
std::size_t placeOf(const File &file, std::uint32_t wanted) {
    std::size_t at = sizeof(Header);
    for (std::uint32_t i = 0; i < get<Header>(file, 0).commandCount; ++i) {
        const auto head = get<CommandHead>(file, at);
        if (head.command == wanted)
            return at;
        at += head.size;
    }
    ADD_FAILURE() << "no load command " << wanted;
    return 0;
}

const File &dylib() {
    static const File file = contentOf(MIRROR_DYLIB);
    return file;
}

std::string complaintAfter(const std::function<void(File &)> &change) {
    File file = dylib();
    change(file);
    return complaintAbout(file);
}

TEST(BadFile, TheLibraryItselfIsNone) {
    EXPECT_EQ(complaintAbout(dylib()), "");
    EXPECT_EQ(complaintAbout(contentOf(MIRROR_DYLIB_UNIVERSAL)), "");
}

TEST(BadFile, CutOffAnywhere) {
    // At each length within the load commands, and at many beyond.
    const std::size_t commandsEnd = sizeof(Header) + get<Header>(dylib(), 0).commandsSize;
    for (std::size_t length = 0; length < dylib().size();
         length += length < commandsEnd + 16 ? 1 : 97) {
        const std::string complaint = complaintAbout(
            File(dylib().begin(), dylib().begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_TRUE(complaint.find("cut off") != std::string::npos ||
                    complaint.find("reaches past the end of the file") != std::string::npos)
            << length << ": " << complaint;
    }
}

TEST(BadFile, CutOffNamesWhatIsMissing) {
    const auto cut = [](std::size_t length) {
        return complaintAbout(
            File(dylib().begin(), dylib().begin() + static_cast<std::ptrdiff_t>(length)));
    };
    EXPECT_EQ(cut(0), "the header is cut off");
    EXPECT_EQ(cut(31), "the header is cut off");
    EXPECT_EQ(cut(40), "the list of load commands reaches past the end of the file");
    EXPECT_EQ(cut(dylib().size() - 1), "segment __LINKEDIT reaches past the end of the file");
}

TEST(BadFile, AnyByteOfItsTablesWrong) {
    const ImageFile file = readImageFile(dylib());
    std::vector<std::pair<std::size_t, std::size_t>> ranges = {
        {0, sizeof(Header) + get<Header>(dylib(), 0).commandsSize}};
    for (const Bytes table : {file.rebaseOpcodes, file.bindOpcodes, file.weakBindOpcodes,
                              file.lazyBindOpcodes, file.exportTrie})
        ranges.push_back({static_cast<std::size_t>(table.data() - dylib().data()), table.size()});
    const Section *unwind = file.section("__TEXT", "__unwind_info");
    ASSERT_NE(unwind, nullptr);
    ranges.push_back({unwind->address, unwind->size}); // __TEXT begins with the file
    std::size_t refused = 0;
    for (const auto &[start, size] : ranges)
        for (std::size_t at = start; at < start + size; ++at) {
            File damaged = dylib();
            damaged[at] ^= at % 2 == 0 ? 0xff : 0x10;
            refused += !complaintAbout(damaged).empty(); // or it means something else now
        }
    EXPECT_GT(refused, 500u);
}

TEST(BadFile, NoMachOFile) {
    EXPECT_EQ(complaintAbout(File(100, 'x')),
              "the file begins with 0x78787878 and is no Mach-O file");
    EXPECT_EQ(complaintAbout(contentOf("/proc/self/exe")),
              "the file begins with 0x464c457f and is no Mach-O file");
}

TEST(BadFile, AnotherProcessor) {
    EXPECT_EQ(complaintAbout(contentOf(MIRROR_DYLIB_ARM64)),
              "the file is for arm64, not for x86-64");
    EXPECT_EQ(complaintAfter([](File &file) { put(file, 4, 0x01000012u); }),
              "the file is for processor type 0x1000012, not for x86-64");
    EXPECT_EQ(complaintAfter([](File &file) { put(file, 0, magic32); }),
              "the file is for 32-bit processors, not for x86-64");
}

TEST(BadFile, AnotherKindOfFile) {
    EXPECT_EQ(complaintAfter([](File &file) { put(file, 12, 2u); }),
              "the file is of type 2, not a dylib (6)");
}

TEST(BadFile, UniversalWithoutOurPart) {
    File file = contentOf(MIRROR_DYLIB_UNIVERSAL);
    for (std::size_t at = 8; at < 8 + 2 * sizeof(UniversalSlice); at += sizeof(UniversalSlice))
        put(file, at, __builtin_bswap32(cpuArm64));
    EXPECT_EQ(complaintAbout(file), "the universal file has no x86-64 part");
}

TEST(BadFile, AnUnknownLoadCommand) {
    const std::size_t at = placeOf(dylib(), commandUuid);
    EXPECT_NE(complaintAfter([at](File &file) { put(file, at, 0x77u); }).find(" (0x77) is unknown"),
              std::string::npos);
    EXPECT_NE(complaintAfter([at](File &file) {
                  put(file, at, 0x80000034u);
              }).find(" (0x80000034) asks for chained fixups"),
              std::string::npos);
    EXPECT_NE(
        complaintAfter([at](File &file) { put(file, at + 4, 4u); }).find(" (0x1b) is too short"),
        std::string::npos);
}

TEST(BadFile, SegmentsOutOfPlace) {
    const std::size_t at = placeOf(dylib(), commandSegment);
    const auto change = [at](std::size_t member, std::uint64_t value) {
        return complaintAfter([=](File &file) { put(file, at + member, value); });
    };
    EXPECT_EQ(change(offsetof(SegmentCommand, address), 0x1000),
              "segment __TEXT, the first, is not at 0");
    EXPECT_EQ(change(offsetof(SegmentCommand, address), 0x10000),
              "section __TEXT,__text does not lie in its segment");
    EXPECT_EQ(change(offsetof(SegmentCommand, address), 12),
              "segment __TEXT does not begin at a page");
    EXPECT_EQ(change(offsetof(SegmentCommand, size), std::uint64_t{1} << 40),
              "segment __TEXT is too large");
    EXPECT_EQ(change(offsetof(SegmentCommand, fileSize), std::uint64_t{1} << 63),
              "segment __TEXT reaches past the end of the file");
    EXPECT_EQ(complaintAfter(
                  [at](File &file) { put(file, at + offsetof(SegmentCommand, protection), 7u); }),
              "segment __TEXT is both writable and executable");
}

TEST(BadFile, TheMessageNamesTheFile) {
    try {
        Image image("/nowhere/lib.dylib", Imports());
        FAIL() << "loaded";
    } catch (const LoadError &error) {
        EXPECT_STREQ(error.what(), "/nowhere/lib.dylib: the file cannot be opened");
    }
}

} // namespace

} // namespace macho
