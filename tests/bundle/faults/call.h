// tests/bundle/faults/call.h - one call into the bundle from a known start, with faults on the way, and what
// came of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/bundle/faults/inputs.h"
#include "tests/bundle/faults/targets.h"
#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/host.h"

namespace faults {

using scripted::EventKind;
using scripted::Fault;

// In which state the bundle, the host and the platform are before the call.
struct Setting {
  const char* name;
  bool prepared;  // a constructor has run: services, classes and the cache are known
  bool again;     // the same call has been made before, and its result is still held
  bool raising;   // every message to a colour, list or space raises
  bool rich;      // long texts, many components, shared answers
  bool sparse;    // an older host without the direct ways to a string's text
};
inline constexpr Setting kSettings[] = {
    {"fresh", false, false, false, false, false},    {"prepared", true, false, false, false, false},
    {"again", true, true, false, false, false},      {"raising", false, false, true, false, false},
    {"rich", true, false, false, true, false},       {"sparse", false, false, false, false, true},
    {"sparse rich", true, false, false, true, true},
};

inline constexpr long double kVersions[] = {2011.0L, 2012.0L, 2013.04L, 2015.0L, 2019.0L};

struct Case {
  const Target* target = nullptr;
  Choice choice;
  const Setting* setting = nullptr;
  long double version = 0;
};
std::string Describe(const Case& each);

struct PlannedFault {
  std::size_t event = 0;  // by index, counted from the start of the call
  Fault fault = Fault::kNone;
};
using Plan = std::vector<PlannedFault>;

// One event of the call, and how things stood when it came.
struct Step {
  EventKind kind;
  std::string name;
  std::string text;
  int openFrames;
  std::size_t raised;  // host exceptions so far
  int delivered;       // exceptions delivered to frames of the bundle so far
  Fault fault = Fault::kNone;
};

enum class Ending : std::uint8_t { kReturned, kPassedOn, kThrewBadAlloc, kThrewOther };

struct Observation {
  Ending ending = Ending::kReturned;
  scripted::NativeObject* passedOn = nullptr;  // alive until the next call; its class stays
  std::string passedOnClass;
  std::vector<Step> steps;
  std::vector<scripted::NativeObject*> thrown;  // the platform objects that the faults raised, in order
  std::string result;                           // as text; "" for the neutral one
  std::vector<double> outputs;
  std::vector<scripted::RaisedException> raised;
  std::size_t logLines = 0;
  std::vector<std::string> broken;  // what was out of balance, at once and after everything was given back
  bool madeOnceMore = false;
  std::string afterwards;  // the result of the same call made once more, without faults
  std::vector<scripted::RaisedException> raisedAfterwards;
};

// Loads and starts the bundle once for every version. Answers its functions.
std::vector<Target> PrepareCalls(const std::string& bundle);

// Makes the call, on a stack that is `stackOffset` bytes past a multiple of 16. With `onceMore`, it is made a
// second time without faults, from where the first one left everything.
Observation Make(const Case& each, const Plan& plan, bool onceMore, std::uint32_t stackOffset = 0);
// The stack offset that a plan is carried out at: the plans of a case take turns.
std::uint32_t StackOffsetFor(const Plan& plan);

}  // namespace faults
