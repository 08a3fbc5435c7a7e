// bundle/classes/text_getters.cpp - the getter of one text, which every class has.
#include "bundle/classes/text_getters.h"

#include "bundle/bridge/strings.h"

namespace qvx {

template <OnNSException then>
REALstring TextOf(const id* data, Selector& selector) {
  return Guarded<then>([data, &selector](Holdings& holdings) {
    return data != nullptr ? NSStringRB(Send<id>(*data, selector), holdings) : nullptr;
  });
}
template REALstring TextOf<OnNSException::kRaise>(const id* data, Selector& selector);
template REALstring TextOf<OnNSException::kDrop>(const id* data, Selector& selector);

}  // namespace qvx
