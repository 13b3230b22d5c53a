#include "tests/macho/loader/frameSection.h"
#include "tests/macho/loader/compactUnwind.h"
#include "tests/macho/loader/frameRecords.h"
#include "tests/macho/loader/frameRules.h"

#include <map>

// LLVM's unwinder: takes a whole section, and gives it back. They stand in no public header.
extern "C" {
void __unw_add_dynamic_eh_frame_section(std::uintptr_t section);
void __unw_remove_dynamic_eh_frame_section(std::uintptr_t section);
}

namespace macho {

namespace {

constexpr std::uint8_t absolutePointer = 0x00;
constexpr std::uint8_t doNothing = 0x00;
// The frame is at rsp + 8, the return address just below it.
constexpr std::uint8_t rulesAtEntry[] = {0x0c, 7, 8, 0x80 | 16, 1};

class SectionWriter {
public:
    // The record that the functions of one personality share; 0 stands for none.
    void beginCommon(std::uint64_t personality) {
        hasPersonality = personality != 0;
        commonAt = bytes.size();
        const std::size_t start = beginRecord();
        append(std::uint32_t{0}); // marks it as common
        append(std::uint8_t{1});  // version
        for (const char letter : std::string(hasPersonality ? "zPLR" : "zR"))
            append(letter);
        append('\0');
        append(std::uint8_t{1});    // code is counted in bytes,
        append(std::uint8_t{0x78}); // data in -8 bytes,
        append(std::uint8_t{16});   // and this register is the return address
        if (hasPersonality) {
            append(std::uint8_t{11}); // the size of what follows
            append(absolutePointer);
            append(personality);
            append(absolutePointer); // of the language data
        } else {
            append(std::uint8_t{1});
        }
        append(absolutePointer); // of functions
        append(rulesAtEntry);
        endRecord(start);
    }

    // `start` and `languageData` are in memory.
    void addFunction(std::uint64_t functionStart, std::uint64_t size, std::uint64_t languageData,
                     const std::vector<std::uint8_t> &rules) {
        const std::size_t start = beginRecord();
        append(static_cast<std::uint32_t>(start - commonAt));
        append(functionStart);
        append(size);
        append(static_cast<std::uint8_t>(hasPersonality ? sizeof languageData : 0));
        if (hasPersonality)
            append(languageData);
        bytes.insert(bytes.end(), rules.begin(), rules.end());
        endRecord(start);
    }

    // The unwinder's reader stops at a record that is neither common nor belongs to the common one
    // before it. (At the usual four zeros it would turn in a circle.)
    void end() {
        append(std::uint32_t{4});
        append(~std::uint32_t{0});
    }

    std::vector<std::uint8_t> bytes;

private:
    template <class T> void append(const T &value) {
        const auto *start = reinterpret_cast<const std::uint8_t *>(&value);
        bytes.insert(bytes.end(), start, start + sizeof value);
    }

    std::size_t beginRecord() {
        append(std::uint32_t{0}); // the size, once it is known
        return bytes.size();
    }

    void endRecord(std::size_t start) {
        while ((bytes.size() - start + sizeof(std::uint32_t)) % 8 != 0)
            append(doNothing);
        const auto size = static_cast<std::uint32_t>(bytes.size() - start);
        std::memcpy(bytes.data() + start - sizeof size, &size, sizeof size);
    }

    std::size_t commonAt = 0;
    bool hasPersonality = false;
};

struct Function {
    std::uint64_t start;
    std::uint64_t size;
    std::uint64_t languageData;
    std::vector<std::uint8_t> rules;
};

using Functions = std::multimap<std::uint64_t, Function>; // by personality's place

Functions functionsOf(const ImageFile &file, const Mapping &mapping) {
    Functions functions;
    for (const UnwindEntry &entry : unwindEntriesOf(file, mapping)) {
        if ((entry.encoding & 0x0fffffff) == 0)
            continue;
        if (const auto own = ownRecordOf(entry)) {
            FrameRecord record = readFrameRecord(file, mapping, *own);
            functions.insert({record.personalityPointer,
                              {record.start, record.size, record.languageData, record.rules}});
        } else {
            functions.insert({entry.personalityPointer,
                              {entry.start, entry.end - entry.start, entry.languageData,
                               frameRulesOf(entry, mapping)}});
        }
    }
    return functions;
}

std::uint64_t inMemory(const Mapping &mapping, std::uint64_t address) {
    return address == 0 ? 0 : reinterpret_cast<std::uintptr_t>(mapping.at<void>(address));
}

} // namespace

FrameSection::FrameSection(const ImageFile &file, const Mapping &mapping) {
    SectionWriter writer;
    const std::uint64_t *current = nullptr; // a key of the map, which lives on in it
    for (const auto &[personalityPointer, function] : functionsOf(file, mapping)) {
        if (current == nullptr || *current != personalityPointer) {
            writer.beginCommon(
                personalityPointer == 0 ? 0 : mapping.load<std::uint64_t>(personalityPointer));
            current = &personalityPointer;
        }
        writer.addFunction(inMemory(mapping, function.start), function.size,
                           inMemory(mapping, function.languageData), function.rules);
        ++functions;
    }
    writer.end();
    bytes = std::move(writer.bytes);
    __unw_add_dynamic_eh_frame_section(reinterpret_cast<std::uintptr_t>(bytes.data()));
}

FrameSection::~FrameSection() {
    __unw_remove_dynamic_eh_frame_section(reinterpret_cast<std::uintptr_t>(bytes.data()));
}

} // namespace macho
