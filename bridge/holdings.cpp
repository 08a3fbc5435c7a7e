// bridge/holdings.cpp - what a guarded body holds for a moment and owes back.
#include "bridge/holdings.h"

#include <cstdlib>

namespace qvx {

Holdings::Item* Holdings::Hold(const void* handle, void (*giveBack)(Item& item)) {
  if (handle == nullptr) return nullptr;
  Item* const item = NewItem(giveBack);
  item->handle = const_cast<void*>(handle);
  return item;
}

Holdings::Item* Holdings::Hold(const REALstringData& data, void (*giveBack)(Item& item)) {
  Item* const item = NewItem(giveBack);
  item->data = data;
  return item;
}

Holdings::Item* Holdings::HoldMemory(void* memory) {
  return Hold(memory, [](Item& item) { std::free(item.handle); });
}

Holdings::Item* Holdings::HoldReference(CFTypeRef object) {
  return Hold(object, [](Item& item) { CFRelease(item.handle); });
}

void Holdings::Release(Item* item) {
  if (item == nullptr || item->giveBack == nullptr) return;
  Item taken = *item;
  item->giveBack = nullptr;
  taken.giveBack(taken);
}

Holdings::Item* Holdings::NewItem(void (*giveBack)(Item& item)) {
  while (count_ > 0 && items_[count_ - 1].giveBack == nullptr) --count_;
  if (count_ == kCapacity) std::abort();
  Item* const item = &items_[count_++];
  item->giveBack = giveBack;
  return item;
}

void Holdings::GiveBackWhileUnwinding() {
  while (count_ > 0) {
    try {
      GiveBack();
    } catch (
        ...) {  // NOLINT(bugprone-empty-catch): the first exception goes on, a second would end the process
    }
  }
}

}  // namespace qvx
