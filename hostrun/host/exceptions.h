// hostrun/host/exceptions.h - host exceptions: their classes, raising, and what waits for a call to return.
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostrun/host/objects.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/value.h"

namespace hostrun {

// A place in a program, for the stack of an exception.
struct TraceLine {
  std::string routine;  // empty: the program's own level
  std::int32_t line = 0;
  std::int32_t column = 0;
};

// The payload of "RuntimeException" and its descendants.
struct ExceptionData {
  StringRef message;
  std::int32_t errorNumber = 0;
  std::vector<TraceLine> trace;  // innermost first; empty until it is thrown
  std::string platformLog;       // what the platform logged in the calls that it came out of
};

// A host exception on its way through the runner.
class HostException {
 public:
  explicit HostException(ObjectRef object) : object_(std::move(object)) {}
  Object* object() const { return object_.get(); }

 private:
  ObjectRef object_;
};

// Registers "RuntimeException" and its descendants, and the box of variants.
void RegisterExceptionClasses();
Class& VariantBoxClass();
Value Unboxed(const Value& value);

// A new exception of that class, or of "RuntimeException" when there is none.
ObjectRef NewException(std::string_view className, std::string_view message);
[[noreturn]] void RaiseHostException(std::string_view className, std::string_view message);
[[noreturn]] void ThrowException(ObjectRef exception);

// What "RuntimeRaiseException" was given; thrown once the call in progress has returned.
void SetPendingException(Object* exception);
void ThrowPendingException();

// Fills the trace of an exception that is thrown for the first time.
void SetTraceSource(std::function<void(std::vector<TraceLine>&)> source);

// `observer` is called with each exception just before it is thrown, where it is raised. Empty: nothing is
// called.
void SetRaiseObserver(std::function<void(Object*)> observer);

// Writes to stderr what the platform logged of it: nobody caught it.
void WritePlatformLogOf(Object* exception);

// It says that memory does not suffice, or that a text would be longer than any can be.
bool LacksMemory(const std::exception& error);

// "Class: message", as for an uncaught one.
std::string DescribeException(Object* exception);

}  // namespace hostrun
