// hostrun/macho/format.h - the records of a 32-bit Mach-O file, as they lie in it, little-endian.
#pragma once

#include <cstdint>

namespace hostrun::macho {

inline constexpr std::uint32_t kMagic = 0xFEEDFACE;
inline constexpr std::uint32_t kMagic64 = 0xFEEDFACF;
inline constexpr std::uint32_t kMagicOfSeveral =
    0xBEBAFECA;  // big-endian: a file of several processors' files
inline constexpr std::uint32_t kProcessorI386 = 7;
inline constexpr std::uint32_t kTypeBundle = 8;
inline constexpr std::uint32_t kPage = 4096;

struct Header {
  std::uint32_t magic;
  std::uint32_t processor;
  std::uint32_t processorSubtype;
  std::uint32_t type;
  std::uint32_t commandCount;
  std::uint32_t commandSize;
  std::uint32_t flags;
};
static_assert(sizeof(Header) == 28);

// A loader must refuse a file whose command has this bit and which it does not know.
inline constexpr std::uint32_t kCommandIsRequired = 0x80000000;

enum class Command : std::uint32_t {
  Segment = 0x1,
  LoadLibrary = 0xC,
  InitialRoutine = 0x11,
  OldestSystem = 0x24,
  BuildVersion = 0x32,
  LoadWeakLibrary = 0x80000018,
  SearchPath = 0x8000001C,
  LinkInformation = 0x80000022,
};

struct CommandHead {
  std::uint32_t command;
  std::uint32_t size;
};

struct SegmentCommand {
  CommandHead head;
  char name[16];
  std::uint32_t address;
  std::uint32_t size;
  std::uint32_t fileOffset;
  std::uint32_t fileSize;
  std::uint32_t mostProtection;
  std::uint32_t protection;
  std::uint32_t sectionCount;
  std::uint32_t flags;
};
static_assert(sizeof(SegmentCommand) == 56);

inline constexpr std::uint32_t kRead = 1;
inline constexpr std::uint32_t kWrite = 2;
inline constexpr std::uint32_t kExecute = 4;

struct SectionRecord {
  char name[16];
  char segment[16];
  std::uint32_t address;
  std::uint32_t size;
  std::uint32_t fileOffset;
  std::uint32_t alignment;
  std::uint32_t relocationOffset;
  std::uint32_t relocationCount;
  std::uint32_t flags;  // the lowest byte is the type
  std::uint32_t reserved[2];
};
static_assert(sizeof(SectionRecord) == 68);

inline constexpr std::uint32_t kSectionType = 0xFF;
inline constexpr std::uint32_t kZeroFill = 0x1;
inline constexpr std::uint32_t kInitialisers = 0x9;
inline constexpr std::uint32_t kTerminators = 0xA;
inline constexpr std::uint32_t kFirstThreadLocal = 0x11;
inline constexpr std::uint32_t kInitialiserOffsets = 0x16;

struct LibraryCommand {
  CommandHead head;
  std::uint32_t nameOffset;
  std::uint32_t timestamp;
  std::uint32_t version;
  std::uint32_t compatibleVersion;
};

// The version is 16 bits, 8 and 8: 10.6.0 is 0x000A0600.
struct OldestSystemCommand {
  CommandHead head;
  std::uint32_t version;
  std::uint32_t builtWith;
};
struct BuildVersionCommand {
  CommandHead head;
  std::uint32_t platform;
  std::uint32_t version;
  std::uint32_t builtWith;
  std::uint32_t toolCount;
};

// A part of the file.
struct Extent {
  std::uint32_t offset;
  std::uint32_t size;
};

struct LinkInformationCommand {
  CommandHead head;
  Extent rebases;
  Extent binds;
  Extent weakBinds;
  Extent lazyBinds;
  Extent exports;
};
static_assert(sizeof(LinkInformationCommand) == 48);

}  // namespace hostrun::macho
