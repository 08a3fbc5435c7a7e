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

// Whether REALPluginMain has run. The definitions are changed in place, so they can be registered only once.
constinit bool entered = false;

void Enter(REALresolver resolver) {
  if (entered) return;
  entered = true;
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

// Called once by the host, on its main thread, before anything else in the bundle; a later call does nothing.
// `resolver` answers a host service's function by name, or null, for as long as the process lives.
extern "C" [[gnu::visibility("default"), gnu::force_align_arg_pointer]] void REALPluginMain(
    qvx::REALresolver resolver) {
  qvx::Enter(resolver);
}
