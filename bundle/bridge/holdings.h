// bundle/bridge/holdings.h - what a guarded body owes back: the one way to own something in the bundle.
//
// A platform exception jumps over destructors, a C++ exception runs them. What is held here is given back in
// either case: the list stands in the frame of the guard's caller, which outlives the jump.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

// How a thing of each type is given back. A type without a line can't be held.
template <typename Thing>
void GiveBack(Thing thing) = delete;
template <>
inline void GiveBack(REALobject object) {
  REALUnlockObject(object);
}
template <>
inline void GiveBack(REALstring string) {
  REALUnlockString(string);
}
template <>
inline void GiveBack(REALarray array) {
  REALUnlockObject(AsObject(array));
}
template <>
inline void GiveBack(REALmemoryBlock block) {
  REALUnlockObject(AsObject(block));
}
template <>
inline void GiveBack(CFTypeRef object) {
  CFRelease(object);
}
template <>
inline void GiveBack(id object) {
  msg::release(object);
}
// Memory from malloc or calloc.
template <>
inline void GiveBack(char* memory) {
  std::free(memory);
}

// The things that are held for the moment. Whatever an exception, the platform's or a C++ one, leaves in the
// list is given back by the guard, last taken first. Use it through Held.
class Holdings {
 public:
  class Item {
   public:
    template <typename Thing>
    void Set(Thing thing) {
      static_assert(std::is_trivially_copyable_v<Thing> && sizeof(Thing) <= sizeof bytes_);
      std::memcpy(bytes_, &thing, sizeof thing);
      giveBack_ = [](const Item& item) {
        Thing held;
        std::memcpy(&held, item.bytes_, sizeof held);
        GiveBack(held);
      };
    }

   private:
    friend class Holdings;
    void (*giveBack_)(const Item& item);  // null once the thing is no longer held
    alignas(void*) unsigned char bytes_[sizeof(REALstringData)];
  };

  // More than any body holds at a time: the deepest holds two URLs and two forms of a file name.
  static constexpr unsigned kCapacity = 6;

  Holdings() = default;
  Holdings(const Holdings&) = delete;
  Holdings& operator=(const Holdings&) = delete;
  // Something is still held here only while a C++ exception unwinds.
  ~Holdings() {
    if (count_ > 0) [[unlikely]]
      GiveBackWhileUnwinding();
  }

  // Holds a thing until it is forgotten. When the list is full, the thing is given back at once and
  // std::bad_alloc thrown: nothing is ever dropped.
  template <typename Thing>
  Item* Hold(Thing thing) {
    if (count_ == kCapacity) [[unlikely]]
      Refuse(thing);
    Item* const item = &items_[count_++];
    item->Set(thing);
    return item;
  }
  // The thing is somebody else's from now on.
  void Forget(Item* item) {
    item->giveBack_ = nullptr;
    while (count_ > 0 && items_[count_ - 1].giveBack_ == nullptr) --count_;
  }

  void ForgetAll() { count_ = 0; }

  unsigned Count() const { return count_; }
  // Gives back what has been held since the list had `count` items. May throw what the host's services throw;
  // the rest is still held then.
  void GiveBackDownTo(unsigned count);

 private:
  template <typename Thing>
  [[noreturn, gnu::noinline, gnu::cold]] static void Refuse(Thing thing) {
    GiveBack(thing);
    throw std::bad_alloc();
  }
  void GiveBackWhileUnwinding();

  unsigned count_ = 0;
  Item items_[kCapacity];
};

// One thing that must be given back, or nothing (null). Release gives it back, Detach leaves it to its next
// owner; if neither happens, the holdings give it back when the guard ends.
template <typename Thing>
class Held {
 public:
  Held() = default;
  Held(Holdings& holdings, Thing thing) : holdings_(&holdings), thing_(thing) {
    if constexpr (std::is_pointer_v<Thing>) {
      if (thing == nullptr) return;
    }
    item_ = holdings.Hold(thing);
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  Held& operator=(Held&& other) noexcept {
    holdings_ = other.holdings_;
    thing_ = other.thing_;
    item_ = other.item_;
    other.item_ = nullptr;
    return *this;
  }
  ~Held() = default;

  explicit operator bool() const { return item_ != nullptr; }
  Thing Get() const { return thing_; }
  void Release() {
    if (item_ != nullptr) GiveBack(Detach());
  }
  Thing Detach() {
    if (item_ != nullptr) holdings_->Forget(item_);
    item_ = nullptr;
    return thing_;
  }

 private:
  Holdings* holdings_ = nullptr;
  Holdings::Item* item_ = nullptr;
  Thing thing_{};
};

}  // namespace qvx
