// tests/bundle/faults/promises.cpp - what the bundle promises after a fault.
#include "tests/bundle/faults/promises.h"

#include <algorithm>
#include <cmath>

#include "tests/bundle/scripted/platform.h"

namespace faults {
namespace {

using scripted::RaisedException;

constexpr std::string_view kProceduresWithoutResult[] = {
    "REALLockObject",          "REALUnlockObject",      "REALLockString",
    "REALUnlockString",        "RuntimeRaiseException", "PluginRegisterClass",
    "PluginDisposeStringData", "REALSetStringEncoding", "RegisterPluginVersion"};

constexpr std::string_view kCallsWithoutResult[] = {"NSLog", "CFStringNormalize", "CFDictionarySetValue",
                                                    "CFDictionaryRemoveValue"};

// The methods that give their instance something to wrap.
constexpr std::string_view kFillers[] = {"Constructor", "Create", "Load", "initWithColorSyncProfile",
                                         "initWithCGColorSpace"};

template <typename Thing, typename Things>
bool IsOneOf(const Thing& thing, const Things& things) {
  return std::ranges::find(things, thing) != std::ranges::end(things);
}

bool HasResult(std::string_view selector) {
  for (const scripted::MethodTypes& method : scripted::DeclaredMethods()) {
    if (method.selector == selector) return method.types[0] != 'v';
  }
  return true;
}

// Where std::bad_alloc of a host service is turned into "OutOfMemoryException" instead of being passed on:
// while a host string is built, and while a memory block is made.
bool BecomesOutOfMemory(const Case& each, const Step& step) {
  if (step.name == "REALBuildString" || step.name == "REALSetStringEncoding") return true;
  const bool makesBlock = each.target->result == Result::kBlock;
  return makesBlock && (step.name == "newMemoryBlock" || step.name == "memoryBlockGetPtr");
}

constexpr const char* kNoMemoryForString = "Failed to allocate memory for a string.";
constexpr const char* kNoMemoryForBlock = "Failed to allocate a memoryblock with ";

// How a single fault must end the call.
struct Expected {
  bool mayReturn = true;
  bool mayThrow = false;
  bool mayPassOn = false;
};

Expected ExpectedEnding(const Case& each, const Step& step) {
  switch (step.fault) {
    case Fault::kBadAlloc:
      return BecomesOutOfMemory(each, step) ? Expected{true, false, false} : Expected{false, true, false};
    case Fault::kRaiseOther:
      return {false, false, true};
    case Fault::kRaiseNSException:
      // Without a frame of the bundle's around it, the exception is the host's.
      return step.openFrames > 0 ? Expected{true, false, false} : Expected{false, false, true};
    default:
      return {};
  }
}

std::string EndingText(const Observation& observed) {
  switch (observed.ending) {
    case Ending::kReturned:
      return "returned";
    case Ending::kPassedOn:
      return "passed on " + scripted::Describe(observed.passedOn);
    case Ending::kThrewBadAlloc:
      return "threw std::bad_alloc";
    case Ending::kThrewOther:
      break;
  }
  return "threw something else";
}

class Judge {
 public:
  Judge(const Case& each, const Observation& baseline, const Observation& observed)
      : case_(each), baseline_(baseline), observed_(observed) {
    for (const Step& step : observed.steps) {
      if (step.fault != Fault::kNone) faults_.push_back(&step);
    }
  }

  std::vector<std::string> Sentences() {
    for (const std::string& each : observed_.broken) Say(each);
    CheckEnding();
    CheckNothingWrapped();
    CheckResult();
    CheckOutputs();
    CheckRaised();
    CheckAfterwards();
    return std::move(sentences_);
  }

 private:
  void Say(std::string sentence) { sentences_.push_back(std::move(sentence)); }

  [[nodiscard]] bool Single() const { return faults_.size() == 1; }
  [[nodiscard]] const Step& First() const { return *faults_.front(); }
  [[nodiscard]] bool Had(Fault fault) const {
    return std::ranges::any_of(faults_, [fault](const Step* step) { return step->fault == fault; });
  }

  // Whether the log line about an exception was being written when `step` came, or its host exception made:
  // the frame around it is that of the telling, and what is raised there is dropped.
  [[nodiscard]] bool WhileTelling(const Step& step) const {
    return WhileLogging(step) || WhileConverting(step);
  }
  [[nodiscard]] static bool WhileConverting(const Step& step) { return step.name == "NewNSExceptionQVX:"; }
  [[nodiscard]] bool WhileLogging(const Step& step) const {
    if (WhileConverting(step)) return false;
    const auto index = static_cast<std::size_t>(&step - observed_.steps.data());
    bool logging = false;
    for (std::size_t i = 0; i <= index; ++i) {
      const Step& each = observed_.steps[i];
      if (each.kind == EventKind::kMessage && each.name == "name" && each.text.starts_with("[NSException#")) {
        logging = true;
      }
      if (each.kind == EventKind::kFrame && each.name == "leave") logging = false;
    }
    return logging;
  }

  // The first try of a function that tries again in calibrated RGB: a guard within the guard.
  [[nodiscard]] static bool TriedAgain(const Step& step) {
    return step.openFrames == 2 && step.name == "getRed:green:blue:alpha:";
  }

  void CheckEnding() {
    if (faults_.empty()) {
      const bool same = observed_.ending == baseline_.ending;
      if (!same) Say("without a fault it " + EndingText(observed_));
      return;
    }
    Expected expected{false, false, false};
    for (const Step* const step : faults_) {
      const Expected one = ExpectedEnding(case_, *step);
      expected.mayReturn |= one.mayReturn;
      expected.mayThrow |= one.mayThrow;
      expected.mayPassOn |= one.mayPassOn;
    }
    // What the setting alone lets through.
    expected.mayPassOn |= baseline_.ending == Ending::kPassedOn;
    const Ending ending = observed_.ending;
    const bool fits = ending == Ending::kReturned        ? expected.mayReturn
                      : ending == Ending::kPassedOn      ? expected.mayPassOn
                      : ending == Ending::kThrewBadAlloc ? expected.mayThrow
                                                         : false;
    if (!fits) Say("it " + EndingText(observed_));
    if (ending == Ending::kPassedOn && fits) CheckPassedOn();
  }

  void CheckPassedOn() {
    if (IsOneOf(observed_.passedOn, observed_.thrown)) return;
    const bool asWithout =
        baseline_.ending == Ending::kPassedOn && observed_.passedOnClass == baseline_.passedOnClass;
    if (!asWithout) Say("another object was passed on: " + scripted::Describe(observed_.passedOn));
  }

  // Whether the function is called on nil or on an instance that wraps nothing, and asks for something: what
  // makes or fills the instance, or answers an array, has rules of its own.
  [[nodiscard]] bool AsksNothing() const {
    const Target& target = *case_.target;
    if (target.role != Role::kProperty && target.role != Role::kMethod) return false;
    if (target.result == Result::kNumbers || IsOneOf(target.name, kFillers)) return false;
    const std::string self = ValueNames(target, target.parameters[0])[case_.choice[0]];
    return self == "nil" || self == "empty";
  }

  // The neutral result, no host exception, and nothing asked of anybody but the nil that is wrapped.
  void CheckNothingWrapped() {
    if (!faults_.empty() || !AsksNothing()) return;
    if (!observed_.result.empty()) Say("the result of nothing is " + observed_.result);
    if (std::ranges::any_of(observed_.outputs, [](double value) { return value != 0; })) {
      Say("an output of nothing is not zero");
    }
    if (!observed_.raised.empty()) Say("nothing raised " + RaisedText(observed_.raised));
    for (const Step& step : observed_.steps) {
      const bool preparing = step.text.starts_with("[NSException ");
      const bool asks = step.kind == EventKind::kService || step.kind == EventKind::kCall ||
                        (step.kind == EventKind::kMessage && !preparing && !step.text.starts_with("[nil "));
      if (asks) Say("for nothing there was " + step.text);
    }
  }

  // An exception that ended the body leaves the neutral result; anything else leaves that or the usual one.
  void CheckResult() {
    if (observed_.ending != Ending::kReturned || observed_.result.empty()) return;
    const std::string& found = observed_.result;
    const std::string& usual = baseline_.result;
    if (case_.target->result == Result::kNumbers || case_.target->result == Result::kObjects) {
      CheckArray(found, usual);
      return;
    }
    const bool ended = Single() && First().fault == Fault::kRaiseNSException && First().openFrames > 0 &&
                       !TriedAgain(First()) && !WhileTelling(First());
    if (ended) {
      Say("the result after an exception is " + found);
    } else if (found != usual) {
      Say("the result is " + found + " instead of " + (usual.empty() ? "the neutral one" : usual));
    }
  }

  // The array is there before anything can fail, and is handed out as far as it is filled.
  void CheckArray(const std::string& found, const std::string& usual) {
    const auto words = [](const std::string& text) { return std::ranges::count(text, ' '); };
    if (words(found) > words(usual)) Say("the array has more elements than usual: " + found);
  }

  void CheckOutputs() {
    const bool ended = Single() && First().fault == Fault::kRaiseNSException && First().openFrames > 0 &&
                       !TriedAgain(First()) && !WhileTelling(First());
    for (std::size_t i = 0; i < observed_.outputs.size(); ++i) {
      const double value = observed_.outputs[i];
      const bool right = value == 0.0 || (!ended && value == baseline_.outputs[i]);
      if (!right || std::signbit(value)) {
        Say("output " + std::to_string(i + 1) + " is " + scripted::Number(value));
      }
    }
  }

  // Whether `each` may be raised although it is not raised without faults.
  [[nodiscard]] bool Explained(const RaisedException& each) const {
    if (each.className == "NSExceptionQVX") {
      // Made of an exception that a fault raised, or of the one that the setting raises anyway.
      return IsOneOf(each.native, observed_.thrown) || each.native->className == "NSException";
    }
    if (each.errorNumber != "0" && !HadAt("REALSetPropValueInt")) return false;
    const bool noMessage = each.message.empty();
    if (noMessage && (HadAt("REALBuildString") || HadAt("REALSetPropValueString"))) return true;
    if (each.className == "OutOfMemoryException" || each.className == "RuntimeException") {
      if (each.message == kNoMemoryForString) return Had(Fault::kBadAlloc);
      if (each.message.starts_with(kNoMemoryForBlock)) return case_.target->result == Result::kBlock;
    }
    if (each.className == "OutOfBoundsException" || each.className == "RuntimeException") {
      if (each.message == "Out of Bounds" && Had(Fault::kNull)) return true;
      const bool withoutBound = each.message.ends_with("Range is 1 to 19, but value is 0.") ||
                                each.message.ends_with("Range is 1 to 19, but value is -1.");
      if (withoutBound && HadAt("RuntimeUBound")) return true;
    }
    return std::ranges::any_of(baseline_.raised,
                               [&](const RaisedException& usual) {
                                 const bool sameClass = usual.className == each.className ||
                                                        each.className == "RuntimeException";
                                 return sameClass && (usual.message == each.message || noMessage);
                               }) ||
           (noMessage && Had(Fault::kBadAlloc));
  }

  [[nodiscard]] bool HadAt(std::string_view event) const {
    return std::ranges::any_of(faults_, [event](const Step* step) { return step->name == event; });
  }

  static std::string RaisedText(const std::vector<RaisedException>& raised) {
    std::string text;
    for (const RaisedException& each : raised) {
      text += (text.empty() ? "" : ", ") + each.className + " " + scripted::Quoted(each.message);
    }
    return text.empty() ? "nothing" : text;
  }

  void CheckRaised() {
    const std::vector<RaisedException>& raised = observed_.raised;
    for (const RaisedException& each : raised) {
      if (!Explained(each)) Say("the host exception " + RaisedText({each}) + " has no reason");
    }
    if (faults_.empty() || !Single()) return;
    const Step& step = First();
    const std::size_t before = step.raised;
    const auto wants = [&](std::size_t count, const char* why) {
      if (raised.size() != count) {
        Say("raised " + RaisedText(raised) + "; wanted " + std::to_string(count) + " host exceptions " + why);
      }
    };
    switch (step.fault) {
      case Fault::kRaiseNSException:
        CheckRaisedAfterNSException(step, wants);
        break;
      case Fault::kRaiseOther:
        wants(before, "after an object that is passed on");
        break;
      case Fault::kBadAlloc:
        if (!BecomesOutOfMemory(case_, step)) {
          wants(before, "after std::bad_alloc that is passed on");
        } else {
          CheckOutOfMemory(before);
        }
        break;
      default:
        if (IsHarmlessToRaising(step.name)) wants(baseline_.raised.size(), "as without the fault");
        break;
    }
  }

  template <typename Wants>
  void CheckRaisedAfterNSException(const Step& step, const Wants& wants) {
    const std::size_t before = step.raised;
    if (step.openFrames == 0) {
      wants(before, "after an exception outside of every frame");
    } else if (DropsExceptions(*case_.target)) {
      wants(0, "from a getter that drops exceptions");
      if (observed_.logLines != 0) Say("a getter that drops exceptions wrote a log line");
    } else if (TriedAgain(step)) {
      wants(baseline_.raised.size(), "after a try that is made again");
    } else if (WhileLogging(step)) {
      wants(baseline_.raised.size(), "after an exception while another one is logged");
    } else if (WhileConverting(step)) {
      wants(before, "after an exception while another one is made a host exception");
    } else {
      wants(before + 1, "after an exception in a body");
      if (raisedLast() == nullptr || raisedLast()->className != "NSExceptionQVX" ||
          !IsOneOf(raisedLast()->native, observed_.thrown)) {
        Say("the exception in a body was not raised as it is: " + RaisedText(observed_.raised));
      }
      if (observed_.logLines != 1) {
        Say("an exception in a body wrote " + std::to_string(observed_.logLines) + " log lines");
      }
    }
  }

  [[nodiscard]] const RaisedException* raisedLast() const {
    return observed_.raised.empty() ? nullptr : &observed_.raised.back();
  }

  void CheckOutOfMemory(std::size_t before) {
    const std::vector<RaisedException>& raised = observed_.raised;
    const bool told = raised.size() > before && raised[before].className == "OutOfMemoryException" &&
                      (raised[before].message == kNoMemoryForString ||
                       raised[before].message.starts_with(kNoMemoryForBlock));
    if (!told) Say("std::bad_alloc was not told as OutOfMemoryException: " + RaisedText(raised));
  }

  // Without these an exception is still raised, if less completely.
  static bool IsHarmlessToRaising(std::string_view name) {
    static constexpr std::string_view kHarmless[] = {
        "REALSetPropValueInt", "REALSetPropValueString", "REALUnlockObject", "REALUnlockString",
        "REALBuildString",     "REALSetStringEncoding",  "reason",           "userInfo"};
    return IsOneOf(name, kHarmless);
  }

  void CheckAfterwards() {
    if (!observed_.madeOnceMore) return;
    if (observed_.afterwards != baseline_.afterwards) {
      Say("the same call afterwards gives " + observed_.afterwards + " instead of " + baseline_.afterwards);
    }
    if (RaisedText(observed_.raisedAfterwards) != RaisedText(baseline_.raisedAfterwards)) {
      Say("the same call afterwards raises " + RaisedText(observed_.raisedAfterwards) + " instead of " +
          RaisedText(baseline_.raisedAfterwards));
    }
  }

  const Case& case_;
  const Observation& baseline_;
  const Observation& observed_;
  std::vector<const Step*> faults_;
  std::vector<std::string> sentences_;
};

}  // namespace

const char* NameOf(Fault fault) {
  switch (fault) {
    case Fault::kMissing:
      return "missing";
    case Fault::kNull:
      return "null";
    case Fault::kBadAlloc:
      return "bad_alloc";
    case Fault::kRaiseNSException:
      return "NSException";
    case Fault::kRaiseOther:
      return "other";
    case Fault::kNone:
      break;
  }
  return "none";
}

std::vector<Fault> FaultsAt(const Step& step) {
  switch (step.kind) {
    case EventKind::kResolve:
      return {Fault::kMissing};
    case EventKind::kService:
      if (IsOneOf(step.name, kProceduresWithoutResult)) return {Fault::kBadAlloc};
      return {Fault::kNull, Fault::kBadAlloc};
    case EventKind::kMessage:
      if (step.text.starts_with("[nil ")) return {};
      if (!HasResult(step.name)) return {Fault::kRaiseNSException, Fault::kRaiseOther};
      return {Fault::kNull, Fault::kRaiseNSException, Fault::kRaiseOther};
    case EventKind::kCall:
      if (step.name == "CFRelease") return {};  // gives memory back, and can't fail
      if (IsOneOf(step.name, kCallsWithoutResult)) return {Fault::kRaiseNSException, Fault::kRaiseOther};
      return {Fault::kNull, Fault::kRaiseNSException, Fault::kRaiseOther};
    case EventKind::kLookup:
    case EventKind::kAllocation:
      return {Fault::kNull};
    case EventKind::kFrame:
    case EventKind::kFree:
      break;
  }
  return {};
}

bool DropsExceptions(const Target& target) {
  return target.role == Role::kProperty && target.name != "colorValue" && target.name != "numberOfComponents";
}

std::vector<std::string> BrokenPromises(const Case& each, const Plan& plan, const Observation& baseline,
                                        const Observation& observed) {
  std::vector<std::string> sentences = Judge(each, baseline, observed).Sentences();
  for (const PlannedFault& planned : plan) {
    if (planned.event >= observed.steps.size()) sentences.emplace_back("the call took another way this time");
  }
  return sentences;
}

const Allowance* Allowed(const Case& each, const std::vector<Step>& faulted, std::string_view promise) {
  const auto has = [](std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
  };
  for (const Allowance& allowance : Allowances()) {
    if (!has(each.target->declaration, allowance.target) || !has(promise, allowance.promise)) continue;
    const bool fits = allowance.event.empty() || std::ranges::any_of(faulted, [&](const Step& step) {
                        return has(step.text, allowance.event) &&
                               (allowance.fault == Fault::kNone || step.fault == allowance.fault);
                      });
    if (fits) return &allowance;
  }
  return nullptr;
}

}  // namespace faults
