// hostrun/commands/tracer.cpp - watches the calls into the bundle and what the bundle does in them.
#include "hostrun/commands/tracer.h"

#include "hostrun/commands/messages.h"
#include "hostrun/host/bundle.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/position.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/text.h"
#include "hostrun/host/words.h"

namespace hostrun {
namespace {

bool IsQuiet(std::string_view name) {
  return name == "objc_getClass" || name == "sel_registerName" || name == "objc_exception_try_enter" ||
         name == "objc_exception_try_exit";
}

std::string PlatformArguments(std::string_view name, const std::uint32_t* words) {
  if (name == "objc_getClass" || name == "sel_registerName") {
    return "(\"" + std::string(reinterpret_cast<const char*>(words[0])) + "\")";
  }
  if (name == "CFRelease") return "(" + PlatformObjectText(words[0]) + ")";
  if (name.starts_with("CFDictionary")) return "(..., " + PlatformObjectText(words[1]) + ")";
  return {};
}

std::string MemberName(const Method& method) {
  return method.owner->name + "." + method.signature.name;
}

const char* Life(bool constructor) {
  return constructor ? ": its constructor" : ": its destructor";
}

}  // namespace

bool TraceFilter::Takes(const Class& owner, std::string_view name) const {
  return cls.empty() || (SameName(owner.name, cls) && (member.empty() || SameName(name, member)));
}

void Tracer::Enter(const Method& method, const ArgumentWords& words) {
  const bool told = Telling() || filter_.Takes(*method.owner, method.signature.name);
  if (told) {
    const Busy busy(*this);
    EnteredCall call;
    call.member = MemberName(method);
    call.heading = method.owner->name + ": " + method.declaration;
    call.declaration = method.declaration;
    AddPlace(call);
    const std::uint32_t* at = words.data();
    if (!method.shared)
      call.arguments.emplace_back("self", names_.Of(reinterpret_cast<const Object*>(*at++)));
    for (const Parameter& parameter : method.signature.parameters) {
      call.arguments.emplace_back(parameter.name, WordsText(parameter, at, false, names_));
    }
    report_.Enter(call);
  }
  Begin(told);
}

void Tracer::Leave(const Method& method, const ArgumentWords& words, const Value* result, Object* exception) {
  const auto [call, time] = End();
  if (!call.told) return;
  const Busy busy(*this);
  LeftCall left;
  left.member = MemberName(method);
  left.raised = exception != nullptr;
  left.time = time;
  if (exception != nullptr) {
    left.outcome = DescribeException(exception);
  } else if (method.signature.result->kind != Kind::Nothing) {
    left.outcome = ValueText(*result, names_);
  }
  const std::uint32_t* at = words.data() + (method.shared ? 0 : 1);
  for (const Parameter& parameter : method.signature.parameters) {
    std::string after = WordsText(parameter, at, true, names_);
    if (parameter.byref) left.outputs.emplace_back(parameter.name, std::move(after));
  }
  report_.Leave(left);
}

void Tracer::EnterLife(Object* object, const Class& cls, bool constructor) {
  const bool told = Telling() || filter_.Takes(cls, {});
  if (told) {
    const Busy busy(*this);
    EnteredCall call;
    call.member = cls.name + Life(constructor);
    call.heading = names_.Of(object) + Life(constructor);
    AddPlace(call);
    report_.Enter(call);
  }
  Begin(told);
}

void Tracer::LeaveLife(Object* object, const Class& cls, bool constructor) {
  const auto [call, time] = End();
  if (call.told) {
    const Busy busy(*this);
    LeftCall left;
    left.member = cls.name + Life(constructor);
    left.time = time;
    report_.Leave(left);
  }
  if (!constructor) names_.Forget(object);
}

void Tracer::Arrived(std::string_view name, const void* from, const std::uint32_t* words) {
  if (!Telling() || !TheBundle().Contains(from)) return;
  const Busy busy(*this);
  if (name == "objc_msgSend" || name == "objc_msgSend_fpret") {
    report_.Act(ActionKind::Message, MessageText(words));
  } else if (const std::string service = ServiceText(name, words, names_); !service.empty()) {
    report_.Act(ActionKind::Service, service);
  } else if (!quiet_ || !IsQuiet(name)) {
    report_.Act(ActionKind::Function, std::string(name) + PlatformArguments(name, words));
  }
}

std::pair<Tracer::Call, std::chrono::nanoseconds> Tracer::End() {
  const Clock::time_point now = Clock::now();
  const Call call = calls_.back();
  calls_.pop_back();
  return {call, now - call.start - (busy_ - call.busyAtStart)};
}

void Tracer::AddPlace(EnteredCall& call) {
  const Position at = currentPosition;
  call.line = at.line;
  if (at.line == 0 || at.line == lastLine_ || Telling()) return;
  lastLine_ = at.line;
  call.sourceLine =
      source_.name() + ":" + std::to_string(at.line) + ": " + std::string(source_.Line(at.line));
}

}  // namespace hostrun
