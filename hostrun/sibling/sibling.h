// hostrun/sibling/sibling.h - the sibling part that bundles of this family expect beside them: the host
// classes "NSExceptionQVX", "NSImageQVX" and "Pasteboard", the shared instance cache, and three class methods
// on NSException.
#pragma once

#include "hostrun/host/objects.h"
#include "hostrun/host/problem.h"
#include "hostrun/sibling/platform_objects.h"

namespace hostrun {

// Registers the classes and adds the methods.
Problem InstallSibling();

// The instance cache: native object to host object, neither retained.
Object* CachedInstance(PlatformId native);

// Stores `native`, retained by the caller for it, in an empty wrapper instance and enters the pair.
void Wrap(Object* instance, PlatformId native);

// The destructor of a wrapper instance: leaves the cache and releases the native object.
void Unwrap(Object* instance);

void RegisterExceptionWrapper();  // exception_wrapper.cpp
void RegisterImageWrapper();      // image_wrapper.cpp
void RegisterPasteboardTypes();   // pasteboard_types.cpp
// The host object of a platform exception, with one reference for the caller.
Object* NewExceptionWrapper(PlatformId exception);

}  // namespace hostrun
