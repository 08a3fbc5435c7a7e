// hostrun/commands/check_calls.cpp - checks of each function behind the records: called on empty instances it
// must come back, give its neutral result and leave every reference as it was.
//
// Shared functions have no instance to be empty: of them only the type of the result and the references
// count.
#include <algorithm>

#include "hostrun/commands/check_parts.h"
#include "hostrun/commands/describe.h"
#include "hostrun/host/arrays.h"
#include "hostrun/host/call.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/platform_library.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

// What a function is called with.
enum class Self : std::uint8_t { None, Null, Empty };
enum class Objects : std::uint8_t { Nil, Empty };
struct Way {
  Self self;
  Objects objects;
  const char* text;
};

constexpr double kMark = 7.25;  // in by-reference arguments before the call

// A pool that lets the run loop have its turn before it goes.
class TurnedPool {
 public:
  TurnedPool() = default;
  TurnedPool(const TurnedPool&) = delete;
  TurnedPool& operator=(const TurnedPool&) = delete;
  ~TurnedPool() { TurnRunLoop(); }

 private:
  PoolScope pool_;
};

// An argument of that type. A whole number may be a handle of the platform: only 0 is safe.
Value ArgumentFor(const Type& type, Objects objects) {
  switch (type.kind) {
    case Kind::Object:
      if (objects == Objects::Nil || !type.cls->defined) return Value::Nil();
      return Value::Adopt(NewObject(*type.cls));
    case Kind::Array:
      return objects == Objects::Nil ? Value::Nil() : Value::Adopt(NewArray(*type.element, -1));
    case Kind::Variant:
      return Value::Nil();
    case Kind::String:
      return objects == Objects::Nil ? Value::DefaultOf(type) : Value::Text("nothing");
    default:
      return Value::DefaultOf(type);
  }
}

// What a function gives that has nothing to give: nothing, Nil, 0, False, an empty string or array.
bool IsNeutral(const Value& value) {
  switch (value.kind()) {
    case Kind::Nothing:
    case Kind::Nil:
      return true;
    case Kind::String:
      return BytesOf(value.string()).empty();
    case Kind::Object:
      return value.object()->cls == &ArrayClass() && ArrayDataOf(value.object()).items.empty();
    default:
      return value.AsReal() == 0;
  }
}

Problem CheckType(const Method& method, const Value& result) {
  const Type& type = *method.signature.result;
  const Object* const object = result.object();
  if (object == nullptr) return {};
  if (object->mark != kLiveMark) return "wanted a live object, found one that is gone";
  const bool fits = type.kind == Kind::Array ? object->cls == &ArrayClass()
                                             : type.kind == Kind::Variant || object->cls->IsA(*type.cls);
  if (fits) return {};
  return "wanted a result of type " + type.name + ", found a " + object->cls->name;
}

std::string ShownResult(const Value& value) {
  return value.kind() == Kind::Object ? "a " + value.object()->cls->name : LiteralText(value);
}

// Calls the function once. `parameterWord` is the word of a property's record; 0 for methods.
Problem CallOnce(const Method& method, const Way& way, std::uint32_t parameterWord) {
  const TurnedPool pool;
  const Value self = way.self == Self::Empty ? Value::Adopt(NewObject(*method.owner)) : Value::Nil();
  const std::vector<Parameter>& parameters = method.signature.parameters;
  std::vector<Value> places(parameters.size());
  std::vector<Value> arguments;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].byref) {
      places[i] =
          parameters[i].type->IsReal() ? Value::Double(kMark) : ArgumentFor(*parameters[i].type, way.objects);
      arguments.push_back(Value::Reference(&places[i]));
    } else {
      arguments.push_back(ArgumentFor(*parameters[i].type, way.objects));
    }
  }
  // A property's getter takes the word of its record.
  if (parameterWord != 0) arguments[0] = Value::Integer(static_cast<std::int32_t>(parameterWord));
  std::vector<std::int32_t> references;
  references.reserve(arguments.size());
  for (const Value& argument : arguments) {
    references.push_back(argument.object() == nullptr ? 0 : argument.object()->references);
  }
  Value result;
  try {
    result = Invoke(method, self.object(), arguments);
  } catch (const HostException& exception) {
    const bool isNil = exception.object()->cls->name == "NilObjectException";
    if (way.self == Self::None || (way.self == Self::Empty && isNil)) return {};
    return "wanted a call that raises nothing, found " + DescribeException(exception.object());
  }
  Problem problem = CheckType(method, result);
  if (problem) return problem;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Object* const object = arguments[i].object();
    if (object != nullptr && object != result.object() && object->references != references[i]) {
      return "wanted argument " + std::to_string(i + 1) + " with " + std::to_string(references[i]) +
             " references as before, found " + std::to_string(object->references);
    }
  }
  if (way.self == Self::None) return {};
  // A function that fills its instance has done its work, and may answer what it likes.
  if (way.self == Self::Empty && NativePointerOf(self.object()) != nullptr) return {};
  if (!IsNeutral(result)) return "wanted the neutral result, found " + ShownResult(result);
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (parameters[i].byref && !IsNeutral(places[i])) {
      return "wanted 0 in " + parameters[i].name + ", found " + ShownResult(places[i]);
    }
  }
  return {};
}

// What is alive in this process, host side.
struct Alive {
  int objects = 0;
  int strings = 0;
  int natives = 0;
};

Alive CountAlive() {
  Alive alive;
  const LiveCounts counts = CountLive();
  for (const LiveCounts::ByPlace& place : counts.objects) alive.objects += place.count;
  for (const LiveCounts::ByPlace& place : counts.strings) alive.strings += place.count;
  alive.natives = counts.nativeRetains;
  return alive;
}

Problem Changed(const char* what, int before, int after) {
  if (before == after) return {};
  return "wanted as many live " + std::string(what) + " after the call as before, found " +
         std::to_string(after - before) + (after > before ? " more" : " fewer");
}

Problem CheckCall(const Method& method, std::uint32_t parameterWord) {
  static constexpr Way kShared[] = {{Self::None, Objects::Nil, "with nothing"},
                                    {Self::None, Objects::Empty, "with empty instances"}};
  static constexpr Way kInstance[] = {{Self::Empty, Objects::Nil, "on an empty instance"},
                                      {Self::Empty, Objects::Empty, "on and with empty instances"},
                                      {Self::Null, Objects::Nil, "on a null handle"}};
  const std::span<const Way> ways =
      method.shared ? std::span<const Way>(kShared) : std::span<const Way>(kInstance);
  for (const Way& way : ways) {
    // The first call may fill what is kept for later calls; the second must leave everything as it was.
    Problem problem = CallOnce(method, way, parameterWord);
    const Alive before = CountAlive();
    if (!problem) problem = CallOnce(method, way, parameterWord);
    const Alive after = CountAlive();
    if (!problem) problem = Changed("objects", before.objects, after.objects);
    if (!problem) problem = Changed("strings", before.strings, after.strings);
    if (!problem) problem = Changed("native objects", before.natives, after.natives);
    if (problem) return std::string(way.text) + ": " + *problem;
  }
  return {};
}

Problem CheckLife(Class& cls) {
  const Alive before = CountAlive();
  {
    const TurnedPool pool;
    const ObjectRef instance = ObjectRef::Adopt(NewObject(cls));
    ThrowPendingException();
    if (NativePointerOf(instance.get()) != nullptr)
      return "wanted an empty instance, found one that wraps something";
  }
  return Changed("objects", before.objects, CountAlive().objects);
}

}  // namespace

std::vector<BundleCheck> CallChecks() {
  std::vector<Class*> registered;
  for (const auto& cls : TheRegistry().classes()) {
    if (cls->origin == Origin::Bundle && cls->defined) registered.push_back(cls.get());
  }
  std::sort(registered.begin(), registered.end(),
            [](const Class* a, const Class* b) { return a->order < b->order; });
  std::vector<BundleCheck> checks;
  for (Class* const cls : registered) {
    const CheckKind& call = KindNamed("VERSION/call/CLASS.MEMBER");
    const std::string prefix = cls->name + ".";
    checks.push_back({KindNamed("VERSION/life/CLASS"), cls->name, [cls] { return CheckLife(*cls); }});
    for (const Property& property : cls->properties) {
      checks.push_back({call, prefix + property.name,
                        [&property] { return CheckCall(property.getter, property.parameter); }});
    }
    for (const auto* methods : {&cls->methods, &cls->sharedMethods}) {
      for (const Method& method : *methods) {
        checks.push_back({call, prefix + method.declaration, [&method] { return CheckCall(method, 0); }});
      }
    }
  }
  return checks;
}

}  // namespace hostrun
