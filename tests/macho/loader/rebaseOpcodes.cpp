#include "tests/macho/loader/fixupPlace.h"
#include "tests/macho/loader/fixups.h"

namespace macho {

namespace {

enum Opcode : std::uint8_t {
    done = 0x00,
    setType = 0x10,
    setPlace = 0x20,
    addAddress = 0x30,
    addAddressScaled = 0x40,
    rebaseTimes = 0x50,
    rebaseUlebTimes = 0x60,
    rebaseAddAddress = 0x70,
    rebaseUlebTimesSkipping = 0x80,
};

constexpr std::uint8_t typePointer = 1;

} // namespace

std::vector<std::uint64_t> rebasesOf(const ImageFile &file) {
    const std::string table = "the rebase table";
    ByteReader reader(file.rebaseOpcodes, table);
    FixupPlace place(file, table);
    std::vector<std::uint64_t> addresses;
    const auto rebase = [&](std::uint64_t times, std::uint64_t skip) {
        for (; times > 0; --times) {
            addresses.push_back(place.pointer());
            place.advance(sizeof(void *) + skip);
        }
    };
    while (!reader.atEnd()) {
        const auto byte = reader.read<std::uint8_t>();
        const std::uint8_t immediate = byte & 0x0f;
        switch (byte & 0xf0) {
        case done:
            return addresses;
        case setType:
            if (immediate != typePointer)
                throw LoadError(table + " has the unknown type " + std::to_string(immediate));
            break;
        case setPlace:
            place.moveTo(immediate, reader.uleb());
            break;
        case addAddress:
            place.advance(reader.uleb());
            break;
        case addAddressScaled:
            place.advance(immediate * sizeof(void *));
            break;
        case rebaseTimes:
            rebase(immediate, 0);
            break;
        case rebaseUlebTimes:
            rebase(reader.uleb(), 0);
            break;
        case rebaseAddAddress:
            rebase(1, reader.uleb());
            break;
        case rebaseUlebTimesSkipping: {
            const std::uint64_t times = reader.uleb();
            rebase(times, reader.uleb());
            break;
        }
        default:
            throw LoadError(table + " has the unknown opcode " + std::to_string(byte));
        }
    }
    return addresses;
}

} // namespace macho
