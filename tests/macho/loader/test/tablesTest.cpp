// The packed tables of an image: what they say, and what they cannot mean.
#include "tests/macho/loader/exportTrie.h"
#include "tests/macho/loader/fixups.h"
#include "tests/macho/loader/frameRules.h"

#include <gtest/gtest.h>

namespace macho {

namespace {

using Table = std::vector<std::uint8_t>;
using Addresses = std::vector<std::uint64_t>;

// A read-only segment of a page and a writable one of another.
ImageFile twoPages() {
    ImageFile file;
    file.segments = {{"__TEXT", 0, 0x1000, {}, protectionRead | protectionExecute, false, {}},
                     {"__DATA", 0x1000, 0x1000, {}, protectionRead | protectionWrite, false, {}}};
    file.libraries = {"one", "two"};
    return file;
}

template <class Read> std::string complaintOf(Read read) {
    try {
        read();
        return "";
    } catch (const LoadError &error) {
        return error.what();
    }
}

Addresses rebases(const Table &table) {
    ImageFile file = twoPages();
    file.rebaseOpcodes = table;
    return rebasesOf(file);
}

std::vector<Bind> binds(const Table &table, const Table &lazy = {}, const Table &weak = {}) {
    ImageFile file = twoPages();
    file.bindOpcodes = table;
    file.lazyBindOpcodes = lazy;
    file.weakBindOpcodes = weak;
    return bindsOf(file);
}

TEST(Rebases, EveryOpcode) {
    EXPECT_EQ(rebases({0x11, 0x21, 0x10, 0x52, 0x30, 0x08, 0x51, 0x42, 0x60, 0x01, 0x70, 0x18, 0x80,
                       0x02, 0x08, 0x00, 0xff}),
              (Addresses{0x1010, 0x1018, 0x1028, 0x1040, 0x1048, 0x1068, 0x1078}));
}

TEST(Rebases, Nonsense) {
    EXPECT_EQ(complaintOf([] { rebases({0x51}); }), "the rebase table begins without a place");
    EXPECT_EQ(complaintOf([] {
                  rebases({0x25, 0x00});
              }),
              "the rebase table names segment 5, which does not exist");
    EXPECT_EQ(complaintOf([] {
                  rebases({0x20, 0x00, 0x51});
              }),
              "the rebase table changes segment __TEXT, which is not writable");
    EXPECT_EQ(complaintOf([] {
                  rebases({0x21, 0xf9, 0x1f, 0x51});
              }),
              "the rebase table reaches past the end of segment __DATA");
    EXPECT_EQ(complaintOf([] { rebases({0x12}); }), "the rebase table has the unknown type 2");
    EXPECT_EQ(complaintOf([] { rebases({0x90}); }), "the rebase table has the unknown opcode 144");
    EXPECT_EQ(complaintOf([] { rebases({0x21, 0x80}); }), "the rebase table is cut off");
    // In place, for ever.
    EXPECT_EQ(complaintOf([] {
                  rebases({0x21, 0x00, 0x80, 0xff, 0xff, 0xff, 0xff, 0x7f, 0xf8, 0xff, 0xff, 0xff,
                           0xff, 0xff, 0xff, 0xff, 0xff, 0x01});
              }),
              "the rebase table does not end");
}

TEST(Binds, EveryOpcode) {
    const auto all = binds({0x11, 0x40, '_',  'a',  0,    0x51, 0x71, 0x10, 0x90, 0x12,
                            0x41, '_',  'b',  0,    0x60, 0x7c, 0xa0, 0x08, 0xb1, 0x20,
                            0x01, 0xc0, 0x02, 0x08, 0x30, 0x80, 0x08, 0x90, 0x00},
                           {0x11, 0x40, '_', 'l', 0, 0x71, 0x00, 0x90, 0x00, 0x12, 0x40, '_', 'm',
                            0, 0x71, 0x08, 0x90, 0x00},
                           {0x40, '_', 'w', 0, 0x51, 0x71, 0x00, 0x90, 0x00});
    std::string text;
    for (const Bind &bind : all) {
        text += bind.symbol + (bind.mayBeMissing ? "?" : "") + " ";
        for (const std::string &library : bind.libraries)
            text += "[" + library + "]";
        text +=
            " " + std::to_string(bind.address - 0x1000) + " " + std::to_string(bind.addend) + "\n";
    }
    EXPECT_EQ(text, "_a [one] 16 0\n"
                    "_b? [two] 24 -4\n"
                    "_b? [two] 40 -4\n"
                    "_b? [one] 56 -4\n"
                    "_b? [one] 72 -4\n"
                    "_b? [] 96 -4\n"
                    "_l [one] 0 0\n"
                    "_m [two] 8 0\n"
                    "_w [][one][two] 0 0\n");
}

TEST(Binds, Nonsense) {
    EXPECT_EQ(complaintOf([] { binds({0x13}); }), "the bind table names library 3 of only 2");
    EXPECT_EQ(complaintOf([] { binds({0x3e}); }),
              "the bind table wants a symbol of the library with the special number -2, which is "
              "unknown here");
    EXPECT_EQ(complaintOf([] {
                  binds({0x71, 0x00, 0x90});
              }),
              "the bind table binds without a symbol");
    EXPECT_EQ(complaintOf([] {
                  binds({0x40, '_', 'a', 0, 0x71, 0x00, 0x90});
              }),
              "the bind table binds _a without a library");
    EXPECT_EQ(complaintOf([] {
                  binds({0x40, '_', 'a'});
              }),
              "the bind table holds a text without an end");
    EXPECT_EQ(complaintOf([] { binds({}, {}, {0x11}); }), "the weak bind table names a library");
    EXPECT_EQ(complaintOf([] {
                  binds({}, {0x48, '_', 'a', 0});
              }),
              "the lazy bind table says that the image itself defines _a for all others, which is "
              "not handled");
    EXPECT_EQ(complaintOf([] { binds({0xd0}); }), "the bind table has the unknown opcode 208");
}

std::map<std::string, std::uint64_t> exports(const Table &trie) {
    ImageFile file = twoPages();
    file.exportTrie = trie;
    return exportsOf(file);
}

TEST(Exports, ATreeOfPrefixes) {
    EXPECT_EQ(exports({0, 1, '_', 0, 5,                      // to "_"
                       3, 0, 0x80, 0x20, 1, 'a', 'b', 0, 14, // "_" itself, at 0x1000
                       2, 0, 0x07, 0}),                      //
              (std::map<std::string, std::uint64_t>{{"_", 0x1000}, {"_ab", 7}}));
    EXPECT_EQ(exports({}).size(), 0u);
}

TEST(Exports, Nonsense) {
    EXPECT_EQ(complaintOf([] { exports({0, 1, 'a', 0, 0}); }), "the export trie does not end");
    EXPECT_EQ(complaintOf([] {
                  exports({0, 1, 'a', 0, 99});
              }),
              "the export trie points past its end");
    EXPECT_EQ(complaintOf([] {
                  exports({0, 1, 0, 0});
              }),
              "the export trie has an edge without a letter");
    EXPECT_EQ(complaintOf([] {
                  exports({0, 1, 'a', 0, 5, 2, 8, 1, 0});
              }),
              "the export trie gives a unknown flags");
    EXPECT_EQ(complaintOf([] {
                  exports({0, 1, 'a', 0, 5, 3, 0, 0x80, 0x40, 0});
              }),
              "the export trie puts a outside the image");
    EXPECT_EQ(complaintOf([] {
                  exports({0, 1, 'a', 0, 5, 9, 0, 1, 0});
              }),
              "the export trie is wrong about the size of a");
}

Table rules(std::uint32_t encoding) {
    const ImageFile file = twoPages();
    const Mapping mapping(file, "test");
    return frameRulesOf({0, 0x100, encoding, 0, 0}, mapping);
}

// Registers in DWARF's numbers: 3 rbx, 6 rbp, 7 rsp, 12 to 15 the registers of those numbers.
TEST(FrameRules, BasePointer) {
    // rbx and r14 below the old rbp.
    EXPECT_EQ(rules(0x01020021), (Table{0x0c, 6, 16, 0x86, 2, 0x83, 4, 0x8e, 3}));
}

TEST(FrameRules, StackOfAKnownSize) {
    // 40 bytes, four registers.
    EXPECT_EQ(rules(0x02051000 | 60 * 4 + 12 * 0 + 3 * 0 + 0),
              (Table{0x0c, 7, 40, 0x8f, 5, 0x83, 4, 0x8c, 3, 0x8d, 2}));
    EXPECT_EQ(rules(0x02010000), (Table{0x0c, 7, 8}));
}

TEST(FrameRules, Nonsense) {
    EXPECT_EQ(complaintOf([] { rules(0x05000000); }), "the unwind table has an unknown encoding");
    EXPECT_EQ(complaintOf([] { rules(0x01010007); }), "the unwind table names an unknown register");
    EXPECT_EQ(complaintOf([] { rules(0x02011c00); }),
              "the unwind table saves more registers than there are");
    EXPECT_EQ(complaintOf([] { rules(0x020107ff); }),
              "the unwind table has an impossible order of registers");
    EXPECT_EQ(complaintOf([] { rules(0x03ff0000); }),
              "the unwind table points outside its function");
}

} // namespace

} // namespace macho
