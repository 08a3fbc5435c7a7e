// bundle/desktop/final_link/opcodes.cpp - the programs by which the loader moves and fills pointers.
#include "bundle/desktop/final_link/opcodes.h"

#include "bundle/desktop/final_link/refusal.h"

namespace desktop {

namespace {

// An opcode is the upper half of a byte, a small argument the lower one.
constexpr std::uint8_t kLargestImmediate = 15;
constexpr std::uint8_t kPointerType = 1;
constexpr std::uint8_t kDone = 0x00;

namespace rebase {
constexpr std::uint8_t kSetType = 0x10;
constexpr std::uint8_t kSetSegmentAndOffset = 0x20;
constexpr std::uint8_t kAddOffset = 0x30;
constexpr std::uint8_t kAddWords = 0x40;
constexpr std::uint8_t kRebaseTimes = 0x50;
constexpr std::uint8_t kRebaseManyTimes = 0x60;
}  // namespace rebase

namespace bind {
constexpr std::uint8_t kSetLibrary = 0x10;
constexpr std::uint8_t kSetSymbol = 0x40;
constexpr std::uint8_t kSetType = 0x50;
constexpr std::uint8_t kSetSegmentAndOffset = 0x70;
constexpr std::uint8_t kBind = 0x90;
}  // namespace bind

void Append(Bytes& bytes, std::uint8_t opcode, std::uint32_t immediate = 0) {
  bytes.push_back(static_cast<std::uint8_t>(opcode + immediate));
}

}  // namespace

void AppendUleb(Bytes& bytes, std::uint32_t number) {
  while (number >= 0x80) {
    bytes.push_back(static_cast<std::uint8_t>(number | 0x80));
    number >>= 7;
  }
  bytes.push_back(static_cast<std::uint8_t>(number));
}

void AppendText(Bytes& bytes, const std::string& text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.push_back(0);
}

Bytes RebaseOpcodes(std::span<const std::uint32_t> addresses, std::uint32_t dataStart) {
  Bytes bytes;
  Append(bytes, rebase::kSetType, kPointerType);
  Append(bytes, rebase::kSetSegmentAndOffset, kDataSegment);
  AppendUleb(bytes, 0);
  std::uint32_t current = dataStart;
  for (std::size_t index = 0; index < addresses.size();) {
    const std::uint32_t gap = addresses[index] - current;
    if (gap % kPointerSize == 0 && gap / kPointerSize <= kLargestImmediate) {
      if (gap != 0) Append(bytes, rebase::kAddWords, gap / kPointerSize);
    } else {
      Append(bytes, rebase::kAddOffset);
      AppendUleb(bytes, gap);
    }
    current = addresses[index];
    std::uint32_t run = 0;
    for (; index < addresses.size() && addresses[index] == current; ++index, ++run) current += kPointerSize;
    if (run <= kLargestImmediate) {
      Append(bytes, rebase::kRebaseTimes, run);
    } else {
      Append(bytes, rebase::kRebaseManyTimes);
      AppendUleb(bytes, run);
    }
  }
  Append(bytes, kDone);
  return bytes;
}

Bytes BindOpcodes(std::span<const Bind> binds, const Imports& imports, std::uint32_t dataStart) {
  Bytes bytes;
  Append(bytes, bind::kSetType, kPointerType);
  std::uint32_t library = 0;
  std::size_t import = imports.imports.size();
  std::uint32_t current{};  // of no pointer
  for (const Bind& each : binds) {
    const Import& wanted = imports.imports[each.import];
    if (wanted.library != library) {
      library = wanted.library;
      if (library > kLargestImmediate)
        RefuseFor("at most ", int{kLargestImmediate}, " libraries, found ", library);
      Append(bytes, bind::kSetLibrary, library);
    }
    if (each.import != import) {
      import = each.import;
      Append(bytes, bind::kSetSymbol);
      AppendText(bytes, wanted.name);
    }
    if (each.address != current) {
      Append(bytes, bind::kSetSegmentAndOffset, kDataSegment);
      AppendUleb(bytes, each.address - dataStart);
    }
    Append(bytes, bind::kBind);
    current = each.address + kPointerSize;
  }
  Append(bytes, kDone);
  return bytes;
}

}  // namespace desktop
