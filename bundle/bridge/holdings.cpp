// bundle/bridge/holdings.cpp - what a guarded body holds for a moment and owes back.
#include "bundle/bridge/holdings.h"

#include <cstdlib>

#include "bundle/host/services.h"

namespace qvx {

Holdings::Item* Holdings::Reserve() {
  if (count_ == kCapacity) return nullptr;
  Item* const item = &items_[count_++];
  *item = {.giveBack = nullptr, .data = {}};
  return item;
}

Holdings::Item* Holdings::Hold(const void* handle, void (*giveBack)(Item& item)) {
  Item* const item = handle != nullptr ? Reserve() : nullptr;
  if (item == nullptr) return nullptr;
  item->handle = const_cast<void*>(handle);
  item->giveBack = giveBack;
  return item;
}

Holdings::Item* Holdings::HoldMemory(void* memory) {
  return Hold(memory, [](Item& item) { std::free(item.handle); });
}

Holdings::Item* Holdings::HoldReference(CFTypeRef object) {
  return Hold(object, [](Item& item) { CFRelease(item.handle); });
}

Holdings::Item* Holdings::HoldObject(REALobject object) {
  return Hold(object, [](Item& item) { REALUnlockObject(static_cast<REALobject>(item.handle)); });
}

void Holdings::Release(Item* item) {
  if (item == nullptr) return;
  const auto giveBack = item->giveBack;
  item->giveBack = nullptr;
  if (giveBack != nullptr) giveBack(*item);
  DropReleased();
}

void Holdings::Forget(Item* item) {
  if (item == nullptr) return;
  item->giveBack = nullptr;
  DropReleased();
}

void Holdings::DropReleased() {
  while (count_ > 0 && items_[count_ - 1].giveBack == nullptr) --count_;
}

void Holdings::GiveBack() {
  while (count_ > 0) Release(&items_[count_ - 1]);
}

void Holdings::GiveBackWhileUnwinding() {
  while (count_ > 0) {
    try {
      GiveBack();
    } catch (...) {
      // The first exception goes on; a second one would end the process.
      DropReleased();
    }
  }
}

}  // namespace qvx
