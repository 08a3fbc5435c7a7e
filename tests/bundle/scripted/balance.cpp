// tests/bundle/scripted/balance.cpp - the oracle: what every call must leave behind as it found it.
#include "tests/bundle/scripted/balance.h"

#include <algorithm>
#include <map>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/native_object.h"

namespace scripted {
namespace {

void CheckFrames(std::vector<std::string>& found) {
  const FrameBalance balance = Frames();
  if (OpenFrames() != 0) found.push_back(std::to_string(OpenFrames()) + " exception frames are still open");
  if (balance.entered != balance.left + balance.delivered) {
    found.push_back("frames: entered " + std::to_string(balance.entered) + ", left " +
                    std::to_string(balance.left) + ", delivered to " + std::to_string(balance.delivered));
  }
}

void CheckNatives(std::vector<std::string>& found) {
  std::map<const NativeObject*, int> wrapped;
  for (const HostObject* const object : TheHost().Objects()) {
    if (object->kind != HandleKind::kObject || object->foreign || object->freed) continue;
    if (const NativeObject* const native = object->Native(); native != nullptr) ++wrapped[native];
  }
  for (const NativeObject* const native : AllNatives()) {
    const int expected = wrapped.contains(native) ? wrapped[native] : 0;
    if (native->held != expected) {
      found.push_back(Describe(native) + " is held " + std::to_string(native->held) +
                      " times by the bundle, and " + std::to_string(expected) + " live instances wrap it");
    }
    if (expected > 0 && native->freed)
      found.push_back(Describe(native) + " was freed, and an instance wraps it");
  }
}

void CheckHost(std::vector<std::string>& found) {
  for (const HostObject* const object : TheHost().Objects()) {
    if (!object->HeaderIntact())
      found.push_back(object->name + ": bytes outside the class data were written");
    // An instance whose constructor was left by an exception is the host's to give back.
    if (object->constructed && object->references != object->owned) {
      found.push_back(object->name + " has " + std::to_string(object->references) + " references, " +
                      std::to_string(object->owned) + " are accounted for");
    }
  }
  for (const HostString* const string : TheHost().Strings()) {
    if (string->references != string->owned) {
      found.push_back("the string " + Quoted(string->bytes) + " has " + std::to_string(string->references) +
                      " references, " + std::to_string(string->owned) + " are accounted for");
    }
  }
  if (!TheHost().liveStringData.empty()) {
    found.push_back(std::to_string(TheHost().liveStringData.size()) +
                    " string data records were not disposed of");
  }
}

}  // namespace

std::vector<std::string> Imbalances() {
  std::vector<std::string> found = Log().Violations();
  CheckFrames(found);
  CheckNatives(found);
  CheckHost(found);
  return found;
}

}  // namespace scripted
