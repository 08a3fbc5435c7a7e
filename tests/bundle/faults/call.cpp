// tests/bundle/faults/call.cpp - one call into the bundle from a known start, with faults on the way.
#include "tests/bundle/faults/call.h"

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <optional>
#include <set>

#include "tests/bundle/faults/bundle_image.h"
#include "tests/bundle/scripted/allocation.h"
#include "tests/bundle/scripted/balance.h"
#include "tests/bundle/scripted/bundle.h"
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/platform.h"
#include "tests/bundle/scripted/stack_call.h"

namespace faults {
namespace {

using scripted::HostObject;
using scripted::Log;
using scripted::NativeObject;
using scripted::TheHost;
using scripted::ThePlatform;

// The bundle as it is just after loading, and as a host of each version has started it.
ImageState loaded;
std::map<long double, ImageState> started;
std::map<long double, std::vector<scripted::RegisteredClass>> registered;

void ForgetTheWorld(const ImageState& image) {
  Log().Reset();
  scripted::ForgetFrames();
  scripted::FreeBundleBlocks();
  TheHost().ForgetHandles();
  scripted::ForgetNatives();
  ThePlatform() = scripted::Platform();
  ThePlatform().unknownMessagesRaise = true;
  RestoreBundle(image);
}

// Nobody but the entry registers anything, so that the host keeps what it has from call to call.
void KeepRegistered(bool isEntry, long double version) {
  static std::optional<long double> kept;
  if (isEntry) {
    TheHost().registered.clear();
    kept.reset();
  } else if (kept != version) {
    TheHost().registered = registered[version];
    kept = version;
  }
}

bool IsColourClass(std::string_view name) {
  return name == "NSColor" || name == "NSColorList" || name == "NSColorSpace" || name == "NSPasteboard";
}

// What raises in a setting that raises: all that the bundle sends to colours, but for what the log line
// needs.
const scripted::Selectors& RaisingSelectors() {
  static const scripted::Selectors selectors = [] {
    scripted::Selectors all;
    for (const scripted::MethodTypes& method : scripted::DeclaredMethods()) {
      if (IsColourClass(method.className)) all.emplace(method.selector);
    }
    all.erase("alloc");
    all.erase("name");
    return all;
  }();
  return selectors;
}

NativeObject* Spaces(int count) {
  NativeObject* const spaces = scripted::MakeNative("NSArray");
  for (int i = 0; i < count; ++i) spaces->items.push_back(scripted::MakeNative("NSColorSpace"));
  return spaces;
}

// Answers the same colour or space to every message that makes one, as a platform may.
void ShareAnswers() {
  NativeObject* const color = scripted::MakeNative("NSColor");
  NativeObject* const space = scripted::MakeNative("NSColorSpace");
  for (const scripted::MethodTypes& method : scripted::DeclaredMethods()) {
    const bool makesColor = method.types[0] == '@' &&
                            (method.selector.starts_with("color") || method.selector.ends_with("Level:") ||
                             method.selector.starts_with("blended"));
    if (method.className == "NSColor" && makesColor && method.types.size() > 1) {
      ThePlatform().Answer(method.selector, color);
    }
    if (method.className == "NSColorSpace" && method.selector.starts_with("initWith")) {
      ThePlatform().On(method.selector, [space](scripted::Send& send) {
        scripted::TakeReference(space);
        send.Answer(space);
      });
    }
  }
  ThePlatform().Answer("colorWithKey:", color);
  ThePlatform().Answer("colorSpaceForColorSpaceName:", space);
}

void SetUpPlatform(const Setting& setting) {
  scripted::Platform& platform = ThePlatform();
  platform.files["/profiles/a.icc"] = {1, 2, 3};
  platform.files["/profiles/e\xCC\x81.icc"] = {4, 5, 6};
  NativeObject* const spaces = Spaces(setting.rich ? 3 : 1);
  if (!setting.raising) {
    platform.Answer("availableColorSpacesWithModel:", spaces);
  } else {
    NativeObject* const exception = scripted::MakeException("NSPlatformException", "of the setting");
    platform.RaiseEach(RaisingSelectors(), exception);
    NativeObject* const name = scripted::MakeText("NSPlatformException");
    platform.On("name", [=](scripted::Send& send) {  // the log line asks the exception for its name
      if (send.Receiver()->className == "NSException") return send.Answer(name);
      send.Raise(exception);
    });
  }
  if (setting.rich) {
    const std::u16string text(150, u'\u00E9');
    for (const char* const selector :
         {"colorSpaceName", "description", "catalogNameComponent", "colorNameComponent",
          "localizedCatalogNameComponent", "localizedColorNameComponent", "localizedName"}) {
      platform.Answer(selector, scripted::MakeText(text));
    }
    NativeObject* const longName = scripted::MakeText(text);
    NativeObject* const exceptionName = scripted::MakeText("NSTestException");
    platform.On("name", [=](scripted::Send& send) {
      send.Answer(send.Receiver()->className == "NSException" ? exceptionName : longName);
    });
    platform.components.assign(40, 0.125F);
    ShareAnswers();
  }
}

void SetUpHost(const Setting& setting) {
  if (setting.sparse) {
    TheHost().missing = {"REALGetStringCFString", "PluginGetStringData", "PluginDisposeStringData"};
  }
}

// Runs a constructor, as any earlier use of a class would have.
void PrepareBundle() {
  HostObject& object = TheHost().Construct("NSColorQVX");
  TheHost().Unlock(object.Handle());
}

std::string InstanceText(void* handle) {
  const HostObject& object = TheHost().Object(handle);
  return object.Native() == nullptr ? "empty-" + object.className : object.className;
}

std::string ResultText(Result kind, std::uint32_t word, double number) {
  void* const pointer = reinterpret_cast<void*>(static_cast<std::uintptr_t>(word));
  switch (kind) {
    case Result::kNothing:
      return {};
    case Result::kInteger:
      return word == 0 ? "" : std::to_string(static_cast<std::int32_t>(word));
    case Result::kBoolean:
      return (word & 0xFFU) == 0 ? "" : "true";
    case Result::kDouble:
      return number == 0 ? "" : scripted::Number(number);
    case Result::kString:
      return pointer == nullptr ? "" : scripted::Quoted(TheHost().String(pointer).bytes);
    case Result::kBlock:
      return pointer == nullptr ? "" : "a block of " + std::to_string(TheHost().Object(pointer).bytes.size());
    case Result::kObject:
      return pointer == nullptr ? "" : InstanceText(pointer);
    case Result::kNumbers:
    case Result::kObjects:
      break;
  }
  if (pointer == nullptr) return {};
  const HostObject& array = TheHost().Object(pointer);
  std::string text = "array";
  for (const double element : array.numbers) text += " " + scripted::Number(element);
  for (void* const element : array.objects) {
    text += element == nullptr ? " nil" : " " + InstanceText(element);
  }
  return text;
}

// Takes over what the bundle answered, and gives it up again.
struct Answered {
  void* object = nullptr;
  void* string = nullptr;

  void Take(Result kind, std::uint32_t word) {
    void* const pointer = reinterpret_cast<void*>(static_cast<std::uintptr_t>(word));
    if (kind == Result::kString) string = pointer;
    if (kind >= Result::kObject) object = pointer;
    if (pointer != nullptr && kind >= Result::kString) TheHost().Adopt(pointer);
  }
  void Release() {
    TheHost().Unlock(object);
    TheHost().UnlockString(string);
    object = string = nullptr;
  }
};
static_assert(Result::kObject < Result::kBlock && Result::kBlock < Result::kObjects);

struct Outcome {
  Ending ending = Ending::kReturned;
  NativeObject* passedOn = nullptr;
  std::string result;
  Answered answered;
};

// Calls the function with its words on the stack. What leaves it, leaves nothing of this function behind.
Outcome Enter(const Target& target, const Arguments& arguments, std::uint32_t stackOffset = 0) {
  const std::uint32_t* const words = arguments.stack.words;
  const auto resolver =
      static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&scripted::Host::Resolve));
  Outcome outcome;
  std::uint32_t word = 0;
  double number = 0;
  outcome.passedOn = scripted::PassedOn([&] {
    try {
      if (target.role == Role::kEntry) {
        scripted::Call(&scripted_call_at_offset, target.function, &resolver, 1U, stackOffset);
      } else if (target.result == Result::kDouble) {
        number = scripted::Call(&scripted_call_for_double_at_offset, target.function, words, kMostWords,
                                stackOffset);
      } else {
        word = scripted::Call(&scripted_call_at_offset, target.function, words, kMostWords, stackOffset);
      }
    } catch (const std::bad_alloc&) {
      outcome.ending = Ending::kThrewBadAlloc;
    } catch (...) {
      outcome.ending = Ending::kThrewOther;
    }
  });
  if (outcome.passedOn != nullptr) outcome.ending = Ending::kPassedOn;
  if (outcome.ending == Ending::kReturned) {
    outcome.answered.Take(target.result, word);
    outcome.result = ResultText(target.result, word, number);
  }
  return outcome;
}

// A destructor has been called for the last time: the host takes the memory back.
void ForgetDestroyed(const Target& target, Arguments& arguments) {
  if (target.role != Role::kDestructor || arguments.self == nullptr) return;
  HostObject& object = TheHost().Object(arguments.self);
  object.references = object.owned = 0;
  object.freed = true;
  arguments.objects.clear();
}

void GiveBackRaised() {
  for (const scripted::RaisedException& each : TheHost().raised) TheHost().Unlock(each.object);
  TheHost().raised.clear();
}

// What must be true once everything that the test held has been given back.
void CheckGivenBack(std::vector<std::string>& broken) {
  const auto add = [&](std::string text) { broken.push_back("afterwards: " + std::move(text)); };
  for (std::string& each : scripted::Imbalances()) {
    if (std::ranges::find(broken, each) == broken.end()) add(std::move(each));
  }
  for (const HostObject* const object : TheHost().Objects()) {
    if (object->constructed && object->references > 0 && !object->foreign) {
      add(object->name + " is never freed");
    }
  }
  for (const auto& entry : ThePlatform().instances->entries) {
    if (!TheHost().IsObject(entry.second)) continue;
    const auto found = std::ranges::find_if(
        TheHost().Objects(), [&](HostObject* object) { return object->Handle() == entry.second; });
    if ((*found)->freed) add("the cache still knows " + (*found)->className + ", which is freed");
  }
  if (scripted::LiveBundleBlocks() > 0) {
    add(std::to_string(scripted::LiveBundleBlocks()) + " blocks of memory are never freed");
  }
}

Fault Decide(const scripted::Event& event, const Plan& plan, Observation& observation) {
  Step step{event.kind,
            event.name,
            event.text,
            scripted::OpenFrames(),
            TheHost().raised.size(),
            scripted::Frames().delivered,
            Fault::kNone};
  const std::size_t index = observation.steps.size();
  for (const PlannedFault& planned : plan) {
    if (planned.event == index) step.fault = planned.fault;
  }
  observation.steps.push_back(std::move(step));
  return observation.steps.back().fault;
}

// The exceptions of the platform that faults raised: those that came into being during the call.
std::vector<NativeObject*> ThrownSince(std::size_t before) {
  std::vector<NativeObject*> thrown;
  const std::vector<NativeObject*>& all = scripted::AllNatives();
  for (std::size_t i = before; i < all.size(); ++i) {
    const bool ours = all[i]->className == "NSException" && !all[i]->isClass &&
                      scripted::Describe(all[i]->items[0]) == "@\"NSTestException\"";
    if (ours || all[i]->className == "OtherThrowable") thrown.push_back(all[i]);
  }
  return thrown;
}

void CallOnceMore(const Case& each, Observation& observation) {
  NativeObject* const cache = ThePlatform().instances;
  ThePlatform() = scripted::Platform();
  ThePlatform().instances = cache;
  ThePlatform().unknownMessagesRaise = true;
  SetUpPlatform(*each.setting);
  if (each.setting->again) ShareAnswers();
  Arguments arguments;
  MakeArguments(*each.target, each.choice, each.setting->prepared, arguments);
  Outcome outcome = Enter(*each.target, arguments);
  observation.madeOnceMore = true;
  observation.afterwards = outcome.ending == Ending::kReturned ? outcome.result : "an exception";
  observation.raisedAfterwards = TheHost().raised;
}

}  // namespace

std::vector<Target> PrepareCalls(const std::string& bundle) {
  LoadBundle(bundle);
  scripted::KeepNatives();
  loaded = SaveBundle();
  for (const long double version : kVersions) {
    TheHost().registered.clear();
    ForgetTheWorld(loaded);
    scripted::Start(version);
    started[version] = SaveBundle();
    registered[version] = TheHost().registered;
  }
  std::vector<Target> targets = AllTargets();
  targets.back().function = EntryOfBundle();
  return targets;
}

std::uint32_t StackOffsetFor(const Plan& plan) {
  return plan.empty() ? 0 : scripted::kStackOffsets[plan.back().event % std::size(scripted::kStackOffsets)];
}

Observation Make(const Case& each, const Plan& plan, bool onceMore, std::uint32_t stackOffset) {
  const Target& target = *each.target;
  const bool isEntry = target.role == Role::kEntry;
  ForgetTheWorld(isEntry ? loaded : started[each.version]);
  TheHost().version = each.version;
  KeepRegistered(isEntry, each.version);
  SetUpHost(*each.setting);
  SetUpPlatform(*each.setting);
  if (each.setting->prepared && !isEntry) PrepareBundle();

  Arguments arguments;
  MakeArguments(target, each.choice, each.setting->prepared, arguments);
  Answered earlier;
  if (each.setting->again) {
    ShareAnswers();
    earlier = Enter(target, arguments).answered;
    GiveBackRaised();
    arguments.outputs.fill(kUntouched);
  }

  Observation observation;
  const std::size_t nativesBefore = scripted::AllNatives().size();
  const int deliveredBefore = scripted::Frames().delivered;
  Log().Clear();
  Log().SetHook([&](const scripted::Event& event) { return Decide(event, plan, observation); });
  Outcome outcome = Enter(target, arguments, stackOffset);
  Log().SetHook(nullptr);
  for (Step& step : observation.steps) step.delivered -= deliveredBefore;

  observation.ending = outcome.ending;
  observation.passedOn = outcome.passedOn;
  if (outcome.passedOn != nullptr) observation.passedOnClass = outcome.passedOn->className;
  observation.result = outcome.result;
  observation.outputs.assign(arguments.outputs.begin(),
                             arguments.outputs.begin() + static_cast<std::ptrdiff_t>(arguments.outputCount));
  observation.raised = TheHost().raised;
  observation.logLines = static_cast<std::size_t>(Log().Count(EventKind::kCall, "NSLog"));
  observation.thrown = ThrownSince(nativesBefore);
  if (!scripted::FloatingPointStackIsEmpty()) {
    observation.broken.emplace_back("the floating-point stack is not empty");
    asm volatile("fninit");
  }
  ForgetDestroyed(target, arguments);
  for (std::string& text : scripted::Imbalances()) observation.broken.push_back(std::move(text));

  GiveBackRaised();
  outcome.answered.Release();
  earlier.Release();
  arguments.Release();
  scripted::DrainPool();
  if (!isEntry) CheckGivenBack(observation.broken);
  if (onceMore && !isEntry) CallOnceMore(each, observation);
  return observation;
}

std::string Describe(const Case& each) {
  return each.target->declaration + " | " + Describe(*each.target, each.choice) + " | " + each.setting->name +
         " | " + scripted::Number(static_cast<double>(each.version));
}

}  // namespace faults
