// bundle/desktop/final_link/format.h - the desktop's file format for 32-bit x86, as far as needed here.
//
// Every record stands in the file as it is declared here, little-endian, its fields 4-aligned.
#pragma once

#include <array>
#include <cstdint>

namespace desktop {

inline constexpr std::uint32_t kPageSize = 4096;
inline constexpr std::uint32_t kPointerSize = 4;

// The first multiple of `unit` that is not below `number`.
constexpr std::uint32_t RoundUp(std::uint32_t number, std::uint32_t unit) {
  return (number + unit - 1) / unit * unit;
}

inline constexpr std::uint32_t kMagic32 = 0xFEEDFACE;
inline constexpr std::uint32_t kProcessorI386 = 7;
inline constexpr std::uint32_t kProcessorI386All = 3;

enum class FileType : std::uint32_t { Object = 1, Bundle = 8, Debug = 10 };

// What a header's flags promise of a linked file.
inline constexpr std::uint32_t kNoUndefinedSymbols = 0x1;  // each is given a library
inline constexpr std::uint32_t kForDynamicLoader = 0x4;
inline constexpr std::uint32_t kTwoLevelNames = 0x80;

struct Header {
  std::uint32_t magic;
  std::uint32_t processor;
  std::uint32_t processorSubtype;
  FileType fileType;
  std::uint32_t commandCount;
  std::uint32_t commandsSize;
  std::uint32_t flags;
};
static_assert(sizeof(Header) == 28);

enum class CommandKind : std::uint32_t {
  Segment = 0x1,
  SymbolTable = 0x2,
  DynamicSymbolTable = 0xB,
  LoadLibrary = 0xC,
  Uuid = 0x1B,
  OldestSystem = 0x24,
  DynamicLoaderInfo = 0x80000022,  // the top bit: a loader that does not know it must refuse the file
};

// What every load command starts with.
struct CommandStart {
  CommandKind kind;
  std::uint32_t size;  // of the whole command
};
static_assert(sizeof(CommandStart) == 8);

using Name16 = std::array<char, 16>;  // padded with zeros; a name of 16 letters ends without one

// Read is 1, write 2, execute 4.
enum Protection : std::uint32_t { kRead = 1, kReadWrite = 3, kReadExecute = 5, kAll = 7 };

struct SegmentCommand {
  CommandStart start;
  Name16 name;
  std::uint32_t address;
  std::uint32_t memorySize;
  std::uint32_t fileOffset;
  std::uint32_t fileSize;
  std::uint32_t maximumProtection;
  std::uint32_t initialProtection;
  std::uint32_t sectionCount;
  std::uint32_t flags;
};
static_assert(sizeof(SegmentCommand) == 56);

enum class SectionKind : std::uint8_t {
  Regular = 0,
  ZeroFill = 1,
  CStrings = 2,
  Literals4 = 3,
  Literals8 = 4,
  Pointers = 6,  // each filled with the address of a symbol before anything runs
  Stubs = 8,
  Coalesced = 11,
  Literals16 = 14,
};
inline constexpr std::uint32_t kSectionKindMask = 0xFF;
// Attributes beside the kind.
inline constexpr std::uint32_t kOnlyInstructions = 0x80000000;
inline constexpr std::uint32_t kForDebuggersOnly = 0x02000000;
inline constexpr std::uint32_t kSomeInstructions = 0x400;
inline constexpr std::uint32_t kHasRelocations = 0x300;

struct SectionHeader {
  Name16 name;
  Name16 segment;
  std::uint32_t address;
  std::uint32_t size;
  std::uint32_t fileOffset;
  std::uint32_t alignment;  // the exponent of a power of two
  std::uint32_t relocationOffset;
  std::uint32_t relocationCount;
  std::uint32_t flags;
  std::uint32_t firstIndirect;  // of pointers and stubs: their first entry in the table of indirect symbols
  std::uint32_t stubSize;
};
static_assert(sizeof(SectionHeader) == 68);

struct SymbolTableCommand {
  CommandStart start;
  std::uint32_t symbolOffset;
  std::uint32_t symbolCount;
  std::uint32_t stringOffset;
  std::uint32_t stringSize;
};
static_assert(sizeof(SymbolTableCommand) == 24);

struct DynamicSymbolTableCommand {
  CommandStart start;
  std::uint32_t firstLocal;
  std::uint32_t localCount;
  std::uint32_t firstDefined;
  std::uint32_t definedCount;
  std::uint32_t firstUndefined;
  std::uint32_t undefinedCount;
  std::uint32_t contentsOffset;  // of a library; so are the next five
  std::uint32_t contentsCount;
  std::uint32_t moduleOffset;
  std::uint32_t moduleCount;
  std::uint32_t referencedOffset;
  std::uint32_t referencedCount;
  std::uint32_t indirectOffset;
  std::uint32_t indirectCount;
  std::uint32_t externalRelocationOffset;
  std::uint32_t externalRelocationCount;
  std::uint32_t localRelocationOffset;
  std::uint32_t localRelocationCount;
};
static_assert(sizeof(DynamicSymbolTableCommand) == 80);

struct DynamicLoaderInfoCommand {
  CommandStart start;
  std::uint32_t rebaseOffset;
  std::uint32_t rebaseSize;
  std::uint32_t bindOffset;
  std::uint32_t bindSize;
  std::uint32_t weakBindOffset;
  std::uint32_t weakBindSize;
  std::uint32_t lazyBindOffset;
  std::uint32_t lazyBindSize;
  std::uint32_t exportOffset;
  std::uint32_t exportSize;
};
static_assert(sizeof(DynamicLoaderInfoCommand) == 48);

struct UuidCommand {
  CommandStart start;
  std::array<std::uint8_t, 16> uuid;
};
static_assert(sizeof(UuidCommand) == 24);

// A version x.y.z is x << 16 | y << 8 | z.
struct OldestSystemCommand {
  CommandStart start;
  std::uint32_t system;
  std::uint32_t sdk;
};
static_assert(sizeof(OldestSystemCommand) == 16);

// Its path follows, ended and padded with zeros.
struct LoadLibraryCommand {
  CommandStart start;
  std::uint32_t pathOffset;  // from the start of the command
  std::uint32_t timeStamp;
  std::uint32_t currentVersion;
  std::uint32_t compatibleVersion;
};
static_assert(sizeof(LoadLibraryCommand) == 24);

struct SymbolEntry {
  std::uint32_t name;  // an offset into the strings
  std::uint8_t type;
  std::uint8_t section;  // counted from 1; 0 for none
  std::uint16_t description;
  std::uint32_t value;
};
static_assert(sizeof(SymbolEntry) == 12);

// A symbol's type.
inline constexpr std::uint8_t kExternal = 0x01;
inline constexpr std::uint8_t kPrivateExternal = 0x10;
inline constexpr std::uint8_t kSymbolKindMask = 0x0E;
inline constexpr std::uint8_t kUndefined = 0x00;
inline constexpr std::uint8_t kInSection = 0x0E;
inline constexpr std::uint8_t kDebuggerMask = 0xE0;
// A symbol's description.
inline constexpr std::uint16_t kWeakReference = 0x40;
inline constexpr std::uint16_t kWeakDefinition = 0x80;

// A relocation's two words. Scattered ones give an address of the object instead of a symbol or section.
struct RelocationEntry {
  std::uint32_t where;
  std::uint32_t what;
};
static_assert(sizeof(RelocationEntry) == 8);
inline constexpr std::uint32_t kScattered = 0x80000000;

enum class RelocationKind : std::uint8_t {
  Vanilla = 0,
  Pair = 1,
  SectionDifference = 2,
  LocalSectionDifference = 4,
};

}  // namespace desktop
