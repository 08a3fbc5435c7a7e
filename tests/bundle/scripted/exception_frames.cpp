// tests/bundle/scripted/exception_frames.cpp - the objc_exception_* family over setjmp frames, with its
// balance.
#include "tests/bundle/scripted/exception_frames.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

#include "bundle/platform/cocoa.h"
#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/stack.h"

namespace scripted {
namespace {

struct Frame {
  void* address;
  bool inside;  // whether the bundle ran when it was entered
  bool ours;    // a frame of PassedOn
};

struct State {
  std::vector<Frame> live;
  std::map<void*, NativeObject*> delivered;  // until the next entry of the same frame
  FrameBalance balance;
};

State& TheState() {
  static auto* const state = new State;
  return *state;
}

void Record(const char* name, const std::string& text) {
  Log().Record(EventKind::kFrame, name, text);
}

// Pops the innermost frame, marks it, and answers where to jump.
ObjCExceptionFrame* Pop(NativeObject* exception) {
  const Outside outside;
  State& state = TheState();
  if (state.live.empty()) {
    std::fprintf(stderr, "%s was raised and no frame is open\n", Describe(exception).c_str());
    std::abort();
  }
  const Frame frame = state.live.back();
  state.live.pop_back();
  state.delivered[frame.address] = exception;
  if (!frame.ours) {
    ++state.balance.delivered;
    Record("deliver", "deliver " + Describe(exception));
  }
  return static_cast<ObjCExceptionFrame*>(frame.address);
}

}  // namespace

FrameBalance Frames() {
  return TheState().balance;
}

int OpenFrames() {
  return static_cast<int>(
      std::ranges::count_if(TheState().live, [](const Frame& frame) { return !frame.ours; }));
}

void Deliver(NativeObject* exception) {
  const bool inside = !TheState().live.empty() && TheState().live.back().inside;
  ObjCExceptionFrame* const frame = Pop(exception);
  SetInsideBundle(inside);
  std::longjmp(frame->buffer, 1);
}

NativeObject* PassedOn(const std::function<void()>& body) {
  ObjCExceptionFrame frame;
  State& state = TheState();
  state.live.push_back({&frame, InsideBundle(), true});
  const std::size_t depth = state.live.size();
  if (_setjmp(frame.buffer) == 0) {
    body();
    if (state.live.size() != depth || state.live.back().address != &frame) {
      Log().Violation("a frame was left open, or one too many was left");
    }
    std::erase_if(state.live, [&](const Frame& each) { return each.address == &frame; });
    return nullptr;
  }
  return state.delivered[&frame];
}

void ForgetFrames() {
  TheState() = State();
}

}  // namespace scripted

using namespace scripted;  // NOLINT(google-build-using-namespace): the C functions below are this file's
                           // purpose

extern "C" void objc_exception_try_enter(void* frame) {
  CheckStack("objc_exception_try_enter", __builtin_dwarf_cfa());
  const bool inside = InsideBundle();
  const Outside outside;
  Record("enter", "enter");
  TheState().delivered.erase(frame);
  TheState().live.push_back({frame, inside, false});
  ++TheState().balance.entered;
}

extern "C" void objc_exception_try_exit(void* frame) {
  CheckStack("objc_exception_try_exit", __builtin_dwarf_cfa());
  const Outside outside;
  Record("leave", "leave");
  State& state = TheState();
  ++state.balance.left;
  if (state.delivered.contains(frame)) {
    Log().Violation("a frame was left that an exception had been delivered to");
    return;
  }
  if (state.live.empty() || state.live.back().address != frame) {
    Log().Violation("a frame was left that is not the innermost open one");
    std::erase_if(state.live, [&](const Frame& each) { return each.address == frame; });
    return;
  }
  state.live.pop_back();
}

extern "C" id objc_exception_extract(void* frame) {
  CheckStack("objc_exception_extract", __builtin_dwarf_cfa());
  const Outside outside;
  Record("extract", "extract");
  const auto found = TheState().delivered.find(frame);
  if (found == TheState().delivered.end()) {
    Log().Violation("an exception was asked of a frame that has none");
    return nullptr;
  }
  return AsId(found->second);
}

extern "C" int objc_exception_match(Class exceptionClass, id exception) {
  CheckStack("objc_exception_match", __builtin_dwarf_cfa());
  const Outside outside;
  const NativeObject* const wanted = Native(exceptionClass);
  const NativeObject* const found = Native(exception);
  Record("match", "match " + Describe(wanted) + " " + Describe(found));
  return (wanted != nullptr && found != nullptr && wanted->className == found->className) ? 0x100 : 0;
}

extern "C" void objc_exception_throw(id exception) {
  CheckStack("objc_exception_throw", __builtin_dwarf_cfa());
  {
    const Outside outside;
    Record("throw", "throw " + Describe(exception));
  }
  Deliver(Native(exception));
}
