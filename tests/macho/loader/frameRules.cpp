#include "tests/macho/loader/frameRules.h"

#include <array>

namespace macho {

namespace {

constexpr std::uint32_t modeMask = 0x0f000000;
constexpr std::uint32_t modeBasePointer = 0x01000000;
constexpr std::uint32_t modeStackImmediate = 0x02000000;
constexpr std::uint32_t modeStackIndirect = 0x03000000;
constexpr std::uint32_t modeOwnRecord = 0x04000000;

// DWARF's numbers of the registers that compact encodings call 1 to 6: rbx, r12 to r15, rbp.
constexpr std::uint8_t savedRegisters[] = {3, 12, 13, 14, 15, 6};
constexpr std::uint8_t registerRbp = 6;
constexpr std::uint8_t registerRsp = 7;

constexpr std::uint8_t defineFrame = 0x0c;
constexpr std::uint8_t savedAt = 0x80; // with the register's number

class Rules {
public:
    void frameIs(std::uint8_t reg, std::uint64_t offset) {
        bytes.push_back(defineFrame);
        bytes.push_back(reg);
        number(offset);
    }
    // `words` of 8 bytes below the frame's address.
    void isSaved(std::uint32_t compactRegister, std::uint64_t words) {
        if (compactRegister == 0 || compactRegister > std::size(savedRegisters))
            throw LoadError("the unwind table names an unknown register");
        bytes.push_back(savedAt | savedRegisters[compactRegister - 1]);
        number(words);
    }
    std::vector<std::uint8_t> bytes;

private:
    void number(std::uint64_t value) {
        for (; value > 0x7f; value >>= 7)
            bytes.push_back(static_cast<std::uint8_t>(value | 0x80));
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
};

// The registers lie from `words` below rbp upwards.
std::vector<std::uint8_t> withBasePointer(std::uint32_t encoding) {
    Rules rules;
    rules.frameIs(registerRbp, 16); // above it the old rbp and the return address
    rules.isSaved(6, 2);
    const std::uint32_t words = encoding >> 16 & 0xff;
    std::uint32_t registers = encoding & 0x7fff;
    for (std::uint32_t i = 0; i < 5; ++i, registers >>= 3)
        if ((registers & 7) != 0)
            rules.isSaved(registers & 7, 2 + words - i);
    return std::move(rules.bytes);
}

// The registers, in the order in which they lie in memory, that the encoding's permutation number
// stands for: digits of mixed base, each one a choice among the registers not yet taken.
std::vector<std::uint32_t> permutedRegisters(std::uint32_t count, std::uint32_t permutation) {
    if (count > 6)
        throw LoadError("the unwind table saves more registers than there are");
    std::vector<std::uint32_t> left = {1, 2, 3, 4, 5, 6};
    std::vector<std::uint32_t> registers;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t base = 1;
        for (std::uint32_t j = i + 1; j < count; ++j)
            base *= 6 - j;
        const std::uint32_t digit = permutation / base;
        permutation %= base;
        if (digit >= left.size())
            throw LoadError("the unwind table has an impossible order of registers");
        registers.push_back(left[digit]);
        left.erase(left.begin() + digit);
    }
    return registers;
}

std::vector<std::uint8_t> onStack(std::uint32_t encoding, std::uint64_t stackSize) {
    const auto registers = permutedRegisters(encoding >> 10 & 7, encoding & 0x3ff);
    Rules rules;
    rules.frameIs(registerRsp, stackSize);
    for (std::size_t i = 0; i < registers.size(); ++i)
        rules.isSaved(registers[i], 1 + registers.size() - i); // below the return address
    return std::move(rules.bytes);
}

} // namespace

std::optional<std::uint32_t> ownRecordOf(const UnwindEntry &entry) {
    if ((entry.encoding & modeMask) != modeOwnRecord)
        return std::nullopt;
    return entry.encoding & 0xffffff;
}

std::vector<std::uint8_t> frameRulesOf(const UnwindEntry &entry, const Mapping &mapping) {
    const std::uint32_t size = entry.encoding >> 16 & 0xff;
    switch (entry.encoding & modeMask) {
    case modeBasePointer:
        return withBasePointer(entry.encoding);
    case modeStackImmediate:
        return onStack(entry.encoding, std::uint64_t{size} * 8);
    case modeStackIndirect: {
        // The size is in the instruction that makes the frame, `size` bytes into the function.
        if (entry.end - entry.start < size + sizeof(std::uint32_t))
            throw LoadError("the unwind table points outside its function");
        const auto subtracted = mapping.load<std::uint32_t>(entry.start + size);
        return onStack(entry.encoding, std::uint64_t{subtracted} + (entry.encoding >> 13 & 7) * 8);
    }
    default:
        throw LoadError("the unwind table has an unknown encoding");
    }
}

} // namespace macho
