// bundle/bridge/exceptions.cpp - raising host exceptions.
#include "bundle/bridge/exceptions.h"

#include <cstdio>
#include <cstring>

#include "bundle/bridge/guard.h"
#include "bundle/bridge/strings.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

void RaiseException(const char* exceptionClass, const char* message, Holdings& holdings,
                    std::uint32_t encoding, std::int32_t errorNumber) {
  Held<REALstring> text;
  if (message != nullptr) {
    const auto length = static_cast<std::int64_t>(std::strlen(message));
    text = Held(holdings, REALBuildUnicodeString(message, length, encoding, holdings));
  }
  REALobject exception = REALnewInstance(exceptionClass);
  // A host that lacks the class still gets the message.
  if (exception == nullptr) exception = REALnewInstance("RuntimeException");
  if (exception != nullptr) {
    Held held(holdings, exception);
    REALSetPropValueString(exception, "Message", text.Get());
    REALSetPropValueInt32(exception, "ErrorNumber", errorNumber);
    REALRaiseException(exception);
    held.Release();
  }
  text.Release();
}

void RaiseOutOfBoundsException(std::int64_t value, std::int64_t minimum, std::int64_t maximum,
                               const char* parameterName, const char* methodName, Holdings& holdings) {
  constexpr std::size_t kBufferSize = 232;
  Held buffer = ZeroedMemory(kBufferSize, holdings);
  if (!buffer) {
    RaiseException("OutOfBoundsException", "Out of Bounds", holdings);
    return;
  }
  const char* format =
      value < minimum ? "Parameter %s to method %s is too small. Range is %lld to %lld, but value is %lld."
                      : "Parameter %s to method %s is too big. Range is %lld to %lld, but value is %lld.";
  std::snprintf(buffer.Get(), kBufferSize, format, parameterName, methodName, minimum, maximum, value);
  RaiseException("OutOfBoundsException", buffer.Get(), holdings);
  buffer.Release();
}

namespace {

void Log(id exception, Holdings& holdings) {
  const id name = msg::name(exception);
  const id reason = msg::reason(exception);
  const id userInfo = msg::userInfo(exception);
  const CFTypeRef format = CFStringCreateWithCString(nullptr, "A %@: %@, Info: %@\n", kEncodingASCII);
  if (format == nullptr) return;
  const unsigned held = holdings.Hold(format);
  NSLog(AsPlatformObject(format), name, reason, userInfo);
  holdings.ForgetLast(held);
  CFRelease(format);
}

void RaiseWrapped(id exception, Holdings& holdings) {
  void* const made = msg::NewNSExceptionQVX(PlatformClass<"NSException">(), exception);
  const auto wrapper = static_cast<REALobject>(made);
  if (wrapper == nullptr) return;
  const unsigned held = holdings.Hold(wrapper);
  REALRaiseException(wrapper);
  holdings.ForgetLast(held);
  REALUnlockObject(wrapper);
}

// What of a delivered exception is still to be told.
enum class Untold { kAll, kHostException, kNothing };

// Tells what is untold in a frame of its own, and answers what is left. An NSException on the way, from a log
// line that fails or for want of the sibling part, is dropped.
struct Telling {
  id exception;
  Untold untold;

  struct State {
    Holdings holdings;
    Untold left = Untold::kHostException;
  };

  void Begin(State&) {}
  Untold Run(State& state) {
    if (untold == Untold::kAll) Log(exception, state.holdings);
    state.left = Untold::kNothing;
    RaiseWrapped(exception, state.holdings);
    return Untold::kNothing;
  }
  void Left(State& state) {
    if (state.holdings.Count() > 0) [[unlikely]]
      state.holdings.GiveBackWhileUnwinding();
  }
  Untold Ended(id thrown, State& state) {
    EndDelivered(thrown, OnNSException::kDrop, &state.holdings, nullptr);
    return state.left;
  }
};

}  // namespace

// The frame of the body that the exception ended is gone when this runs.
void RaiseNSExceptionQVX(id exception) {
  Untold untold = Untold::kAll;
  do untold = InFrame(Telling{exception, untold});
  while (untold != Untold::kNothing);
}

}  // namespace qvx
