// hostrun/macho/frames.cpp - makes a desktop bundle's unwind tables ones that this process's unwinder reads.
#include "hostrun/macho/frames.h"

#include <map>
#include <string>

#include "hostrun/macho/bytes.h"
#include "hostrun/macho/format.h"

namespace hostrun::macho {
namespace {

constexpr const char* kWhat = "the unwind tables";

// The desktop's numbers of the two; this system has them the other way round.
constexpr std::uint8_t kFramePointer = 4;
constexpr std::uint8_t kStackPointer = 5;
constexpr std::uint8_t kReturnAddress = 8;
constexpr std::uint8_t kRegisterCount = 17;

// How a pointer is written: its form in the low half byte, what it counts from in the next three bits.
constexpr std::uint8_t kForm = 0x0F;
constexpr std::uint8_t kFrom = 0x70;
constexpr std::uint8_t kIndirect = 0x80;
constexpr std::uint8_t kOmitted = 0xFF;
constexpr std::uint8_t kWordForms[] = {0x00, 0x03, 0x0B};
constexpr std::uint8_t kFromItself = 0x10;

// Call frame instructions, by what follows them.
enum class Instruction : std::uint8_t {
  Nop = 0x00,
  SetLocation = 0x01,
  Advance1 = 0x02,
  Advance2 = 0x03,
  Advance4 = 0x04,
  OffsetExtended = 0x05,
  RestoreExtended = 0x06,
  Undefined = 0x07,
  SameValue = 0x08,
  Register = 0x09,
  RememberState = 0x0A,
  RestoreState = 0x0B,
  DefineCfa = 0x0C,
  DefineCfaRegister = 0x0D,
  DefineCfaOffset = 0x0E,
  OffsetExtendedSigned = 0x11,
  DefineCfaSigned = 0x12,
  DefineCfaOffsetSigned = 0x13,
  ArgumentsSize = 0x2E,
};
// These have their operand in the low six bits.
constexpr std::uint8_t kPrimary = 0xC0;
constexpr std::uint8_t kOperand = 0x3F;
constexpr std::uint8_t kAdvance = 0x40;
constexpr std::uint8_t kOffset = 0x80;
constexpr std::uint8_t kRestore = 0xC0;

[[noreturn]] void Refuse(const std::string& wanted, const std::string& found) {
  throw FormatError(wanted + " in " + kWhat, found);
}

bool IsWordForm(std::uint8_t encoding) {
  for (const std::uint8_t form : kWordForms) {
    if ((encoding & kForm) == form) return (encoding & kFrom) == 0 || (encoding & kFrom) == kFromItself;
  }
  return false;
}

// What a common entry says about the entries that name it.
struct Common {
  bool hasAugmentation = false;
  std::uint8_t pointers = 0;
  std::uint8_t languageData = kOmitted;
};

class Translator {
 public:
  Translator(std::span<std::uint8_t> memory, std::uint32_t offset)
      : memory_(memory), in_(memory, kWhat), start_(offset) {}

  void Translate(std::uint32_t size) {
    const std::uint32_t end = start_ + size;
    in_.GoTo(start_);
    while (in_.at() < end) {
      if (!TranslateEntry(end)) return;
    }
    // The unwinder reads on until it meets an entry without a length. The next page may be another segment's.
    if (in_.at() % kPage == 0 || in_.Word() != 0) Refuse("an end", "more bytes behind the last entry");
  }

 private:
  // False: the entry that ends the table.
  bool TranslateEntry(std::uint32_t tableEnd) {
    const std::uint32_t entry = in_.at();
    const std::uint32_t length = in_.Word();
    if (length == 0) return false;
    const std::uint32_t body = in_.at();
    if (length % 4 != 0 || body > tableEnd || length > tableEnd - body)
      Refuse("entries of whole words", "one of " + Hex(length) + " bytes at " + Hex(entry));
    end_ = body + length;
    const std::uint32_t distance = in_.Word();
    if (distance == 0) {
      ReadCommon(entry);
    } else {
      const auto common = commons_.find(body - distance);
      if (common == commons_.end()) Refuse("entries behind their common one", "one at " + Hex(entry));
      ReadDescription(common->second);
    }
    TranslateInstructions();
    return true;
  }

  void ReadCommon(std::uint32_t entry) {
    Common common;
    const std::uint8_t version = in_.Byte();
    if (version != 1) Refuse("version 1", std::to_string(version));
    const std::string augmentation = in_.Text();
    in_.Unsigned();  // the factor of code addresses
    in_.Signed();    // the factor of stack offsets
    const std::uint8_t column = in_.Byte();
    if (column != kReturnAddress) Refuse("the return address in column 8", std::to_string(column));
    common.hasAugmentation = !augmentation.empty();
    if (common.hasAugmentation) {
      if (augmentation.front() != 'z') Refuse("an augmentation with its length", augmentation);
      const std::uint32_t data = AugmentationEnd();
      for (const char letter : augmentation.substr(1)) ReadAugmentation(letter, common);
      if (in_.at() != data) Refuse("augmentation data as long as it says", "another length");
    }
    commons_[entry] = common;
  }

  void ReadAugmentation(char letter, Common& common) {
    switch (letter) {
      case 'P':
        return SkipPointer(in_.Byte());
      case 'L':
        common.languageData = in_.Byte();
        if (common.languageData != kOmitted && !IsWordForm(common.languageData))
          Refuse("pointers of a word", "the form " + Hex(common.languageData));
        return;
      case 'R':
        common.pointers = in_.Byte();
        if (!IsWordForm(common.pointers) || (common.pointers & kIndirect) != 0)
          Refuse("pointers of a word", "the form " + Hex(common.pointers));
        return;
      default:
        Refuse("the augmentations P, L and R", std::string(1, letter));
    }
  }

  // Gives where the data ends.
  std::uint32_t AugmentationEnd() {
    const std::uint32_t length = in_.Unsigned();
    if (in_.at() > end_ || length > end_ - in_.at())
      Refuse("augmentation data inside its entry", Hex(length));
    return in_.at() + length;
  }

  // A pointer that is followed must stay in the image.
  void SkipPointer(std::uint8_t encoding) {
    if (!IsWordForm(encoding)) Refuse("pointers of a word", "the form " + Hex(encoding));
    const std::uint32_t at = in_.at();
    const std::uint32_t value = in_.Word();
    if ((encoding & kIndirect) == 0) return;
    const std::uint32_t base = (encoding & kFrom) == kFromItself ? at : 0 - Base();
    if (base + value > memory_.size() - sizeof value)
      Refuse("pointers into the image", "one at " + Hex(at) + " that leads out of it");
  }

  void ReadDescription(const Common& common) {
    const std::uint32_t at = in_.at();
    const std::uint32_t begin = in_.Word() + ((common.pointers & kFrom) == kFromItself ? at : 0 - Base());
    const std::uint32_t size = in_.Word();
    if (begin > memory_.size() || size > memory_.size() - begin)
      Refuse("functions inside of the image", Hex(size) + " bytes at " + Hex(begin));
    if (common.hasAugmentation) in_.GoTo(AugmentationEnd());
  }

  // Where the image lies, in the low 32 bits that its own pointers have.
  std::uint32_t Base() const {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(memory_.data()));
  }

  void TranslateInstructions() {
    int remembered = 0;
    while (in_.at() < end_) {
      const std::uint8_t instruction = in_.Byte();
      const std::uint8_t primary = instruction & kPrimary;
      if (primary == kAdvance) continue;
      if (primary == kOffset || primary == kRestore) {
        Swap(in_.at() - 1, instruction & kOperand, primary);
        if (primary == kOffset) in_.Unsigned();
      } else {
        TranslateExtended(instruction, remembered);
      }
    }
    if (in_.at() != end_) Refuse("instructions inside their entry", "one that goes beyond it");
  }

  void TranslateExtended(std::uint8_t instruction, int& remembered) {
    switch (static_cast<Instruction>(instruction)) {
      case Instruction::Nop:
        return;
      case Instruction::SetLocation:
      case Instruction::Advance4:
        return in_.Skip(4);
      case Instruction::Advance1:
        return in_.Skip(1);
      case Instruction::Advance2:
        return in_.Skip(2);
      case Instruction::RestoreExtended:
      case Instruction::Undefined:
      case Instruction::SameValue:
      case Instruction::DefineCfaRegister:
        return SwapNext();
      case Instruction::Register:
        SwapNext();
        return SwapNext();
      case Instruction::OffsetExtended:
      case Instruction::DefineCfa:
        SwapNext();
        [[fallthrough]];
      case Instruction::DefineCfaOffset:
      case Instruction::ArgumentsSize:
        in_.Unsigned();
        return;
      case Instruction::OffsetExtendedSigned:
      case Instruction::DefineCfaSigned:
        SwapNext();
        [[fallthrough]];
      case Instruction::DefineCfaOffsetSigned:
        in_.Signed();
        return;
      case Instruction::RememberState:
        ++remembered;
        return;
      case Instruction::RestoreState:
        if (remembered-- == 0) Refuse("a state to go back to", "none");
        return;
    }
    Refuse("call frame instructions that can be translated", Hex(instruction));
  }

  void SwapNext() {
    const std::uint32_t at = in_.at();
    Swap(at, in_.Byte(), 0);
  }

  // The byte at an offset is a register's number, with other bits above it.
  void Swap(std::uint32_t at, std::uint8_t number, std::uint8_t above) {
    if (number >= kRegisterCount) Refuse("the processor's registers", "number " + std::to_string(number));
    if (number == kFramePointer || number == kStackPointer)
      memory_[at] = static_cast<std::uint8_t>(above | (kFramePointer + kStackPointer - number));
  }

  std::span<std::uint8_t> memory_;
  Cursor in_;
  std::uint32_t start_;
  std::uint32_t end_ = 0;  // of the entry
  std::map<std::uint32_t, Common> commons_;
};

}  // namespace

void TranslateFrames(std::span<std::uint8_t> memory, std::uint32_t offset, std::uint32_t size) {
  Part(memory, offset, size, kWhat);
  if (size != 0) Translator(memory, offset).Translate(size);
}

}  // namespace hostrun::macho
