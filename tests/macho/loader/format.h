// The part of the Mach-O file format that the loader knows. Names and numbers are those of Apple's
// public headers mach-o/loader.h, mach-o/fat.h and mach-o/compact_unwind_encoding.h, in this
// system's spelling.
#pragma once

#include <cstdint>

namespace macho {

constexpr std::uint32_t magic64 = 0xfeedfacf;
constexpr std::uint32_t magic32 = 0xfeedface;
constexpr std::uint32_t magicUniversal = 0xcafebabe; // big-endian
constexpr std::uint32_t cpuX86_64 = 0x01000007;
constexpr std::uint32_t cpuArm64 = 0x0100000c;
constexpr std::uint32_t dylibFile = 6;

struct Header {
    std::uint32_t magic;
    std::uint32_t cpu;
    std::uint32_t cpuSubtype;
    std::uint32_t fileType;
    std::uint32_t commandCount;
    std::uint32_t commandsSize;
    std::uint32_t flags;
    std::uint32_t reserved;
};

enum Command : std::uint32_t {
    commandSymbolTable = 0x2,
    commandDynamicSymbolTable = 0xb,
    commandLoadDylib = 0xc,
    commandIdDylib = 0xd,
    commandSegment = 0x19,
    commandUuid = 0x1b,
    commandCodeSignature = 0x1d,
    commandFunctionStarts = 0x26,
    commandDataInCode = 0x29,
    commandSourceVersion = 0x2a,
    commandBuildVersion = 0x32,
    commandDyldInfoOnly = 0x80000022,
    commandChainedFixups = 0x80000034,
};

struct CommandHead {
    std::uint32_t command;
    std::uint32_t size;
};

struct SegmentCommand {
    CommandHead head;
    char name[16];
    std::uint64_t address;
    std::uint64_t size;
    std::uint64_t fileOffset;
    std::uint64_t fileSize;
    std::uint32_t maximumProtection;
    std::uint32_t protection;
    std::uint32_t sectionCount;
    std::uint32_t flags;
};

constexpr std::uint32_t protectionRead = 1;
constexpr std::uint32_t protectionWrite = 2;
constexpr std::uint32_t protectionExecute = 4;
constexpr std::uint32_t segmentReadOnlyAfterFixups = 0x10;

struct SectionRecord {
    char name[16];
    char segment[16];
    std::uint64_t address;
    std::uint64_t size;
    std::uint32_t offset;
    std::uint32_t alignment; // a power of two
    std::uint32_t relocationOffset;
    std::uint32_t relocationCount;
    std::uint32_t flags; // the low byte is the type
    std::uint32_t reserved[3];
};

enum SectionType : std::uint8_t {
    sectionRegular = 0x0,
    sectionZeroFill = 0x1,
    sectionCStrings = 0x2,
    sectionLiterals4 = 0x3,
    sectionLiterals8 = 0x4,
    sectionNonLazyPointers = 0x6,
    sectionLazyPointers = 0x7,
    sectionStubs = 0x8,
    sectionInitialisers = 0x9,
    sectionCoalesced = 0xb,
    sectionLiterals16 = 0xe,
    sectionThreadLocalData = 0x11,
    sectionThreadLocalZeroFill = 0x12,
    sectionThreadLocalVariables = 0x13,
    sectionInitialiserOffsets = 0x16,
};

struct DylibCommand {
    CommandHead head;
    std::uint32_t nameOffset; // from the command's start
    std::uint32_t timestamp;
    std::uint32_t currentVersion;
    std::uint32_t compatibilityVersion;
};

struct FileRange {
    std::uint32_t offset;
    std::uint32_t size;
};

struct DyldInfoCommand {
    CommandHead head;
    FileRange rebase;
    FileRange bind;
    FileRange weakBind;
    FileRange lazyBind;
    FileRange exports;
};

// A universal file: big-endian numbers.
struct UniversalSlice {
    std::uint32_t cpu;
    std::uint32_t cpuSubtype;
    std::uint32_t offset;
    std::uint32_t size;
    std::uint32_t alignment;
};

} // namespace macho
