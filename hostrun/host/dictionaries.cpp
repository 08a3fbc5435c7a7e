// hostrun/host/dictionaries.cpp - the host's "Dictionary": values by keys of any type.
#include "hostrun/host/dictionaries.h"

#include <array>
#include <cmath>
#include <functional>
#include <list>
#include <map>

#include "hostrun/host/arrays.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/words.h"

namespace hostrun {
namespace {

// Keys of different groups are never the same.
enum class Group : std::uint8_t { Nil, Boolean, Number, NotANumber, Color, String, Object };

Group GroupOf(const Value& key) {
  switch (key.kind()) {
    case Kind::Boolean:
      return Group::Boolean;
    case Kind::Integer:
    case Kind::Int64:
      return Group::Number;
    case Kind::Double:
      return std::isnan(key.real()) ? Group::NotANumber : Group::Number;
    case Kind::Color:
      return Group::Color;
    case Kind::String:
      return Group::String;
    case Kind::Object:
      return Group::Object;
    default:
      return Group::Nil;
  }
}

// Some order in which keys that "=" takes for equal are the same one.
struct KeyOrder {
  bool operator()(const Value& a, const Value& b) const {
    const Group group = GroupOf(a);
    if (group != GroupOf(b)) return group < GroupOf(b);
    switch (group) {
      case Group::String:
        return CompareStrings(a.string(), b.string()) < 0;
      case Group::Number:
        return Exact(a) < Exact(b);
      case Group::Object:
        return std::less<>()(a.object(), b.object());
      case Group::NotANumber:
        return false;
      default:
        return a.int64() < b.int64();
    }
  }

 private:
  // Wide enough for an Int64 and for a Double.
  static long double Exact(const Value& number) {
    return number.kind() == Kind::Double ? number.real() : static_cast<long double>(number.int64());
  }
};

struct Entry {
  Value key;
  Value value;
};

struct Entries {
  std::list<Entry> inOrder;  // of their first assignment
  std::map<Value, std::list<Entry>::iterator, KeyOrder> byKey;
};

Entries& EntriesOf(Object* self) {
  return PayloadOf<Entries>(self);
}

// A Variant parameter, and a Variant result with its reference for the caller.
Value Taken(Object* boxed) {
  return Unboxed(Value::Share(boxed));
}
Object* Given(const Value& value) {
  const Value boxed = BoxedVariant(value);
  return ObjectRef::Share(boxed.object()).Detach();
}

[[noreturn]] void RaiseNoSuchKey(const Value& key) {
  RaiseHostException("KeyNotFoundException", "The Dictionary has no key " + LiteralText(key) + ".");
}

Entry* Find(Object* self, const Value& key) {
  const auto found = EntriesOf(self).byKey.find(key);
  return found == EntriesOf(self).byKey.end() ? nullptr : &*found->second;
}

Object* GetValue(Object* self, Object* boxedKey) {
  const Value key = Taken(boxedKey);
  const Entry* const entry = Find(self, key);
  if (entry == nullptr) RaiseNoSuchKey(key);
  return Given(entry->value);
}

void SetValue(Object* self, Object* boxedKey, Object* boxedValue) {
  const Value key = Taken(boxedKey);
  Entry* entry = Find(self, key);
  if (entry == nullptr) {
    Entries& entries = EntriesOf(self);
    entries.inOrder.push_back({key, {}});
    entries.byKey.emplace(key, std::prev(entries.inOrder.end()));
    entry = &entries.inOrder.back();
  }
  entry->value = Taken(boxedValue);
}

Object* Lookup(Object* self, Object* boxedKey, Object* boxedDefault) {
  const Entry* const entry = Find(self, Taken(boxedKey));
  return Given(entry == nullptr ? Taken(boxedDefault) : entry->value);
}

bool HasKey(Object* self, Object* boxedKey) {
  return Find(self, Taken(boxedKey)) != nullptr;
}

void Remove(Object* self, Object* boxedKey) {
  const Value key = Taken(boxedKey);
  Entries& entries = EntriesOf(self);
  const auto found = entries.byKey.find(key);
  if (found == entries.byKey.end()) RaiseNoSuchKey(key);
  // Freed when it has left the Dictionary: a destructor may look at it.
  const Entry gone = std::move(*found->second);
  entries.inOrder.erase(found->second);
  entries.byKey.erase(found);
}

void RemoveAll(Object* self) {
  const Entries gone = std::exchange(EntriesOf(self), {});
}

Object* Listed(Object* self, Value Entry::*part) {
  ObjectRef array = ObjectRef::Adopt(NewArray(*TypeOf(Kind::Variant), -1));
  for (const Entry& entry : EntriesOf(self).inOrder) ArrayDataOf(array.get()).items.push_back(entry.*part);
  return array.Detach();
}
Object* Keys(Object* self) {
  return Listed(self, &Entry::key);
}
Object* Values(Object* self) {
  return Listed(self, &Entry::value);
}

std::int32_t Count(Object* self, std::int32_t) {
  return static_cast<std::int32_t>(EntriesOf(self).inOrder.size());
}

std::array properties = {ReadOnly("Count", "integer", &Count)};

std::array methods = {
    MethodRecord("Value(key as variant) as variant", &GetValue),
    MethodRecord("Value(key as variant, assigns value as variant)", &SetValue),
    MethodRecord("Lookup(key as variant, default as variant) as variant", &Lookup),
    MethodRecord("HasKey(key as variant) as boolean", &HasKey),
    MethodRecord("Remove(key as variant)", &Remove),
    MethodRecord("RemoveAll", &RemoveAll),
    MethodRecord("Keys as variant()", &Keys),
    MethodRecord("Values as variant()", &Values),
};

}  // namespace

void RegisterDictionaryClass() {
  static constinit qvx::REALclassDefinition record = ClassRecord("Dictionary");
  SetMembers(record, methods, properties);
  TheRegistry().Register(record, Origin::Host, PayloadFor<Entries>());
}

}  // namespace hostrun
