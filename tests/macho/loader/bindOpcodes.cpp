#include "tests/macho/loader/fixupPlace.h"
#include "tests/macho/loader/fixups.h"

namespace macho {

namespace {

enum Opcode : std::uint8_t {
    done = 0x00,
    setLibrary = 0x10,
    setLibraryUleb = 0x20,
    setSpecialLibrary = 0x30,
    setSymbol = 0x40,
    setType = 0x50,
    setAddend = 0x60,
    setPlace = 0x70,
    addAddress = 0x80,
    bind = 0x90,
    bindAddAddress = 0xa0,
    bindAddAddressScaled = 0xb0,
    bindUlebTimesSkipping = 0xc0,
};

constexpr std::uint8_t typePointer = 1;
constexpr std::uint8_t flagMayBeMissing = 1;
constexpr std::uint8_t flagStrongDefinition = 8;

enum class Table {
    eager,
    lazy, // each entry ends with "done"; the table ends with its bytes
    weak, // what all images of a process share, such as operator new: from any library
};

class BindReader {
public:
    BindReader(const ImageFile &file, Bytes opcodes, Table kind, const std::string &table,
               std::vector<Bind> &binds)
        : file(file), reader(opcodes, table), kind(kind), table(table), place(file, table),
          binds(binds) {
        if (kind == Table::weak) {
            next.libraries = {""};
            next.libraries.insert(next.libraries.end(), file.libraries.begin(),
                                  file.libraries.end());
        }
    }

    void readAll() {
        while (!reader.atEnd())
            if (!readOne())
                return;
    }

private:
    void chooseLibrary(std::uint64_t ordinal) {
        if (ordinal > file.libraries.size())
            throw LoadError(table + " names library " + std::to_string(ordinal) + " of only " +
                            std::to_string(file.libraries.size()));
        if (kind == Table::weak)
            throw LoadError(table + " names a library");
        next.libraries = {ordinal == 0 ? "" : file.libraries[ordinal - 1]};
    }

    void add(std::uint64_t skip) {
        if (next.symbol.empty())
            throw LoadError(table + " binds without a symbol");
        if (next.libraries.empty())
            throw LoadError(table + " binds " + next.symbol + " without a library");
        next.address = place.pointer();
        binds.push_back(next);
        place.advance(sizeof(void *) + skip);
    }

    // False at the table's end.
    bool readOne() {
        const auto byte = reader.read<std::uint8_t>();
        const std::uint8_t immediate = byte & 0x0f;
        switch (byte & 0xf0) {
        case done:
            return kind == Table::lazy;
        case setLibrary:
            chooseLibrary(immediate);
            return true;
        case setLibraryUleb:
            chooseLibrary(reader.uleb());
            return true;
        case setSpecialLibrary:
            if (immediate != 0)
                throw LoadError(table + " wants a symbol of the library with the special number " +
                                std::to_string(immediate - 16) + ", which is unknown here");
            chooseLibrary(0);
            return true;
        case setSymbol:
            next.symbol = reader.text();
            if ((immediate & ~(flagMayBeMissing | flagStrongDefinition)) != 0)
                throw LoadError(table + " gives " + next.symbol + " unknown flags");
            if ((immediate & flagStrongDefinition) != 0)
                throw LoadError(table + " says that the image itself defines " + next.symbol +
                                " for all others, which is not handled");
            next.mayBeMissing = (immediate & flagMayBeMissing) != 0;
            return true;
        case setType:
            if (immediate != typePointer)
                throw LoadError(table + " has the unknown type " + std::to_string(immediate));
            return true;
        case setAddend:
            next.addend = reader.sleb();
            return true;
        case setPlace:
            place.moveTo(immediate, reader.uleb());
            return true;
        case addAddress:
            place.advance(reader.uleb());
            return true;
        case bind:
            add(0);
            return true;
        case bindAddAddress:
            add(reader.uleb());
            return true;
        case bindAddAddressScaled:
            add(immediate * sizeof(void *));
            return true;
        case bindUlebTimesSkipping: {
            std::uint64_t times = reader.uleb();
            const std::uint64_t skip = reader.uleb();
            for (; times > 0; --times)
                add(skip);
            return true;
        }
        default:
            throw LoadError(table + " has the unknown opcode " + std::to_string(byte));
        }
    }

    const ImageFile &file;
    ByteReader reader;
    Table kind;
    std::string table;
    FixupPlace place;
    std::vector<Bind> &binds;
    Bind next = {};
};

} // namespace

std::vector<Bind> bindsOf(const ImageFile &file) {
    std::vector<Bind> binds;
    BindReader(file, file.bindOpcodes, Table::eager, "the bind table", binds).readAll();
    BindReader(file, file.lazyBindOpcodes, Table::lazy, "the lazy bind table", binds).readAll();
    BindReader(file, file.weakBindOpcodes, Table::weak, "the weak bind table", binds).readAll();
    return binds;
}

} // namespace macho
