// bundle/bridge/holdings.cpp - what a guarded body owes back.
#include "bundle/bridge/holdings.h"

namespace qvx {

void Holdings::GiveBackDownTo(unsigned count) {
  while (count_ > count) {
    Item& last = items_[count_ - 1];
    const auto giveBack = last.giveBack_;
    Forget(&last);
    giveBack(last);
  }
}

void Holdings::GiveBackWhileUnwinding() {
  while (count_ > 0) {
    try {
      GiveBackDownTo(0);
    } catch (...) {  // NOLINT(bugprone-empty-catch): the first exception goes on; a second one would end the
                     // process
    }
  }
}

}  // namespace qvx
