// hostrun/macho/file.cpp - reads a desktop bundle's header and load commands.
#include "hostrun/macho/file.h"

#include <algorithm>
#include <utility>

#include "hostrun/macho/format.h"
#include "hostrun/macho/link_information.h"

namespace hostrun::macho {
namespace {

constexpr const char* kLoadCommands = "the load commands";

// A name that fills its field has no zero behind it.
template <std::size_t size>
std::string NameOf(const char (&field)[size]) {
  std::string name(field, std::find(std::begin(field), std::end(field), '\0'));
  CheckPlain(name, kLoadCommands);
  return name;
}

void CheckHeader(const Header& header) {
  static constexpr const char* kWanted = "a bundle for the i386";
  if (header.magic == kMagic64) throw FormatError(kWanted, "a 64-bit Mach-O file");
  if (header.magic == kMagicOfSeveral)
    throw FormatError(kWanted, "a file for several processors; take the i386's part out of it");
  if (header.magic != kMagic) throw FormatError(kWanted, "a file that is not Mach-O");
  if (header.processor != kProcessorI386)
    throw FormatError(kWanted, "a Mach-O file for processor " + Hex(header.processor));
  if (header.type != kTypeBundle)
    throw FormatError(kWanted, "a Mach-O file of type " + std::to_string(header.type));
}

Section ReadSection(const SectionRecord& record, const Segment& segment) {
  Section section = {NameOf(record.name), record.address, record.size};
  const std::string name = segment.name + "," + section.name;
  if (!segment.Holds(section.address, section.size)) {
    throw FormatError(name + " inside of its segment",
                      Hex(section.address) + " and " + Hex(section.size) + " bytes");
  }
  const std::uint32_t type = record.flags & kSectionType;
  if (type == kInitialisers || type == kTerminators || type == kInitialiserOffsets)
    throw FormatError("a bundle that runs nothing on loading", name + " with functions to run");
  if (type >= kFirstThreadLocal) throw FormatError("a bundle without variables of each thread", name);
  const std::uint32_t inSegment = section.address - segment.address;
  if (type != kZeroFill && section.size != 0 &&
      (inSegment > segment.fileSize || section.size > segment.fileSize - inSegment ||
       record.fileOffset != segment.fileOffset + inSegment)) {
    throw FormatError(name + " at the same place in the file as in memory", Hex(record.fileOffset));
  }
  return section;
}

class Reader {
 public:
  explicit Reader(std::vector<std::uint8_t> bytes) { file_.bytes = std::move(bytes); }

  File Read() {
    const auto header = RecordAt<Header>(file_.bytes, 0, "the header");
    CheckHeader(header);
    Bytes commands = Part(file_.bytes, sizeof header, header.commandSize, kLoadCommands);
    for (std::uint32_t i = 0; i < header.commandCount; ++i) {
      const auto head = RecordAt<CommandHead>(commands, 0, kLoadCommands);
      if (head.size < sizeof head || head.size % 4 != 0)
        throw FormatError("load commands of whole words", "one of " + std::to_string(head.size) + " bytes");
      ReadCommand(head.command, Part(commands, 0, head.size, kLoadCommands));
      commands = commands.subspan(head.size);
    }
    if (file_.segments.empty()) throw FormatError("a segment", "none");
    CheckSpan();
    ReadLinkInformation();
    return std::move(file_);
  }

 private:
  void ReadCommand(std::uint32_t number, Bytes command) {
    switch (static_cast<Command>(number)) {
      case Command::Segment:
        return ReadSegment(command);
      case Command::LoadLibrary:
      case Command::LoadWeakLibrary:
        return ReadLibrary(command);
      case Command::OldestSystem:
        file_.oldestSystem = RecordAt<OldestSystemCommand>(command, 0, kLoadCommands).version;
        return;
      case Command::BuildVersion:
        file_.oldestSystem = RecordAt<BuildVersionCommand>(command, 0, kLoadCommands).version;
        return;
      case Command::LinkInformation:
        if (hasLinkInformation_) throw FormatError("link information once", "a second one");
        hasLinkInformation_ = true;
        linkInformation_ = RecordAt<LinkInformationCommand>(command, 0, kLoadCommands);
        return;
      case Command::InitialRoutine:
        throw FormatError("a bundle that runs nothing on loading", "an initial routine");
      case Command::SearchPath:
        return;
    }
    if ((number & kCommandIsRequired) != 0)
      throw FormatError("load commands that are known", "one that must be: " + Hex(number));
  }

  void ReadSegment(Bytes command) {
    constexpr std::size_t kMost = 16;  // as many as a rebase or a bind can name
    if (file_.segments.size() == kMost)
      throw FormatError("at most " + std::to_string(kMost) + " segments", "more");
    const auto record = RecordAt<SegmentCommand>(command, 0, kLoadCommands);
    Segment segment{NameOf(record.name), record.address,    record.size, record.fileOffset,
                    record.fileSize,     record.protection, {}};
    if (((segment.address | segment.size | segment.fileOffset) & (kPage - 1)) != 0)
      throw FormatError(segment.name + " on whole pages", "another place or size");
    if (segment.size > UINT32_MAX - segment.address || segment.fileSize > segment.size)
      throw FormatError(segment.name + " with room for its bytes", "too little");
    Part(file_.bytes, segment.fileOffset, segment.fileSize, "each segment");
    if (!file_.segments.empty()) {
      const Segment& last = file_.segments.back();
      if (segment.address < last.address + last.size || segment.fileOffset < last.fileOffset + last.fileSize)
        throw FormatError(segment.name + " behind " + last.name, "a place before its end");
    }
    Cursor in(command, kLoadCommands);
    in.Skip(sizeof record);
    for (std::uint32_t i = 0; i < record.sectionCount; ++i) {
      const auto section = RecordAt<SectionRecord>(command, in.at(), kLoadCommands);
      in.Skip(sizeof section);
      segment.sections.push_back(ReadSection(section, segment));
    }
    file_.segments.push_back(std::move(segment));
  }

  void ReadLibrary(Bytes command) {
    const auto record = RecordAt<LibraryCommand>(command, 0, kLoadCommands);
    Cursor in(command, kLoadCommands);
    in.GoTo(record.nameOffset);
    file_.libraries.push_back(in.Text());
  }

  // A small file does not take much memory.
  void CheckSpan() const {
    constexpr std::uint64_t kAlways = 1U << 20U;
    constexpr std::uint64_t kMostTimes = 16;
    const std::uint32_t span =
        file_.segments.back().address + file_.segments.back().size - file_.segments.front().address;
    if (span == 0 || span > kAlways + kMostTimes * file_.bytes.size())
      throw FormatError("segments in proportion to the file", "a span of " + Hex(span) + " bytes");
  }

  void ReadLinkInformation() {
    if (!hasLinkInformation_) throw FormatError("link information", "none");
    const auto part = [this](const Extent& extent) {
      return Part(file_.bytes, extent.offset, extent.size, "the link information");
    };
    if (linkInformation_.weakBinds.size != 0)
      throw FormatError("a bundle without weak definitions", "binds to them");
    ReadRebases(part(linkInformation_.rebases), file_);
    ReadBinds(part(linkInformation_.binds), Binding::AtOnce, file_);
    ReadBinds(part(linkInformation_.lazyBinds), Binding::Lazy, file_);
    ReadExports(part(linkInformation_.exports), file_);
  }

  File file_;
  bool hasLinkInformation_ = false;
  LinkInformationCommand linkInformation_{};
};

}  // namespace

const Segment* File::SegmentAround(std::uint32_t address, std::uint32_t size) const {
  const auto found = std::find_if(segments.begin(), segments.end(),
                                  [&](const Segment& segment) { return segment.Holds(address, size); });
  return found == segments.end() ? nullptr : &*found;
}

bool IsMachO(Bytes bytes) {
  if (bytes.size() < sizeof(std::uint32_t)) return false;
  const auto magic = RecordAt<std::uint32_t>(bytes, 0, "the header");
  return magic == kMagic || magic == kMagic64 || magic == kMagicOfSeveral;
}

File ReadFile(std::vector<std::uint8_t> bytes) {
  return Reader(std::move(bytes)).Read();
}

}  // namespace hostrun::macho
