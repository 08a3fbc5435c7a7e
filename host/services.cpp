// host/services.cpp - the resolver and the host's version.
#include "host/services.h"

namespace qvx {

constinit REALresolver gResolver = nullptr;
constinit double rbversion = 0.0;

void* AskResolver(const char* name) {
  return gResolver != nullptr ? gResolver(name) : nullptr;
}

}  // namespace qvx
