// hostrun/language/code.cpp - a program as it runs: every name, type and call is settled.
#include "hostrun/language/code.h"

#include <chrono>

#include "hostrun/host/call.h"
#include "hostrun/host/platform_library.h"

namespace hostrun {
namespace {

// Between statements the platform's run loop gets a turn: when the bundle was called, and not too often.
void TurnRunLoopIfDue() {
  static constexpr std::uint64_t kCallsBetweenLooks = 64;
  static constexpr std::chrono::milliseconds kBetweenTurns{20};
  static std::uint64_t callsAtLastLook = 0;
  static std::chrono::steady_clock::time_point lastTurn;
  if (BundleCalls() - callsAtLastLook < kCallsBetweenLooks) return;
  callsAtLastLook = BundleCalls();
  const auto now = std::chrono::steady_clock::now();
  if (now - lastTurn < kBetweenTurns) return;
  lastTurn = now;
  TurnRunLoop();
}

}  // namespace

Flow StepBlock::RunSteps(Activation& activation) const {
  if (steps.empty()) EndIfInterrupted();
  for (const StepPtr& step : steps) {
    EndIfInterrupted();
    Note(step->at);
    const Flow flow = step->Run(activation);
    TurnRunLoopIfDue();
    if (flow != Flow::Next) return flow;
  }
  return Flow::Next;
}

Flow StepBlock::Run(Activation& activation) const {
  const Flow flow = RunSteps(activation);
  for (const std::size_t slot : endingLocals) activation.locals[slot] = Value();
  for (const std::size_t slot : endingGlobals) activation.globals[slot] = Value();
  return flow;
}

PlacePtr ToPlace(CodePtr code) {
  auto* const place = dynamic_cast<Place*>(code.get());
  if (place == nullptr) return nullptr;
  static_cast<void>(code.release());
  return PlacePtr(place);
}

void RaiseAt(Position at, std::string_view className, std::string_view message) {
  Note(at);
  RaiseHostException(className, message);
}

}  // namespace hostrun
