// hostrun/host/exceptions.cpp - host exceptions: their classes, raising, and what waits for a call to return.
#include "hostrun/host/exceptions.h"

#include <array>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "hostrun/host/call.h"
#include "hostrun/host/output.h"
#include "hostrun/host/platform_log.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"

namespace hostrun {
namespace {

Object*& Pending() {
  static constinit Object* pending = nullptr;
  return pending;
}

// Out of the way of every call that raises nothing.
[[noreturn, gnu::noinline, gnu::cold]] void ThrowPending() {
  ThrowException(ObjectRef::Adopt(std::exchange(Pending(), nullptr)));
}

std::function<void(std::vector<TraceLine>&)>& TraceSource() {
  static std::function<void(std::vector<TraceLine>&)> source;
  return source;
}

std::function<void(Object*)>& RaiseObserver() {
  static std::function<void(Object*)> observer;
  return observer;
}

ExceptionData& Data(Object* exception) {
  return PayloadOf<ExceptionData>(exception);
}

HostString* Message(Object* self, std::int32_t) {
  return StringRef(Data(self).message).Detach();
}
void SetMessage(Object* self, std::int32_t, HostString* message) {
  Data(self).message = StringRef::Share(message);
}
std::int32_t ErrorNumber(Object* self, std::int32_t) {
  return Data(self).errorNumber;
}
void SetErrorNumber(Object* self, std::int32_t, std::int32_t number) {
  Data(self).errorNumber = number;
}
void Construct(Object* self, HostString* message, std::int32_t number) {
  SetMessage(self, 0, message);
  SetErrorNumber(self, 0, number);
}

std::array exceptionProperties = {
    ReadWrite("Message", "string", &Message, &SetMessage),
    ReadWrite("ErrorNumber", "integer", &ErrorNumber, &SetErrorNumber),
};
std::array exceptionMethods = {
    MethodRecord("Constructor(message as string = \"\", errorNumber as integer = 0)", &Construct),
};

// Each is a RuntimeException with nothing more.
constexpr std::array kDescendants = {
    "OutOfBoundsException",          "NilObjectException",
    "UnsupportedOperationException", "OutOfMemoryException",
    "TypeMismatchException",         "IllegalCastException",
    "InvalidArgumentException",      "DivisionByZeroException",
    "StackOverflowException",        "IOException",
    "KeyNotFoundException",
};

}  // namespace

void RegisterExceptionClasses() {
  static constinit qvx::REALclassDefinition base = ClassRecord("RuntimeException");
  SetMembers(base, exceptionMethods, exceptionProperties);
  TheRegistry().Register(base, Origin::Host, PayloadFor<ExceptionData>());

  static std::array<qvx::REALclassDefinition, kDescendants.size()> descendants;
  for (std::size_t i = 0; i < kDescendants.size(); ++i) {
    descendants[i] = ClassRecord(kDescendants[i], "RuntimeException");
    TheRegistry().Register(descendants[i], Origin::Host);
  }
  VariantBoxClass();
}

Class& VariantBoxClass() {
  static constinit qvx::REALclassDefinition record = ClassRecord("_Variant");
  Class& box = TheRegistry().ClassNamed("_Variant");
  if (!box.defined) TheRegistry().Register(record, Origin::Host, PayloadFor<Value>());
  return box;
}

Value Unboxed(const Value& value) {
  Object* const object = value.object();
  return object != nullptr && object->cls == &VariantBoxClass() ? PayloadOf<Value>(object) : value;
}

ObjectRef NewException(std::string_view className, std::string_view message) {
  Class* cls = TheRegistry().FindClass(className);
  if (cls == nullptr) cls = TheRegistry().FindClass("RuntimeException");
  ObjectRef exception = ObjectRef::Adopt(NewObject(*cls));
  Data(exception.get()).message = StringRef::Adopt(NewString(message));
  return exception;
}

void RaiseHostException(std::string_view className, std::string_view message) {
  ThrowException(NewException(className, message));
}

void ThrowException(ObjectRef exception) {
  std::vector<TraceLine>& trace = Data(exception.get()).trace;
  if (trace.empty() && TraceSource()) TraceSource()(trace);
  Data(exception.get()).platformLog += TakePlatformLog();
  if (RaiseObserver()) RaiseObserver()(exception.get());
  throw HostException(std::move(exception));
}

void SetPendingException(Object* exception) {
  LockObject(exception);
  UnlockObject(std::exchange(Pending(), exception));
}

void ThrowPendingException() {
  if (Pending() != nullptr) ThrowPending();
}

void SetTraceSource(std::function<void(std::vector<TraceLine>&)> source) {
  TraceSource() = std::move(source);
}

void SetRaiseObserver(std::function<void(Object*)> observer) {
  RaiseObserver() = std::move(observer);
}

void WritePlatformLogOf(Object* exception) {
  FlushOutput();
  std::fputs(Data(exception).platformLog.c_str(), stderr);
}

bool LacksMemory(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ||
         dynamic_cast<const std::length_error*>(&error) != nullptr;
}

std::string DescribeException(Object* exception) {
  const std::string message = Utf8Of(Data(exception).message.get());
  return message.empty() ? exception->cls->name : exception->cls->name + ": " + message;
}

}  // namespace hostrun
