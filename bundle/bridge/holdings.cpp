// bundle/bridge/holdings.cpp - what a guarded body owes back.
#include "bundle/bridge/holdings.h"

namespace qvx {

void Holdings::GiveBackDownTo(unsigned count) {
  while (count_ > count) {
    const Item last = items_[count_ - 1];
    Forget(count_ - 1);
    last.giveBack(last);
  }
}

void Holdings::GiveBackWhileUnwinding() noexcept {
  while (count_ > 0) {
    try {
      GiveBackAll();
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first exception goes on; a second one would end the
                     // process
    }
  }
}

}  // namespace qvx
