#include "tests/macho/loader/exportTrie.h"

namespace macho {

namespace {

constexpr std::uint64_t kindMask = 0x3;
constexpr std::uint64_t kindRegular = 0;
constexpr std::uint64_t flagWeakDefinition = 0x4;
constexpr std::size_t longestSymbol = 4096;

class TrieReader {
public:
    explicit TrieReader(const ImageFile &file) : file(file) {}

    void readNode(std::size_t position, const std::string &prefix) {
        // No tree has more nodes than bytes: such a one runs in a circle.
        if (++nodes > file.exportTrie.size() || prefix.size() > longestSymbol)
            throw LoadError("the export trie does not end");
        ByteReader reader(file.exportTrie, "the export trie");
        reader.moveTo(position);
        const std::uint64_t symbolSize = reader.uleb();
        if (symbolSize != 0) {
            const std::size_t start = reader.position();
            readSymbol(reader, prefix);
            if (reader.position() - start != symbolSize)
                throw LoadError("the export trie is wrong about the size of " + prefix);
        }
        const auto children = reader.read<std::uint8_t>();
        for (unsigned i = 0; i < children; ++i) {
            const std::string_view edge = reader.text();
            if (edge.empty())
                throw LoadError("the export trie has an edge without a letter");
            readNode(reader.uleb(), prefix + std::string(edge));
        }
    }

    std::map<std::string, std::uint64_t> symbols;

private:
    void readSymbol(ByteReader &reader, const std::string &symbol) {
        const std::uint64_t flags = reader.uleb();
        if ((flags & kindMask) != kindRegular || (flags & ~(kindMask | flagWeakDefinition)) != 0)
            throw LoadError("the export trie gives " + symbol + " unknown flags");
        const std::uint64_t address = reader.uleb();
        if (address >= file.size())
            throw LoadError("the export trie puts " + symbol + " outside the image");
        symbols[symbol] = address;
    }

    const ImageFile &file;
    std::size_t nodes = 0;
};

} // namespace

std::map<std::string, std::uint64_t> exportsOf(const ImageFile &file) {
    TrieReader reader(file);
    if (!file.exportTrie.empty())
        reader.readNode(0, "");
    return std::move(reader.symbols);
}

} // namespace macho
