// bundle/bridge/exceptions.cpp - raising host exceptions.
#include "bundle/bridge/exceptions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "bundle/bridge/guard.h"
#include "bundle/bridge/references.h"
#include "bundle/bridge/strings.h"
#include "bundle/host/services.h"
#include "bundle/platform/messages.h"

namespace qvx {

void RaiseException(const char* exceptionClass, const char* message, std::uint32_t encoding,
                    std::int32_t errorNumber) {
  HostReference<REALstring> text;
  if (message != nullptr) {
    text.Slot() = REALBuildUnicodeString(message, static_cast<std::int64_t>(std::strlen(message)), encoding);
  }
  HostReference<REALobject> exception(REALnewInstance(exceptionClass));
  // A host that lacks the class still gets the message.
  if (!exception) exception.Slot() = REALnewInstance("RuntimeException");
  if (exception) {
    REALSetPropValueString(exception.Get(), "Message", text.Get());
    REALSetPropValueInt32(exception.Get(), "ErrorNumber", errorNumber);
    REALRaiseException(exception.Get());
    exception.Release();
  }
  text.Release();
}

void RaiseOutOfBoundsException(std::int64_t value, std::int64_t minimum, std::int64_t maximum,
                               const char* parameterName, const char* methodName) {
  constexpr std::size_t kBufferSize = 232;
  struct Free {
    void operator()(char* memory) const { std::free(memory); }
  };
  const std::unique_ptr<char, Free> buffer(static_cast<char*>(std::calloc(1, kBufferSize)));
  if (buffer == nullptr) {
    RaiseException("OutOfBoundsException", "Out of Bounds");
    return;
  }
  const char* format =
      value < minimum ? "Parameter %s to method %s is too small. Range is %lld to %lld, but value is %lld."
                      : "Parameter %s to method %s is too big. Range is %lld to %lld, but value is %lld.";
  std::snprintf(buffer.get(), kBufferSize, format, parameterName, methodName, minimum, maximum, value);
  RaiseException("OutOfBoundsException", buffer.get());
}

// The guard's own frame is gone when this runs: platform exceptions that are raised here, by a log line that
// fails or for want of the sibling part, are dropped in frames of their own.
void RaiseNSExceptionQVX(id exception) {
  CatchNSException([exception](Holdings& holdings) {
    const id name = msg::name(exception);
    const id reason = msg::reason(exception);
    const id userInfo = msg::userInfo(exception);
    const CFStringRef format = CFStringCreateWithCString(nullptr, "A %@: %@, Info: %@\n", kEncodingASCII);
    if (format == nullptr) return;
    Holdings::Item* const held = holdings.HoldReference(format);
    NSLog(AsPlatformObject(format), name, reason, userInfo);
    holdings.Release(held);
  });
  HostReference<REALobject> wrapper;
  CatchNSException([exception, &wrapper] {
    wrapper.Slot() =
        static_cast<REALobject>(msg::NewNSExceptionQVX(PlatformClass<"NSException">(), exception));
  });
  if (!wrapper) return;
  REALRaiseException(wrapper.Get());
  wrapper.Release();
}

}  // namespace qvx
