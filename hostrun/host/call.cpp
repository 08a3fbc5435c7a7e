// hostrun/host/call.cpp - calls the functions behind definition records: cdecl, arguments in declared order.
#include "hostrun/host/call.h"

#include "hostrun/host/exceptions.h"
#include "hostrun/host/platform_library.h"

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

// A call into a bundle: a pool around it, and nothing but host exceptions comes out.
template <class F>
auto Cross(const std::string& name, F call) {
  ++bundleCalls;
  try {
    const PoolScope pool;
    return call();
  } catch (const HostException&) {
    throw;
  } catch (const std::bad_alloc&) {
    RaiseHostException("OutOfMemoryException", "Not enough memory in " + name + ".");
  } catch (...) {
    RaiseHostException("RuntimeException", "An exception that is no NSException came out of " + name + ".");
  }
}

Value Convert(std::uint64_t raw, const Type& type) {
  const auto eax = static_cast<std::uint32_t>(raw);
  switch (type.kind) {
    case Kind::Boolean:
      return Value::Boolean((eax & 0xFFU) != 0);
    case Kind::Integer:
      return Value::Integer(static_cast<std::int32_t>(eax));
    case Kind::Int64:
      return Value::Int64(static_cast<std::int64_t>(raw));
    case Kind::Color:
      return Value::Color(eax);
    case Kind::String:
      return Value::Adopt(reinterpret_cast<HostString*>(eax));
    case Kind::Object:
    case Kind::Array:
      return Value::Adopt(reinterpret_cast<Object*>(eax));
    case Kind::Variant: {
      Value object = Value::Adopt(reinterpret_cast<Object*>(eax));
      return Unboxed(object);
    }
    default:
      return {};
  }
}

Value CallRaw(const Method& method, const ArgumentWords& words) {
  const Type& result = *method.signature.result;
  if (result.IsReal()) {
    return Value::Double(runner_call_words_for_real(method.function, words.data(), words.count()));
  }
  return Convert(runner_call_words(method.function, words.data(), words.count()), result);
}

void PushByType(ArgumentWords& words, const Type& type, const Value& value) {
  switch (type.kind) {
    case Kind::Int64:
      return words.PushInt64(value.AsInt64());
    case Kind::Double:
      return words.PushDouble(value.AsReal());
    case Kind::Single:
      return words.PushSingle(static_cast<float>(value.AsReal()));
    case Kind::Boolean:
    case Kind::Integer:
    case Kind::Color:
      return words.PushWord(static_cast<std::uint32_t>(value.AsInt64()));
    default:
      return words.PushHandle(value);
  }
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
  ObservedLife(const Class& cls, bool constructor) : class_(cls), constructor_(constructor) {
    if (observer != nullptr && cls.origin == Origin::Bundle) observer->EnterLife(class_, constructor_);
  }
  ObservedLife(const ObservedLife&) = delete;
  ObservedLife& operator=(const ObservedLife&) = delete;
  ~ObservedLife() {
    if (observer != nullptr && class_.origin == Origin::Bundle) observer->LeaveLife(class_, constructor_);
  }

 private:
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

ReferencePlace::ReferencePlace(const Type& type, const Value& value) : kind_(type.kind) {
  const auto store = [this](auto v) { std::memcpy(&bits_, &v, sizeof v); };
  switch (kind_) {
    case Kind::Double:
      store(value.AsReal());
      break;
    case Kind::Single:
      store(static_cast<float>(value.AsReal()));
      break;
    case Kind::String:
      LockString(value.string());
      store(reinterpret_cast<std::uintptr_t>(value.string()));
      break;
    case Kind::Object:
    case Kind::Array:
    case Kind::Variant:
      LockObject(value.object());
      store(reinterpret_cast<std::uintptr_t>(value.object()));
      break;
    default:
      store(value.AsInt64());
      break;
  }
}

Value ReferencePlace::Take() const {
  const auto load = [this]<class T>(T) {
    T v;
    std::memcpy(&v, &bits_, sizeof v);
    return v;
  };
  switch (kind_) {
    case Kind::Double:
      return Value::Double(load(0.0));
    case Kind::Single:
      return Value::Double(load(0.0F));
    default:
      return Convert(bits_, *TypeOf(kind_));
  }
}

Value BoxedVariant(const Value& value) {
  if (value.IsNil() || value.kind() == Kind::Object) return value;
  Object* const box = NewObject(VariantBoxClass());
  PayloadOf<Value>(box) = value;
  return Value::Adopt(box);
}

Value CallFunction(const Method& method, const ArgumentWords& words) {
  if (method.origin == Origin::Host) return CallRaw(method, words);
  if (observer != nullptr && method.origin == Origin::Bundle) return CallObserved(method, words);
  return CallAcross(method, words);
}

Value Invoke(const Method& method, Object* self, const std::vector<Value>& arguments) {
  ArgumentWords words;
  std::vector<Value> boxes;
  std::vector<std::pair<ReferencePlace, Value*>> places;
  boxes.reserve(arguments.size());
  places.reserve(arguments.size());
  if (!method.shared && method.owner != nullptr) words.PushPointer(self);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Parameter& parameter = method.signature.parameters[i];
    if (parameter.byref) {
      places.emplace_back(ReferencePlace(*parameter.type, *arguments[i].place()), arguments[i].place());
      words.PushPointer(places.back().first.address());
    } else if (parameter.type->kind == Kind::Variant) {
      boxes.push_back(BoxedVariant(arguments[i]));
      words.PushHandle(boxes.back());
    } else {
      PushByType(words, *parameter.type, arguments[i]);
    }
  }
  const auto takeBack = [&places] {
    for (auto& [place, target] : places) *target = place.Take();
  };
  try {
    Value result = CallFunction(method, words);
    takeBack();
    return result;
  } catch (const HostException&) {
    takeBack();
    throw;
  }
}

Value GetProperty(const Property& property, Object* self) {
  ArgumentWords words;
  if (!property.shared) words.PushPointer(self);
  words.PushWord(property.parameter);
  return CallFunction(property.getter, words);
}

void SetProperty(const Property& property, Object* self, const Value& value) {
  ArgumentWords words;
  if (!property.shared) words.PushPointer(self);
  words.PushWord(property.parameter);
  const Value held = property.type->kind == Kind::Variant ? BoxedVariant(value) : value;
  PushByType(words, *property.type, held);
  CallFunction(property.setter, words);
}

// A destructor may run where nothing can be thrown: what it raised surfaces at the next call.
void CallLifecycle(const Class& cls, void (*function)(qvx::REALobject), Object* object) {
  if (cls.origin == Origin::Host) {
    function(HandleOf(object));
    return;
  }
  const ObservedLife life(cls, cls.definition != nullptr && function == cls.definition->constructor);
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
