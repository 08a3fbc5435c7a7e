// hostrun/host/objects.h - the host's objects: a header of 24 bytes, the class data, the host's own payload.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "hostrun/host/reference.h"

namespace hostrun {

struct Class;

// What an object handle points to. Class data begins right behind it, zeroed: its first word is the native
// pointer of a wrapper instance, so that any object may be handed to a plugin that expects one.
struct Object {
  Class* cls;
  std::int32_t references;
  std::int32_t line;  // of the program, when it was made; 0 outside
  Object* previous;   // in the list of all live objects
  Object* next;
  std::uint32_t mark;  // kLiveMark while it lives
};
inline constexpr std::size_t kClassDataOffset = 24;
inline constexpr std::uint32_t kLiveMark = 0x4556494C;
static_assert(sizeof(Object) == kClassDataOffset, "class data starts 24 bytes into a host object");

// How the host's own part of an object is made and unmade.
struct Payload {
  std::size_t size = 0;
  void (*create)(void*) = nullptr;
  void (*destroy)(void*) = nullptr;
};

template <class T>
constexpr Payload PayloadFor() {
  return {sizeof(T), [](void* at) { new (at) T(); }, [](void* at) { static_cast<T*>(at)->~T(); }};
}

// A new instance with one reference: zeroed, then every constructor of its line of classes, oldest first.
Object* NewObject(Class& cls);
void LockObject(Object* object);
void UnlockObject(Object* object);

void* RawPayloadOf(Object* object);
template <class T>
T& PayloadOf(Object* object) {
  return *static_cast<T*>(RawPayloadOf(object));
}

// The native pointer of a wrapper instance.
void*& NativePointerOf(Object* object);

bool IsKindOf(const Object* object, const Class& cls);

// For the count of what is still alive.
const Object* FirstLiveObject();

using ObjectRef = Reference<Object, &LockObject, &UnlockObject>;

}  // namespace hostrun
