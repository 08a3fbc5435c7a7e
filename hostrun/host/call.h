// hostrun/host/call.h - calls the functions behind definition records: cdecl, arguments in declared order.
#pragma once

#include <cstdint>
#include <vector>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/value.h"
#include "hostrun/host/words.h"

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
  virtual void Enter(const Method& method, const ArgumentWords& words) = 0;
  // Either a result or an exception.
  virtual void Leave(const Method& method, const ArgumentWords& words, const Value* result,
                     Object* exception) = 0;
  // The constructor or destructor of a definition, on an instance of it.
  virtual void EnterLife(Object* object, const Class& cls, bool constructor) = 0;
  virtual void LeaveLife(Object* object, const Class& cls, bool constructor) = 0;
};
// Null: nobody.
void SetCallObserver(CallObserver* observer);

// Called when a method has given up the native object of its instance for another, or for none.
void SetNativeReplaced(void (*replaced)(Object* self, void* before));

// Calls into the bundle so far.
std::uint64_t BundleCalls();

// Calls `method` with words laid out for it, self first where it has one. Throws HostException when the call
// raised one. The result is converted by the declaration; its reference is the caller's.
Value CallFunction(const Method& method, const ArgumentWords& words);

// The same; afterwards `store(index, value)` gets what each by-reference argument holds, also when the call
// raised.
template <class Store>
Value CallFunction(const Method& method, CallArguments& arguments, Store store) {
  if (arguments.references() == 0) return CallFunction(method, arguments.words());
  const auto storeAll = [&] {
    for (std::size_t i = 0; i < arguments.references(); ++i) store(i, arguments.TakeReference(i));
  };
  try {
    Value result = CallFunction(method, arguments.words());
    storeAll();
    return result;
  } catch (const HostException&) {
    storeAll();
    throw;
  }
}

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
