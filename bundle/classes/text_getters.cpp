// bundle/classes/text_getters.cpp - the getter of one text, which every class has.
#include "bundle/classes/text_getters.h"

#include "bundle/bridge/strings.h"

namespace qvx {

REALstring TextOf(const id* data, Selector& selector, OnNSException then) {
  return Guarded(then, [data, &selector](Holdings& holdings) {
    return data != nullptr ? NSStringRB(Send<id>(*data, selector), holdings) : nullptr;
  });
}

}  // namespace qvx
