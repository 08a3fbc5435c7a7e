// bundle/bridge/holdings.h - what a guarded body holds for a moment and owes back.
#pragma once

#include "bundle/host/types.h"
#include "bundle/platform/cocoa.h"

namespace qvx {

// A short list of things to give back. It lives outside the exception frame, because a platform exception
// jumps over destructors: the body gives back each thing itself as it goes, and whatever it still held when
// an exception carried it away, the platform's or a C++ one, is given back by the guard, last taken first.
class Holdings {
 public:
  // One thing held: a handle, or string data that the host filled.
  struct Item {
    void (*giveBack)(Item& item);  // null once the thing is given back
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
    if (count_ > 0) [[unlikely]] {
      GiveBackWhileUnwinding();
    }
  }

  // Holds `handle` until it is released, which hands it to `giveBack`, or forgotten. Null is held as nothing;
  // what does not fit would be lost on a fault, never given back too early.
  Item* Hold(const void* handle, void (*giveBack)(Item& item));
  // Memory from malloc or calloc.
  Item* HoldMemory(void* memory);
  // One reference to a Core Foundation object.
  Item* HoldReference(CFTypeRef object);
  // One reference to a host object.
  Item* HoldObject(REALobject object);
  // Room for string data that is about to be filled; held once its `giveBack` is set. Null if nothing fits.
  Item* Reserve();

  // Gives one item back now, or leaves it to its next owner. Null and an item given back before are nothing
  // to do.
  void Release(Item* item);
  void Forget(Item* item);

  bool IsEmpty() const { return count_ == 0; }
  // Gives back everything that is still held. May throw what the host's services throw; the rest is held
  // then.
  void GiveBack();

 private:
  // More than any body holds at a time: the deepest holds two URLs and two forms of a file name.
  static constexpr unsigned kCapacity = 6;

  void DropReleased();
  void GiveBackWhileUnwinding();

  unsigned count_ = 0;
  Item items_[kCapacity];
};

}  // namespace qvx
