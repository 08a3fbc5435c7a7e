// bundle/classes/text_getters.h - the getter of one text, which every class has.
#pragma once

#include "bundle/bridge/guard.h"
#include "bundle/host/types.h"
#include "bundle/platform/message.h"

namespace qvx {

// Sends `selector` to the native object of an instance and answers the text as a new host string, whose one
// reference is the caller's. `data` is the instance's class data, null for a null instance, which gives the
// null string; an empty instance is a message to nil. An NSException gives the null string too, and is raised
// or dropped.
template <OnNSException then = OnNSException::kRaise>
REALstring TextOf(const id* data, Selector& selector);

}  // namespace qvx
