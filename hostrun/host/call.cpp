// hostrun/host/call.cpp - calls the functions behind definition records: cdecl, arguments in declared order.
#include "hostrun/host/call.h"

#include <array>
#include <bit>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/platform_log.h"

extern "C" {
std::uint64_t runner_call_words(qvx::REALproc function, const std::uint32_t* words, std::uint32_t count);
double runner_call_words_for_real(qvx::REALproc function, const std::uint32_t* words, std::uint32_t count);
}

namespace hostrun {
namespace {

using Replaced = void (*)(Object* self, void* before);
constinit Replaced nativeReplaced = nullptr;
constinit bool resultsUnlocked = false;
constinit std::uint64_t bundleCalls = 0;
constinit CallObserver* observer = nullptr;

// New objects stand first in the list of live ones.
bool IsNewerThan(const Object* object, const Object* newestBefore) {
  for (const Object* at = FirstLiveObject(); at != nullptr && at != newestBefore; at = at->next) {
    if (at == object) return true;
  }
  return false;
}

[[noreturn]] void RaiseForeign(const std::string& name) {
  RaiseHostException("RuntimeException", "An exception that is no NSException came out of " + name + ".");
}

// A call into a bundle: a pool around it, and nothing but host exceptions comes out.
template <class F>
auto Cross(const std::string& name, F call) {
  ++bundleCalls;
  try {
    const CallPoolScope pool;
    return call();
  } catch (const HostException&) {
    throw;
  } catch (const std::exception& error) {
    if (LacksMemory(error)) RaiseHostException("OutOfMemoryException", "Not enough memory in " + name + ".");
    RaiseForeign(name);
  } catch (...) {
    RaiseForeign(name);
  }
}

Value CallRaw(const Method& method, const ArgumentWords& words) {
  const Type& result = *method.signature.result;
  if (result.IsReal()) {
    return Value::Double(runner_call_words_for_real(method.function, words.data(), words.count()));
  }
  const auto raw = std::bit_cast<std::array<std::uint32_t, 2>>(
      runner_call_words(method.function, words.data(), words.count()));
  Value value = AdoptWords(result, raw.data());
  return result.kind == Kind::Variant ? Unboxed(value) : value;
}

// The call itself and what the host owes after it: a reference where the bundle could take none, a pair that
// the instance cache must forget, and the exception that was raised.
Value CallAcross(const Method& method, const ArgumentWords& words) {
  const Object* const newestBefore = FirstLiveObject();
  Object* const self = method.shared ? nullptr : reinterpret_cast<Object*>(words.data()[0]);
  void* const native = self == nullptr ? nullptr : NativePointerOf(self);
  Value result = Cross(method.signature.name, [&] { return CallRaw(method, words); });
  if (resultsUnlocked && result.object() != nullptr && !IsNewerThan(result.object(), newestBefore)) {
    LockObject(result.object());
  }
  const bool replaced = native != nullptr && NativePointerOf(self) != native;
  if (replaced && nativeReplaced != nullptr) nativeReplaced(self, native);
  ThrowPendingException();
  WritePlatformLog();
  return result;
}

Value CallObserved(const Method& method, const ArgumentWords& words) {
  observer->Enter(method, words);
  try {
    Value result = CallAcross(method, words);
    observer->Leave(method, words, &result, nullptr);
    return result;
  } catch (const HostException& exception) {
    observer->Leave(method, words, nullptr, exception.object());
    throw;
  }
}

// A constructor or destructor that somebody sees.
class ObservedLife {
 public:
  ObservedLife(Object* object, const Class& cls, bool constructor)
      : object_(object), class_(cls), constructor_(constructor) {
    if (observer != nullptr && cls.origin == Origin::Bundle)
      observer->EnterLife(object_, class_, constructor_);
  }
  ObservedLife(const ObservedLife&) = delete;
  ObservedLife& operator=(const ObservedLife&) = delete;
  ~ObservedLife() {
    if (observer != nullptr && class_.origin == Origin::Bundle)
      observer->LeaveLife(object_, class_, constructor_);
  }

 private:
  Object* object_;
  const Class& class_;
  bool constructor_;
};

}  // namespace

void SetCallObserver(CallObserver* newObserver) {
  observer = newObserver;
}

void SetNativeReplaced(void (*replaced)(Object* self, void* before)) {
  nativeReplaced = replaced;
}

void SetResultsUnlocked(bool unlocked) {
  resultsUnlocked = unlocked;
}

std::uint64_t BundleCalls() {
  return bundleCalls;
}

Value CallFunction(const Method& method, const ArgumentWords& words) {
  if (method.origin == Origin::Host) return CallRaw(method, words);
  if (observer != nullptr && method.origin == Origin::Bundle) return CallObserved(method, words);
  return CallAcross(method, words);
}

Value Invoke(const Method& method, Object* self, const std::vector<Value>& arguments) {
  CallArguments passed;
  std::vector<Value*> places;
  if (!method.shared && method.owner != nullptr) passed.PushSelf(self);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Parameter& parameter = method.signature.parameters[i];
    if (parameter.byref) {
      places.push_back(arguments[i].place());
      passed.PushReference(*parameter.type, *places.back());
    } else {
      passed.Push(*parameter.type, arguments[i]);
    }
  }
  return CallFunction(method, passed,
                      [&places](std::size_t i, Value value) { *places[i] = std::move(value); });
}

Value GetProperty(const Property& property, Object* self) {
  ArgumentWords words;
  if (!property.shared) words.PushPointer(self);
  words.PushWord(property.parameter);
  return CallFunction(property.getter, words);
}

void SetProperty(const Property& property, Object* self, const Value& value) {
  CallArguments arguments;
  if (!property.shared) arguments.PushSelf(self);
  arguments.Push(*TypeOf(Kind::Integer), Value::Integer(static_cast<std::int32_t>(property.parameter)));
  arguments.Push(*property.type, value);
  CallFunction(property.setter, arguments.words());
}

// A destructor may run where nothing can be thrown: what it raised surfaces at the next call.
void CallLifecycle(const Class& cls, void (*function)(qvx::REALobject), Object* object) {
  if (cls.origin == Origin::Host) {
    function(HandleOf(object));
    return;
  }
  const ObservedLife life(object, cls, cls.definition != nullptr && function == cls.definition->constructor);
  try {
    Cross(cls.name, [&] {
      function(HandleOf(object));
      return 0;
    });
  } catch (const HostException& exception) {
    SetPendingException(exception.object());
  }
}

}  // namespace hostrun
