// bridge/holdings.h - what a guarded body holds for a moment and owes back.
#pragma once

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
  // Something is still held only while a C++ exception unwinds.
  ~Holdings() {
    if (count_ > 0) GiveBackWhileUnwinding();
  }

  // Holds `handle` until Release or GiveBack hands it to `giveBack`. Null needs no giving back: the answer is
  // null.
  Item* Hold(const void* handle, void (*giveBack)(Item& item));
  Item* Hold(const REALstringData& data, void (*giveBack)(Item& item));
  // Memory from malloc or calloc.
  Item* HoldMemory(void* memory);
  // One reference to a Core Foundation object.
  Item* HoldReference(CFTypeRef object);

  // Gives one item back now; null and an item given back before are nothing to do.
  static void Release(Item* item);
  // The thing is somebody else's from now on.
  static void Forget(Item* item) {
    if (item != nullptr) item->giveBack = nullptr;
  }

  // Gives everything back that is still held.
  void GiveBack() {
    while (count_ > 0) [[unlikely]] Release(&items_[--count_]);
  }

 private:
  // More than any body holds at a time: the deepest holds two URLs and two forms of a file name.
  static constexpr unsigned kCapacity = 6;

  Item* NewItem(void (*giveBack)(Item& item));
  void GiveBackWhileUnwinding();

  unsigned count_ = 0;
  Item items_[kCapacity];
};

}  // namespace qvx
