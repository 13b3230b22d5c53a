#include "tests/macho/loader/imageFile.h"
#include "tests/macho/loader/universalFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace macho {

namespace {

constexpr std::uint64_t pageSize = 0x1000;
// Far more than any library of ours; keeps a damaged size from taking the machine's memory.
constexpr std::uint64_t largestImage = 256 << 20;

std::string hex(std::uint64_t number) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(number));
    return text;
}

std::string nameOf(const char (&name)[16]) {
    return {name, strnlen(name, sizeof name)};
}

void checkHeader(const Header &header) {
    if (header.magic == magic32)
        throw LoadError("the file is for 32-bit processors, not for x86-64");
    if (header.magic != magic64)
        throw LoadError("the file begins with " + hex(header.magic) + " and is no Mach-O file");
    if (header.cpu == cpuArm64)
        throw LoadError("the file is for arm64, not for x86-64");
    if (header.cpu != cpuX86_64)
        throw LoadError("the file is for processor type " + hex(header.cpu) + ", not for x86-64");
    if (header.fileType != dylibFile)
        throw LoadError("the file is of type " + std::to_string(header.fileType) +
                        ", not a dylib (6)");
}

bool isKnownSectionType(std::uint8_t type) {
    switch (type) {
    case sectionRegular:
    case sectionZeroFill:
    case sectionCStrings:
    case sectionLiterals4:
    case sectionLiterals8:
    case sectionNonLazyPointers:
    case sectionLazyPointers:
    case sectionStubs:
    case sectionInitialisers:
    case sectionCoalesced:
    case sectionLiterals16:
    case sectionThreadLocalData:
    case sectionThreadLocalZeroFill:
    case sectionThreadLocalVariables:
    case sectionInitialiserOffsets:
        return true;
    default:
        return false;
    }
}

Section readSection(ByteReader &reader, const Segment &segment) {
    const auto record = reader.read<SectionRecord>();
    Section section;
    section.name = nameOf(record.name);
    const std::string called = "section " + segment.name + "," + section.name;
    section.address = record.address;
    section.size = record.size;
    section.type = static_cast<std::uint8_t>(record.flags);
    if (!isKnownSectionType(section.type))
        throw LoadError(called + " is of the unknown type " + hex(section.type));
    if (record.alignment > 12)
        throw LoadError(called + " has the alignment 2^" + std::to_string(record.alignment));
    section.alignment = std::uint64_t{1} << record.alignment;
    const std::uint64_t offset = section.address - segment.address;
    if (section.address < segment.address || offset > segment.size ||
        section.size > segment.size - offset)
        throw LoadError(called + " does not lie in its segment");
    return section;
}

Segment readSegment(ByteReader &reader, Bytes file) {
    const auto command = reader.read<SegmentCommand>();
    Segment segment;
    segment.name = nameOf(command.name);
    const std::string called = "segment " + segment.name;
    segment.address = command.address;
    segment.size = command.size;
    segment.content = ByteReader::part(file, command.fileOffset, command.fileSize, called);
    segment.protection = command.protection;
    segment.readOnlyAfterFixups = (command.flags & segmentReadOnlyAfterFixups) != 0;
    if (segment.address % pageSize != 0)
        throw LoadError(called + " does not begin at a page");
    if (segment.address > largestImage || segment.size > largestImage)
        throw LoadError(called + " is too large");
    if (command.fileSize > segment.size)
        throw LoadError(called + " is smaller than what it holds");
    if ((segment.protection & ~(protectionRead | protectionWrite | protectionExecute)) != 0)
        throw LoadError(called + " has the unknown protection " + hex(segment.protection));
    if ((segment.protection & protectionWrite) != 0 &&
        (segment.protection & protectionExecute) != 0)
        throw LoadError(called + " is both writable and executable");
    if (command.head.size !=
        sizeof command + std::uint64_t{command.sectionCount} * sizeof(SectionRecord))
        throw LoadError(called + " has a command of the wrong size");
    for (std::uint32_t i = 0; i < command.sectionCount; ++i)
        segment.sections.push_back(readSection(reader, segment));
    return segment;
}

std::string readLibraryName(ByteReader &reader) {
    const auto command = reader.read<DylibCommand>();
    reader.moveTo(command.nameOffset);
    return std::string(reader.text());
}

void readDyldInfo(ByteReader &reader, Bytes file, ImageFile &image) {
    const auto command = reader.read<DyldInfoCommand>();
    const auto table = [file](FileRange range, const char *name) {
        return ByteReader::part(file, range.offset, range.size, name);
    };
    image.rebaseOpcodes = table(command.rebase, "the rebase table");
    image.bindOpcodes = table(command.bind, "the bind table");
    image.weakBindOpcodes = table(command.weakBind, "the weak bind table");
    image.lazyBindOpcodes = table(command.lazyBind, "the lazy bind table");
    image.exportTrie = table(command.exports, "the export trie");
}

void readCommand(Bytes bytes, std::uint32_t number, Bytes file, ImageFile &image) {
    const auto command = ByteReader(bytes, "").read<CommandHead>().command;
    const std::string called = "load command " + std::to_string(number) + " (" + hex(command) + ")";
    ByteReader reader(bytes, called);
    switch (command) {
    case commandSegment:
        image.segments.push_back(readSegment(reader, file));
        break;
    case commandIdDylib:
        image.installName = readLibraryName(reader);
        break;
    case commandLoadDylib:
        image.libraries.push_back(readLibraryName(reader));
        break;
    case commandDyldInfoOnly:
        readDyldInfo(reader, file, image);
        break;
    case commandSymbolTable:
    case commandDynamicSymbolTable:
    case commandUuid:
    case commandCodeSignature:
    case commandFunctionStarts:
    case commandDataInCode:
    case commandSourceVersion:
    case commandBuildVersion:
        break; // nothing in them is needed to run
    case commandChainedFixups:
        throw LoadError(called + " asks for chained fixups: build for macOS 11 or 12, whose files "
                                 "have opcodes instead");
    default:
        throw LoadError(called + " is unknown");
    }
}

void checkSegments(ImageFile &image) {
    if (image.segments.empty())
        throw LoadError("the file has no segments");
    std::sort(image.segments.begin(), image.segments.end(),
              [](const Segment &a, const Segment &b) { return a.address < b.address; });
    if (image.segments.front().address != 0)
        throw LoadError("segment " + image.segments.front().name + ", the first, is not at 0");
    for (std::size_t i = 1; i < image.segments.size(); ++i)
        if (image.segments[i].address - image.segments[i - 1].address < image.segments[i - 1].size)
            throw LoadError("segments " + image.segments[i - 1].name + " and " +
                            image.segments[i].name + " overlap");
}

} // namespace

const Section *ImageFile::section(const std::string &segment, const std::string &name) const {
    for (const Segment &candidate : segments)
        for (const Section &section : candidate.sections)
            if (candidate.name == segment && section.name == name)
                return &section;
    return nullptr;
}

std::vector<Section> ImageFile::sectionsOfType(SectionType type) const {
    std::vector<Section> found;
    for (const Segment &segment : segments)
        for (const Section &section : segment.sections)
            if (section.type == type)
                found.push_back(section);
    return found;
}

ImageFile readImageFile(Bytes bytes) {
    const Bytes file = x86Part(bytes);
    ByteReader reader(file, "the header");
    const auto header = reader.read<Header>();
    checkHeader(header);
    ByteReader commands(
        ByteReader::part(file, sizeof header, header.commandsSize, "the list of load commands"),
        "the list of load commands");
    ImageFile image;
    for (std::uint32_t i = 0; i < header.commandCount; ++i) {
        const std::size_t start = commands.position();
        const auto head = commands.read<CommandHead>();
        if (head.size < sizeof head)
            throw LoadError("load command " + std::to_string(i) + " (" + hex(head.command) +
                            ") is too short");
        commands.moveTo(start);
        readCommand(commands.take(head.size), i, file, image);
    }
    if (!commands.atEnd())
        throw LoadError("the list of load commands is longer than its commands");
    checkSegments(image);
    return image;
}

} // namespace macho
