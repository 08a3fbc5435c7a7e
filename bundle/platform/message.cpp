// bundle/platform/message.cpp - the first look-up of selectors and classes.
#include "bundle/platform/message.h"

namespace qvx {

SEL Selector::Register() {
  found_ = sel_registerName(name_);
  return found_;
}

id ClassSlot::Find() {
  found_ = reinterpret_cast<id>(objc_getClass(name_));
  return found_;
}

}  // namespace qvx
