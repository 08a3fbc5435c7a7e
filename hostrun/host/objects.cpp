// hostrun/host/objects.cpp - the host's objects: a header of 24 bytes, the class data, the host's own
// payload.
#include "hostrun/host/objects.h"

#include <cstring>
#include <new>
#include <vector>

#include "hostrun/host/call.h"
#include "hostrun/host/position.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

constinit Object* firstLive = nullptr;

// A long chain of owners must not become as deep a chain of calls: below kDeepest, the dead wait here.
constexpr int kDeepest = 64;
constexpr std::uint32_t kDoomedMark = 0x4D4F4F44;
constinit int depth = 0;
std::vector<Object*>& Doomed() {
  static std::vector<Object*> doomed;
  return doomed;
}

void RunConstructors(Class& cls, Object* object) {
  if (cls.super != nullptr) RunConstructors(*cls.super, object);
  if (cls.definition != nullptr && cls.definition->constructor != nullptr) {
    CallLifecycle(cls, cls.definition->constructor, object);
  }
}

void Destroy(Object* object) {
  object->references = 1;  // while destructors run: a lock and unlock in there must not end it again
  const Payload payload = object->cls->payload;
  for (Class* cls = object->cls; cls != nullptr; cls = cls->super) {
    if (cls->definition != nullptr && cls->definition->destructor != nullptr) {
      CallLifecycle(*cls, cls->definition->destructor, object);
    }
  }
  if (payload.destroy != nullptr) payload.destroy(RawPayloadOf(object));
  (object->previous == nullptr ? firstLive : object->previous->next) = object->next;
  if (object->next != nullptr) object->next->previous = object->previous;
  object->mark = 0;
  ::operator delete(object);
}

}  // namespace

Object* NewObject(Class& cls) {
  const std::size_t size = cls.payloadOffset + cls.payload.size;
  void* const memory = ::operator new(size);  // calloc passes glibc's cache of small blocks by
  std::memset(memory, 0, size);
  auto* const object = static_cast<Object*>(memory);
  object->cls = &cls;
  object->references = 1;
  object->line = currentPosition.line;
  object->mark = kLiveMark;
  object->next = firstLive;
  if (firstLive != nullptr) firstLive->previous = object;
  firstLive = object;
  if (cls.payload.create != nullptr) cls.payload.create(RawPayloadOf(object));
  RunConstructors(cls, object);
  return object;
}

void LockObject(Object* object) {
  if (object != nullptr) ++object->references;
}

void UnlockObject(Object* object) {
  if (object == nullptr || --object->references > 0 || object->mark == kDoomedMark) return;
  if (depth >= kDeepest) {
    object->mark = kDoomedMark;
    Doomed().push_back(object);
    return;
  }
  ++depth;
  Destroy(object);
  --depth;
  while (depth == 0 && !Doomed().empty()) {
    Object* const next = Doomed().back();
    Doomed().pop_back();
    next->mark = kLiveMark;
    if (next->references > 0) continue;  // somebody found it meanwhile and holds it again
    ++depth;
    Destroy(next);
    --depth;
  }
}

void* RawPayloadOf(Object* object) {
  return reinterpret_cast<char*>(object) + object->cls->payloadOffset;
}

void*& NativePointerOf(Object* object) {
  return *reinterpret_cast<void**>(reinterpret_cast<char*>(object) + kClassDataOffset);
}

bool IsKindOf(const Object* object, const Class& cls) {
  return object != nullptr && object->cls->IsA(cls);
}

const Object* FirstLiveObject() {
  return firstLive;
}

}  // namespace hostrun
