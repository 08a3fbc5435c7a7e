// bundle/host/services.cpp - the resolver, the host's version, and the first look-up of a service.
#include "bundle/host/services.h"

namespace qvx {

void* AskResolver(const char* name) {
  return gResolver != nullptr ? gResolver(name) : nullptr;
}

void* ServiceSlot::Ask() {
  found_ = AskResolver(name_);
  return found_;
}

}  // namespace qvx
