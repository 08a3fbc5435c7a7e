// hostrun/host/words.h - values as the words of a call: cdecl, arguments in declared order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "hostrun/host/types.h"
#include "hostrun/host/value.h"

namespace hostrun {

inline constexpr std::size_t kMostParameters = 30;

// How a value stands among the words: Int64 and Double take two of them, all others one.
enum class Pass : std::uint8_t {
  Whole,  // Boolean, Integer, Color
  Wide,   // Int64
  Single,
  Real,    // Double
  Handle,  // strings, objects, arrays
  Boxed,   // a Variant: as an object
};
Pass PassOf(const Type& type);
std::size_t WordCount(const Type& type);

// The value of that type in the words at `words`. A counted one takes over the reference that the words
// hold...
Value AdoptWords(const Type& type, const std::uint32_t* words);
// ... or takes a reference of its own. A Variant stays the object that it was handed over as, for both.
Value ShareWords(const Type& type, const std::uint32_t* words);

// Hands a variant over as an object: an object as it is, anything else in a box.
Value BoxedVariant(const Value& value);

// The argument words of one call.
class ArgumentWords {
 public:
  void PushWord(std::uint32_t word) { words_[count_++] = word; }
  void PushPointer(const void* pointer) {
    PushWord(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer)));
  }
  void PushInt64(std::int64_t i) { PushBytes(i); }
  void PushDouble(double d) { PushBytes(d); }
  void PushSingle(float f) { PushBytes(f); }
  // Of a value of a counted type. The value must outlive the call.
  void PushHandle(const Value& value) {
    PushPointer(value.kind() == Kind::String ? static_cast<const void*>(value.string())
                                             : static_cast<const void*>(value.object()));
  }

  const std::uint32_t* data() const { return words_.data(); }
  std::uint32_t count() const { return count_; }

 private:
  template <class T>
  void PushBytes(T value) {
    std::memcpy(&words_[count_], &value, sizeof value);
    count_ += sizeof value / sizeof words_[0];
  }

  std::array<std::uint32_t, 2 + 2 * kMostParameters> words_;  // only the first count_ are written
  std::uint32_t count_ = 0;
};

// The arguments of one call while it is made: the words, and what must live as long as the call.
class CallArguments {
 public:
  CallArguments() = default;
  CallArguments(const CallArguments&) = delete;
  CallArguments& operator=(const CallArguments&) = delete;
  ~CallArguments();

  void PushSelf(Object* self) { words_.PushPointer(self); }

  // By value. `source` is asked once, in the form that the words want: Whole(), Real() or Eval().
  template <class Source>
  void Push(Pass pass, const Source& source) {
    switch (pass) {
      case Pass::Whole:
        return words_.PushWord(static_cast<std::uint32_t>(source.Whole()));
      case Pass::Wide:
        return words_.PushInt64(source.Whole());
      case Pass::Single:
        return words_.PushSingle(static_cast<float>(source.Real()));
      case Pass::Real:
        return words_.PushDouble(source.Real());
      case Pass::Handle:
        return words_.PushHandle(Hold(source.Eval()));
      case Pass::Boxed:
        return words_.PushHandle(Hold(BoxedVariant(source.Eval())));
    }
  }
  void Push(const Type& type, const Value& value);

  // By reference: the callee gets the address of a copy. `type` must outlive the call.
  void PushReference(const Type& type, const Value& value);
  std::size_t references() const { return referenceCount_; }
  // What by-reference argument `index` holds after the call. To be called at most once for each.
  Value TakeReference(std::size_t index);

  const ArgumentWords& words() const { return words_; }

 private:
  struct Copy {
    const Type* type;  // null: taken
    std::uint64_t bits;
  };
  const Value& Hold(Value value);
  Value* held() { return reinterpret_cast<Value*>(held_.data()); }

  ArgumentWords words_;
  // Only the first of each are made: most calls hold nothing.
  alignas(Value) std::array<std::byte, kMostParameters * sizeof(Value)> held_;
  std::array<Copy, kMostParameters> references_;
  std::size_t heldCount_ = 0;
  std::size_t referenceCount_ = 0;
};

}  // namespace hostrun
