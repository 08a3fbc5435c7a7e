// hostrun/macho/link_information.cpp - reads which words of a bundle are rebased and bound, and what it
// exports.
//
// Rebases and binds are programs for a small machine that moves a place through the segments. Each word can
// be changed once, so a file asks for no more changes than it has words; a program that does is refused
// before it takes time and memory.
#include "hostrun/macho/link_information.h"

#include <set>

namespace hostrun::macho {
namespace {

constexpr std::uint32_t kWord = 4;
constexpr std::uint8_t kOpcode = 0xF0;
constexpr std::uint8_t kImmediate = 0x0F;
constexpr std::uint32_t kPointer = 1;  // the one kind of word that this processor's bundles have

enum class RebaseOpcode : std::uint8_t {
  Done = 0x00,
  SetType = 0x10,
  SetPlace = 0x20,
  Advance = 0x30,
  AdvanceWords = 0x40,
  Rebase = 0x50,
  RebaseCounted = 0x60,
  RebaseAndAdvance = 0x70,
  RebaseCountedSkipping = 0x80,
};

enum class BindOpcode : std::uint8_t {
  Done = 0x00,
  SetLibrary = 0x10,
  SetLibraryCounted = 0x20,
  SetSpecialLibrary = 0x30,
  SetSymbol = 0x40,
  SetType = 0x50,
  SetAddend = 0x60,
  SetPlace = 0x70,
  Advance = 0x80,
  Bind = 0x90,
  BindAndAdvance = 0xA0,
  BindAndAdvanceWords = 0xB0,
  BindCountedSkipping = 0xC0,
};

constexpr std::uint8_t kWeakImport = 0x1;

// The word that the machine stands at.
class Place {
 public:
  Place(const File& file, const char* what) : file_(file), what_(what), left_(file.bytes.size() / kWord) {}

  void Set(std::uint32_t segment, std::uint32_t offset) {
    if (segment >= file_.segments.size()) {
      throw FormatError("one of " + std::to_string(file_.segments.size()) + " segments in " + what_,
                        "number " + std::to_string(segment));
    }
    segment_ = &file_.segments[segment];
    offset_ = offset;
  }
  // Steps back are additions that wrap around.
  void Advance(std::uint32_t bytes) { offset_ += bytes; }

  // The address of the word, for one change; moves behind it.
  std::uint32_t Take() {
    if (segment_ == nullptr) throw FormatError(std::string("a segment in ") + what_, "a change before any");
    if (offset_ > segment_->size || segment_->size - offset_ < kWord) {
      throw FormatError(std::string("words inside of the segment ") + segment_->name + " in " + what_,
                        "one at " + Hex(offset_) + " of " + Hex(segment_->size));
    }
    if (left_-- == 0)
      throw FormatError(std::string("no more changes than the file has words in ") + what_, "more");
    const std::uint32_t address = segment_->address + offset_;
    offset_ += kWord;
    return address;
  }

 private:
  const File& file_;
  const char* what_;
  std::size_t left_;
  const Segment* segment_ = nullptr;
  std::uint32_t offset_ = 0;
};

void CheckType(std::uint32_t type, const char* what) {
  if (type != kPointer)
    throw FormatError(std::string("pointers only in ") + what, "the kind " + std::to_string(type));
}

[[noreturn]] void RefuseOpcode(std::uint8_t byte, const char* what) {
  throw FormatError(std::string("known operations in ") + what, "the operation " + Hex(byte));
}

// What is said of names is kept with each word that is bound and each name that is exported, and one name can
// be said of all of them. A small file does not take much memory.
class Room {
 public:
  Room(const File& file, const char* what)
      : what_(what), left_(kAlways + kMostTimes * std::uint64_t{file.bytes.size()}) {}

  void Take(std::size_t bytes) {
    if (bytes > left_)
      throw FormatError(std::string("names in proportion to the file in ") + what_, "too many");
    left_ -= bytes;
  }

 private:
  static constexpr std::uint64_t kAlways = 1U << 20U;
  static constexpr std::uint64_t kMostTimes = 16;

  const char* what_;
  std::uint64_t left_;
};

// Reads one part of the bind information.
class BindReader {
 public:
  BindReader(Bytes part, File& file)
      : file_(file), in_(part, kWhat), place_(file, kWhat), room_(file, kWhat) {}

  // Lazy binds are separated by Done, and padded with it.
  void Read(bool doneEnds) {
    while (!in_.AtEnd()) {
      const std::uint8_t byte = in_.Byte();
      if (static_cast<BindOpcode>(byte & kOpcode) == BindOpcode::Done) {
        if (doneEnds) return;
      } else {
        Do(byte);
      }
    }
  }

 private:
  static constexpr const char* kWhat = "the bind information";

  void Do(std::uint8_t byte) {
    const std::uint8_t immediate = byte & kImmediate;
    switch (static_cast<BindOpcode>(byte & kOpcode)) {
      case BindOpcode::SetLibrary:
        return SetLibrary(immediate);
      case BindOpcode::SetLibraryCounted:
        return SetLibrary(in_.Unsigned());
      case BindOpcode::SetSpecialLibrary:  // 0, or a negative number of four bits
        bind_.library = immediate == 0 ? 0 : static_cast<std::int8_t>(byte | kOpcode);
        return;
      case BindOpcode::SetSymbol:
        if ((immediate & ~kWeakImport) != 0) RefuseOpcode(byte, kWhat);
        bind_.symbol = in_.Text();
        return;
      case BindOpcode::SetType:
        return CheckType(immediate, kWhat);
      case BindOpcode::SetAddend:
        bind_.addend = in_.Signed();
        return;
      case BindOpcode::SetPlace:
        return place_.Set(immediate, in_.Unsigned());
      case BindOpcode::Advance:
        return place_.Advance(in_.UnsignedStep());
      case BindOpcode::Bind:
        return Add();
      case BindOpcode::BindAndAdvance:
        Add();
        return place_.Advance(in_.UnsignedStep());
      case BindOpcode::BindAndAdvanceWords:
        Add();
        return place_.Advance(immediate * kWord);
      case BindOpcode::BindCountedSkipping: {
        const std::uint32_t count = in_.Unsigned();
        const std::uint32_t skip = in_.UnsignedStep();
        for (std::uint32_t i = 0; i < count; ++i) {
          Add();
          place_.Advance(skip);
        }
        return;
      }
      default:
        RefuseOpcode(byte, kWhat);
    }
  }

  void SetLibrary(std::uint32_t number) {
    if (number > file_.libraries.size()) {
      throw FormatError("one of " + std::to_string(file_.libraries.size()) + " libraries in " + kWhat,
                        "number " + std::to_string(number));
    }
    bind_.library = static_cast<std::int32_t>(number);
  }

  void Add() {
    if (bind_.symbol.empty()) throw FormatError(std::string("a symbol in ") + kWhat, "a bind before any");
    bind_.address = place_.Take();
    room_.Take(bind_.symbol.size());
    file_.binds.push_back(bind_);
  }

  File& file_;
  Cursor in_;
  Place place_;
  Room room_;
  Bind bind_{};
};

// Walks the tree of exported names from its root. Each node is met once, whatever its edges say.
class ExportReader {
 public:
  ExportReader(Bytes part, File& file) : part_(part), file_(file), room_(file, kWhat) {}

  void Read() {
    std::vector<Node> open = {{0, {}}};
    while (!open.empty()) {
      const Node node = open.back();
      open.pop_back();
      if (!met_.insert(node.offset).second)
        throw FormatError(std::string("each node once in ") + kWhat, "a second way to " + Hex(node.offset));
      ReadNode(node, open);
    }
  }

 private:
  static constexpr const char* kWhat = "the tree of exports";
  struct Node {
    std::uint32_t offset;
    std::string name;
  };

  void ReadNode(const Node& node, std::vector<Node>& open) {
    Cursor in(part_, kWhat);
    in.GoTo(node.offset);
    const std::uint32_t size = in.Unsigned();
    const std::uint32_t children = in.at();
    if (size != 0) ReadExport(node, in);
    in.GoTo(children);
    in.Skip(size);
    for (unsigned left = in.Byte(); left != 0; --left) {
      Node child{0, node.name + in.Text()};
      child.offset = in.Unsigned();
      if (child.name.size() > Cursor::kLongestText) {
        throw FormatError("names of at most " + std::to_string(Cursor::kLongestText) + " bytes in " + kWhat,
                          "a longer one");
      }
      room_.Take(sizeof child + child.name.size());
      open.push_back(std::move(child));
    }
  }

  void ReadExport(const Node& node, Cursor& in) {
    const std::uint32_t flags = in.Unsigned();
    if (flags != 0)
      throw FormatError(std::string("plain symbols in ") + kWhat,
                        '"' + node.name + "\" with the flags " + Hex(flags));
    const std::uint32_t address = file_.segments.front().address + in.Unsigned();
    if (file_.SegmentAround(address, 1) == nullptr)
      throw FormatError("the export \"" + node.name + "\" inside of the segments", Hex(address));
    file_.exports.push_back({node.name, address});
  }

  Bytes part_;
  File& file_;
  Room room_;
  std::set<std::uint32_t> met_;
};

}  // namespace

void ReadRebases(Bytes part, File& file) {
  static constexpr const char* kWhat = "the rebase information";
  Cursor in(part, kWhat);
  Place place(file, kWhat);
  const auto rebase = [&](std::uint32_t count, std::uint32_t skip) {
    for (std::uint32_t i = 0; i < count; ++i) {
      file.rebases.push_back(place.Take());
      place.Advance(skip);
    }
  };
  while (!in.AtEnd()) {
    const std::uint8_t byte = in.Byte();
    const std::uint8_t immediate = byte & kImmediate;
    switch (static_cast<RebaseOpcode>(byte & kOpcode)) {
      case RebaseOpcode::Done:
        return;
      case RebaseOpcode::SetType:
        CheckType(immediate, kWhat);
        break;
      case RebaseOpcode::SetPlace:
        place.Set(immediate, in.Unsigned());
        break;
      case RebaseOpcode::Advance:
        place.Advance(in.UnsignedStep());
        break;
      case RebaseOpcode::AdvanceWords:
        place.Advance(immediate * kWord);
        break;
      case RebaseOpcode::Rebase:
        rebase(immediate, 0);
        break;
      case RebaseOpcode::RebaseCounted:
        rebase(in.Unsigned(), 0);
        break;
      case RebaseOpcode::RebaseAndAdvance:
        rebase(1, in.UnsignedStep());
        break;
      case RebaseOpcode::RebaseCountedSkipping: {
        const std::uint32_t count = in.Unsigned();
        rebase(count, in.UnsignedStep());
        break;
      }
      default:
        RefuseOpcode(byte, kWhat);
    }
  }
}

void ReadBinds(Bytes part, Binding binding, File& file) {
  BindReader(part, file).Read(binding == Binding::AtOnce);
}

void ReadExports(Bytes part, File& file) {
  if (!part.empty()) ExportReader(part, file).Read();
}

}  // namespace hostrun::macho
