// bundle/bridge/exceptions.h - raising host exceptions.
//
// Raising does not unwind: the host raises the exception once the bundle's function has returned, so every
// caller goes on, releases what it holds and returns its neutral value.
#pragma once

#include "bundle/bridge/holdings.h"
#include "bundle/host/types.h"
#include "bundle/platform/cocoa.h"

namespace qvx {

// Raises a host exception of `exceptionClass`, of "RuntimeException" if the host lacks that class, with the
// properties "Message" (empty for a null `message`, whose bytes are in `encoding`) and "ErrorNumber". Nothing
// is raised if the host makes neither.
void RaiseException(const char* exceptionClass, const char* message, Holdings& holdings,
                    std::uint32_t encoding = kEncodingASCII, std::int32_t errorNumber = 0);

// Raises "OutOfBoundsException" for a value outside of minimum..maximum; call it only for such a value.
void RaiseOutOfBoundsException(std::int64_t value, std::int64_t minimum, std::int64_t maximum,
                               const char* parameterName, const char* methodName, Holdings& holdings);

// Logs a caught NSException and raises the host exception that the sibling part makes of it. Nothing is
// raised if that part makes none. An NSException on the way is dropped.
void RaiseNSExceptionQVX(id exception);

}  // namespace qvx
