// libcocoa/colours/exported_handles.h - which objects have been handed out as Core Graphics handles.
//
// A handle is the object itself, not retained: it is valid while the object lives. A program may hand back
// any number, so a handle is looked up here before it is followed.
#pragma once

#include <objc/objc.h>

// Notes that the object's address has been handed out.
void QVXExportHandle(id object);

// The object goes away. Costs one load as long as nothing was ever handed out.
void QVXForgetHandle(id object);

// Whether the handle is an object that was handed out and still lives.
BOOL QVXIsLiveHandle(const void* handle);
