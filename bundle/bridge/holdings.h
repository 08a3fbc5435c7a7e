// bundle/bridge/holdings.h - what a guarded body owes back: the one way to own something in the bundle.
//
// A platform exception jumps over destructors, a C++ exception runs them. What is held here is given back in
// either case: the list stands in the frame that the jump leads to, in memory.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

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
  // More than any body holds at a time: the deepest holds two URLs and two forms of a file name.
  static constexpr unsigned kCapacity = 6;

  Holdings() = default;
  Holdings(const Holdings&) = delete;
  Holdings& operator=(const Holdings&) = delete;
  // Holds a thing until it is forgotten, and answers where it stands. When the list is full, the thing is
  // given back at once and std::bad_alloc thrown: nothing is ever dropped.
  template <typename Thing>
  unsigned Hold(Thing thing) {
    const unsigned index = count_;
    if (index == kCapacity) [[unlikely]]
      Refuse(thing);
    items_[index].Set(thing);
    count_ = index + 1;
    return index;
  }
  // The thing is somebody else's from now on. The last one of the list is always held.
  void Forget(unsigned index) {
    if (index + 1 != count_) {
      items_[index].giveBack = nullptr;
      return;
    }
    do --count_;
    while (count_ > 0 && items_[count_ - 1].giveBack == nullptr);
  }
  // The same for the thing last held, with nothing held or forgotten since.
  void ForgetLast(unsigned index) { count_ = index; }
  void ForgetAll() { count_ = 0; }

  unsigned Count() const { return count_; }
  // Gives back what has been held since the list had `count` things. May throw what the host's services
  // throw; the rest is still held then.
  void GiveBackDownTo(unsigned count);
  void GiveBackAll() {
    if (count_ > 0) GiveBackDownTo(0);
  }
  // The same while a C++ exception unwinds: that one goes on, others end here.
  void GiveBackWhileUnwinding() noexcept;

 private:
  // One thing and how it is given back, null once it is no longer held.
  struct Item {
    void (*giveBack)(const Item& item);
    alignas(void*) unsigned char bytes[sizeof(REALstringData)];

    // NOLINTBEGIN(bugprone-sizeof-expression): a handle is kept as what it is, a pointer
    template <typename Thing>
    void Set(Thing thing) {
      static_assert(std::is_trivially_copyable_v<Thing> && sizeof(Thing) <= sizeof bytes);
      std::memcpy(bytes, &thing, sizeof thing);
      giveBack = [](const Item& item) {
        Thing held;
        std::memcpy(&held, item.bytes, sizeof held);
        GiveBack(held);
      };
    }
    // NOLINTEND(bugprone-sizeof-expression)
  };

  template <typename Thing>
  [[noreturn, gnu::noinline, gnu::cold]] static void Refuse(Thing thing) {
    GiveBack(thing);
    throw std::bad_alloc();
  }
  unsigned count_ = 0;
  Item items_[kCapacity];
};

// The holdings of what runs outside the guard: a C++ exception gives back what they hold, a platform
// exception loses it.
class UnguardedHoldings : public Holdings {
 public:
  ~UnguardedHoldings() {
    if (Count() > 0) [[unlikely]]
      GiveBackWhileUnwinding();
  }
};

// One thing that must be given back, or nothing (null). Release gives it back, Detach leaves it to its next
// owner; if neither happens, the holdings give it back when the guard ends.
template <typename Thing>
class Held {
 public:
  Held() = default;
  Held(Holdings& holdings, Thing thing) : thing_(thing) {
    if constexpr (std::is_pointer_v<Thing>) {
      if (thing == nullptr) return;
    }
    index_ = holdings.Hold(thing);
    holdings_ = &holdings;
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  Held& operator=(Held&& other) noexcept {
    holdings_ = std::exchange(other.holdings_, nullptr);
    index_ = other.index_;
    thing_ = other.thing_;
    return *this;
  }
  ~Held() = default;

  explicit operator bool() const { return holdings_ != nullptr; }
  Thing Get() const { return thing_; }
  void Release() {
    if (holdings_ != nullptr) GiveBack(Detach());
  }
  Thing Detach() {
    if (holdings_ != nullptr) std::exchange(holdings_, nullptr)->Forget(index_);
    return thing_;
  }

 private:
  Holdings* holdings_ = nullptr;  // null for nothing
  unsigned index_ = 0;
  Thing thing_{};
};

// Zero-filled memory; nothing when there is none to be had.
inline Held<char*> ZeroedMemory(std::size_t size, Holdings& holdings) {
  return {holdings, static_cast<char*>(std::calloc(1, size))};
}

}  // namespace qvx
