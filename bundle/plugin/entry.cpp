// bundle/plugin/entry.cpp - the bundle's one exported function.
#include "bundle/classes/classes.h"
#include "bundle/host/services.h"
#include "bundle/plugin/registration.h"

namespace qvx {

namespace {

// The newest layout that a host of this version understands. A NaN counts as the oldest.
std::int32_t LayoutVersionFor(double hostVersion) {
  if (hostVersion >= 2013.04) return 13;
  if (hostVersion >= 2013.03) return 12;
  if (hostVersion >= 2013.0) return 11;
  if (hostVersion >= 2012.0) return 10;
  return 9;
}

void Enter(REALresolver resolver) {
  gResolver = resolver;
  if (const auto getVersion = REALGetRBVersion.Find()) rbversion = static_cast<double>(getVersion());
  CurrentREALControlVersion = LayoutVersionFor(rbversion);
  if (const auto registerVersion = RegisterPluginVersion.Find()) registerVersion(CurrentREALControlVersion);
  MyREALRegisterClass(&NSColorDefinition);
  MyREALRegisterClass(&NSColorListDefinition);
  MyREALRegisterClass(&NSColorSpaceDefinition);
}

}  // namespace

}  // namespace qvx

// Called once by the host, on its main thread, before anything else in the bundle. `resolver` answers a host
// service's function by name, or null, for as long as the process lives.
extern "C" [[gnu::visibility("default")]] void REALPluginMain(qvx::REALresolver resolver) {
  qvx::Enter(resolver);
}
