// tests/hostrun/macho/test_file.cpp - a small desktop bundle, built by hand, to be spoilt by a test.
#include "tests/hostrun/macho/test_file.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace hostrun::macho;

// Where the next record goes, for the distance that leads back to the common one.
constexpr std::uint32_t kCommonBody = 4;

SegmentCommand SegmentOf(const char* name, std::uint32_t address, std::uint32_t protection) {
  SegmentCommand segment{};
  std::strncpy(segment.name, name, sizeof segment.name);
  segment.head.command = static_cast<std::uint32_t>(Command::Segment);
  segment.head.size = sizeof segment;
  segment.address = segment.fileOffset = address;
  segment.size = segment.fileSize = kPage;
  segment.mostProtection = kRead | kWrite | kExecute;
  segment.protection = protection;
  return segment;
}

std::string LibraryOf(const std::string& name) {
  std::string padded = name;
  padded.resize((name.size() / 4 + 1) * 4);
  LibraryCommand command{};
  command.head = {static_cast<std::uint32_t>(Command::LoadLibrary),
                  static_cast<std::uint32_t>(sizeof command + padded.size())};
  command.nameOffset = sizeof command;
  return Raw(command) + padded;
}

std::string Record(std::string body) {
  body.resize((body.size() + 3) / 4 * 4);
  return Raw(static_cast<std::uint32_t>(body.size())) + body;
}

}  // namespace

// Version 1, the factors 1 and -4, the return address in column 8.
std::string AugmentedRecord(const std::string& letters, const std::string& data,
                            const std::string& instructions) {
  return Record(Raw(std::uint32_t{0}) + Codes({1}) + Text(letters) +
                Codes({0x01, 0x7C, 8, static_cast<unsigned>(data.size())}) + data + instructions);
}

std::string CommonRecord(const std::string& instructions) {
  return AugmentedRecord("zR", Codes({0x10}), instructions);
}

std::string FunctionRecord(const std::string& instructions) {
  const std::string common = CommonRecord(Codes({0x0C, 5, 4, 0x88, 1}));
  const auto body = static_cast<std::uint32_t>(common.size()) + kCommonBody;
  const std::uint32_t start = TestFile::kFrames + body + 4;
  return Record(Raw(body) + Raw(TestFile::kFunction - start) + Raw(std::uint32_t{6}) + Codes({0}) +
                instructions);
}

TestFile::TestFile()
    : segments{SegmentOf("__TEXT", kText, kRead | kExecute), SegmentOf("__DATA", kData, kRead | kWrite),
               SegmentOf("__LINKEDIT", kLinkEdit, kRead)},
      libraries{"/usr/lib/libSystem.B.dylib"},
      frameBytes(CommonRecord(Codes({0x0C, 5, 4, 0x88, 1})) +
                 FunctionRecord(Codes({0x41, 0x0E, 8, 0x84, 2})) + Raw(std::uint32_t{0})),
      rebases(Codes({0x11, 0x21, 0, 0x51, 0})),
      binds(Codes({0x11, 0x40}) + Text("_symbol") + Codes({0x51, 0x71, 4, 0x90, 0})),
      exports(Codes({0, 1}) + Text("_answer") + Codes({11, 3, 0, 0x80, 0x10, 0})) {
  header = {kMagic, kProcessorI386, 3, kTypeBundle, 0, 0, 0};
  std::strncpy(frames.name, "__eh_frame", sizeof frames.name);
  std::strncpy(frames.segment, "__TEXT", sizeof frames.segment);
  frames.address = frames.fileOffset = kFrames;
  frames.size = static_cast<std::uint32_t>(frameBytes.size());
}

std::vector<std::uint8_t> TestFile::Bytes() const {
  std::string tail;
  const auto add = [&tail](const std::string& part) {
    const auto offset = static_cast<std::uint32_t>(kLinkEdit + tail.size());
    tail += part;
    return Extent{offset, static_cast<std::uint32_t>(part.size())};
  };
  LinkInformationCommand information{};
  information.head = {static_cast<std::uint32_t>(Command::LinkInformation), sizeof information};
  information.rebases = add(rebases);
  information.binds = add(binds);
  information.weakBinds = add(weakBinds);
  information.lazyBinds = add(lazyBinds);
  information.exports = add(exports);

  std::string commands;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    SegmentCommand segment = segments[i];
    if (i == 0) {
      segment.sectionCount = 1;
      segment.head.size += sizeof frames;
    }
    commands += Raw(segment);
    if (i == 0) commands += Raw(frames);
  }
  for (const std::string& library : libraries) commands += LibraryOf(library);
  commands += Raw(information) + moreCommands;

  Header top = header;
  top.commandCount = static_cast<std::uint32_t>(segments.size() + libraries.size()) + 1 + moreCount;
  top.commandSize = static_cast<std::uint32_t>(commands.size());
  std::string file = Raw(top) + commands;
  file.resize(kLinkEdit);
  file.replace(kFunction, 6, Codes({0xB8, kAnswer, 0, 0, 0, 0xC3}));  // movl $42, %eax; ret
  file.replace(kFrames, frameBytes.size(), frameBytes);
  file.replace(kPointer, 4, Raw(kFunction));
  file += tail;
  file.resize(kLinkEdit + kPage);
  return {file.begin(), file.end()};
}
