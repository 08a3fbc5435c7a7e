// hostrun/host/call.h - calls the functions behind definition records: cdecl, arguments in declared order.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "hostrun/host/registry.h"
#include "hostrun/host/value.h"

namespace hostrun {

// A host without "REALLockObject" gets known objects back without a reference; the runner then takes one
// itself.
void SetResultsUnlocked(bool unlocked);
// Sees the calls into a bundle: each Enter is followed by its Leave, whatever happens in between.
class CallObserver {
 public:
  CallObserver() = default;
  CallObserver(const CallObserver&) = delete;
  CallObserver& operator=(const CallObserver&) = delete;
  virtual ~CallObserver() = default;
  virtual void Enter(const Method& method, const class ArgumentWords& words) = 0;
  // Either a result or an exception.
  virtual void Leave(const Method& method, const class ArgumentWords& words, const Value* result,
                     Object* exception) = 0;
  // The constructor or destructor of a definition.
  virtual void EnterLife(const Class& cls, bool constructor) = 0;
  virtual void LeaveLife(const Class& cls, bool constructor) = 0;
};
// Null: nobody.
void SetCallObserver(CallObserver* observer);

// Called when a method has given up the native object of its instance for another, or for none.
void SetNativeReplaced(void (*replaced)(Object* self, void* before));

// Calls into the bundle so far.
std::uint64_t BundleCalls();

inline constexpr std::size_t kMostParameters = 30;

// The argument words of one call.
class ArgumentWords {
 public:
  void PushWord(std::uint32_t word) { words_[count_++] = word; }
  void PushPointer(const void* pointer) {
    PushWord(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer)));
  }
  void PushInt64(std::int64_t i) {
    std::memcpy(&words_[count_], &i, sizeof i);
    count_ += 2;
  }
  void PushDouble(double d) {
    std::memcpy(&words_[count_], &d, sizeof d);
    count_ += 2;
  }
  void PushSingle(float f) {
    std::memcpy(&words_[count_], &f, sizeof f);
    count_ += 1;
  }

  // A value of a counted type: pushes its handle. The value must outlive the call.
  void PushHandle(const Value& value) {
    PushPointer(value.kind() == Kind::String ? static_cast<const void*>(value.string())
                                             : static_cast<const void*>(value.object()));
  }

  const std::uint32_t* data() const { return words_.data(); }
  std::uint32_t count() const { return count_; }

 private:
  std::array<std::uint32_t, 2 + 2 * kMostParameters> words_;  // only the first count_ are written
  std::uint32_t count_ = 0;
};

// The memory behind a by-reference argument: holds a copy of the value during the call.
class ReferencePlace {
 public:
  ReferencePlace(const Type& type, const Value& value);
  void* address() { return &bits_; }
  // The value after the call. To be called exactly once.
  Value Take() const;

 private:
  Kind kind_;
  std::uint64_t bits_ = 0;
};

// Hands a variant over as an object: an object as it is, anything else in a box.
Value BoxedVariant(const Value& value);

// Calls `method` with words laid out for it, self first where it has one. Throws HostException when the call
// raised one. The result is converted by the declaration; its reference is the caller's.
Value CallFunction(const Method& method, const ArgumentWords& words);

// Calls with values that already have the parameters' types, defaults filled in and parameter arrays packed.
// A by-reference argument is a Value of Kind::Reference whose place is read and written.
Value Invoke(const Method& method, Object* self, const std::vector<Value>& arguments);

Value GetProperty(const Property& property, Object* self);
void SetProperty(const Property& property, Object* self, const Value& value);

// A constructor or destructor of a definition.
void CallLifecycle(const Class& cls, void (*function)(qvx::REALobject), Object* object);

// The host object as the records' functions know it.
inline qvx::REALobject HandleOf(Object* object) {
  return reinterpret_cast<qvx::REALobject>(object);
}

}  // namespace hostrun
