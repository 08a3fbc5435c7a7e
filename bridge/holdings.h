// bridge/holdings.h - what a guarded body holds for a moment and owes back.
#pragma once

#include <cstdlib>

#include "host/types.h"
#include "platform/cocoa.h"

namespace qvx {

// A short list of things to give back. It lives outside the exception frame, because a platform exception
// jumps over destructors: the body gives back each thing itself as it goes, and whatever it still held when
// an exception carried it away, the platform's or a C++ one, is given back here, last taken first.
class Holdings {
 public:
  // One thing held: a handle, or string data that the host filled.
  struct Item {
    void (*giveBack)(Item& item);
    union {
      void* handle;
      REALstringData data;
    };
  };

  Holdings() = default;
  Holdings(const Holdings&) = delete;
  Holdings& operator=(const Holdings&) = delete;
  ~Holdings() {
    // Something is still held only while a C++ exception unwinds: a second one would end the process.
    while (count_ > 0) {
      try {
        GiveBack();
      } catch (...) {  // NOLINT(bugprone-empty-catch): the first exception goes on
      }
    }
  }

  // Holds `handle` until Release or GiveBack hands it to `giveBack`. Null needs no giving back: the answer is
  // null.
  Item* Hold(const void* handle, void (*giveBack)(Item& item)) {
    if (handle == nullptr) return nullptr;
    Item* item = NewItem(giveBack);
    item->handle = const_cast<void*>(handle);
    return item;
  }
  Item* Hold(const REALstringData& data, void (*giveBack)(Item& item)) {
    Item* item = NewItem(giveBack);
    item->data = data;
    return item;
  }
  // Memory from malloc or calloc.
  Item* HoldMemory(void* memory) {
    return Hold(memory, [](Item& item) { std::free(item.handle); });
  }
  // One reference to a Core Foundation object.
  Item* HoldReference(CFTypeRef object) {
    return Hold(object, [](Item& item) { CFRelease(item.handle); });
  }

  // Gives one item back now; null and an item given back before are nothing to do.
  static void Release(Item* item) {
    if (item == nullptr || item->giveBack == nullptr) return;
    Item taken = *item;
    item->giveBack = nullptr;
    taken.giveBack(taken);
  }
  // The thing is somebody else's from now on.
  static void Forget(Item* item) {
    if (item != nullptr) item->giveBack = nullptr;
  }

  // Gives everything back that is still held.
  void GiveBack() {
    while (count_ > 0) Release(&items_[--count_]);
  }

 private:
  // More than any body holds at a time: the deepest holds two URLs and two forms of a file name.
  static constexpr unsigned kCapacity = 6;

  Item* NewItem(void (*giveBack)(Item& item)) {
    while (count_ > 0 && items_[count_ - 1].giveBack == nullptr) --count_;
    if (count_ == kCapacity) std::abort();
    Item* item = &items_[count_++];
    item->giveBack = giveBack;
    return item;
  }

  unsigned count_ = 0;
  Item items_[kCapacity];
};

}  // namespace qvx
