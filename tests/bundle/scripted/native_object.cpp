// tests/bundle/scripted/native_object.cpp - the scripted platform's objects.
#include "tests/bundle/scripted/native_object.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <unordered_set>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/text.h"

namespace scripted {
namespace {

struct Registry {
  std::vector<NativeObject*> objects;  // never deleted when freed: a message to a freed object must be seen
  std::size_t permanent = 0;           // so many of them outlive ForgetNatives
  std::unordered_set<const void*> known;
  std::map<std::string, NativeObject*, std::less<>> classes;
  std::map<std::string, int, std::less<>> counters;
  std::set<std::string, std::less<>> hidden;
  std::map<std::string, const std::string*, std::less<>> selectors;
  std::unordered_set<const void*> knownSelectors;
};

Registry& All() {
  static auto* const registry = new Registry;
  return *registry;
}

void FreeIfUnheld(NativeObject* object) {
  if (object->held + object->pooled + object->kept == 0) object->freed = true;
}

}  // namespace

bool IsNative(const void* pointer) {
  return All().known.contains(pointer);
}

NativeObject* Native(const void* pointer) {
  if (pointer == nullptr) return nullptr;
  if (!IsNative(pointer)) {
    std::fprintf(stderr, "wanted an object of the platform, found %p; a handle was mixed up\n", pointer);
    std::abort();
  }
  return static_cast<NativeObject*>(const_cast<void*>(pointer));
}

NativeObject* MakeNative(std::string_view className, std::string_view name) {
  const Outside outside;
  Registry& all = All();
  auto* const object = new NativeObject;
  object->className = className;
  if (name.empty()) {
    const int number = ++all.counters[std::string(className)];
    object->name = std::string(className) + "#" + std::to_string(number);
  } else {
    object->name = name;
  }
  object->kept = 1;
  all.objects.push_back(object);
  all.known.insert(object);
  return object;
}

NativeObject* MakeText(std::u16string_view text) {
  NativeObject* const object = MakeNative("NSString");
  object->text = text;
  return object;
}

NativeObject* MakeText(std::string_view ascii) {
  return MakeText(std::u16string(ascii.begin(), ascii.end()));
}

NativeObject* MakeData(std::vector<std::uint8_t> bytes) {
  NativeObject* const object = MakeNative("NSData");
  object->bytes = std::move(bytes);
  return object;
}

NativeObject* MakeDictionary(std::string_view name) {
  return MakeNative("NSMutableDictionary", name);
}

NativeObject* MakeException(std::string_view name, std::string_view reason) {
  NativeObject* const object = MakeNative("NSException");
  object->items = {MakeText(name), MakeText(reason), MakeNative("NSDictionary")};
  return object;
}

NativeObject* Autoreleased(NativeObject* object) {
  object->kept -= 1;
  object->pooled += 1;
  return object;
}

NativeObject* Owned(NativeObject* object) {
  object->kept -= 1;
  object->held += 1;
  return object;
}

NativeObject* ClassNamed(std::string_view name) {
  Registry& all = All();
  const auto found = all.classes.find(name);
  if (found != all.classes.end()) return found->second;
  NativeObject* const object = MakeNative(name, name);
  object->isClass = true;
  all.classes.emplace(name, object);
  return object;
}

void HideClass(std::string_view name) {
  All().hidden.emplace(name);
}
bool IsHidden(std::string_view name) {
  return All().hidden.contains(name);
}

SEL SelectorNamed(std::string_view name) {
  const Outside outside;
  Registry& all = All();
  auto found = all.selectors.find(name);
  if (found == all.selectors.end()) {
    const auto* const text = new std::string(name);
    found = all.selectors.emplace(name, text).first;
    all.knownSelectors.insert(text);
  }
  return reinterpret_cast<SEL>(found->second);
}

std::string SelectorName(SEL selector) {
  if (!All().knownSelectors.contains(selector)) {
    Log().Violation("a message with a selector that was never registered");
    return "?";
  }
  return *reinterpret_cast<const std::string*>(selector);
}

void TakeReference(NativeObject* object) {
  object->held += 1;
}

void GiveReference(NativeObject* object, std::string_view how) {
  if (object->held == 0) {
    Log().Violation(object->name + " was given up by " + std::string(how) + " without being held");
    return;
  }
  object->held -= 1;
  FreeIfUnheld(object);
}

void MoveReferenceToPool(NativeObject* object) {
  if (object->held == 0) {
    Log().Violation(object->name + " was autoreleased without being held");
    return;
  }
  object->held -= 1;
  object->pooled += 1;
}

void DrainPool() {
  for (NativeObject* const object : All().objects) {
    if (object->pooled == 0) continue;
    object->pooled = 0;
    FreeIfUnheld(object);
  }
}

const std::vector<NativeObject*>& AllNatives() {
  return All().objects;
}

void KeepNatives() {
  All().permanent = All().objects.size();
}

void ForgetNatives() {
  Registry& all = All();
  for (std::size_t i = all.permanent; i < all.objects.size(); ++i) {
    all.known.erase(all.objects[i]);
    if (all.objects[i]->isClass) all.classes.erase(all.objects[i]->name);
    delete all.objects[i];
  }
  all.objects.resize(all.permanent);
  for (NativeObject* const object : all.objects) object->held = object->pooled = 0;
  all.counters.clear();
  all.hidden.clear();
}

std::string Describe(const void* pointer) {
  if (pointer == nullptr) return "nil";
  if (IsNative(pointer)) {
    const auto* const object = static_cast<const NativeObject*>(pointer);
    if (object->className == "NSString") return "@" + Quoted(ToUTF8(object->text));
    return object->name;
  }
  const std::string host = DescribeHandle(pointer);
  return host.empty() ? Hexadecimal(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer)))
                      : host;
}

}  // namespace scripted
