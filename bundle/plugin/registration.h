// bundle/plugin/registration.h - handing class definitions to the host, in its own layout.
#pragma once

#include "bundle/host/records.h"

namespace qvx {

// The layout version of the definition records that the host understands: 9 to 13.
extern constinit std::int32_t CurrentREALControlVersion;

// Registers a class. The definition is changed in place: its data size is rounded up to a multiple of 16, and
// for a host of layout version 9 or below its words 0 to 24 become the old layout, whose arrays live as long
// as the process. A host without "PluginRegisterClass" registers nothing.
void MyREALRegisterClass(REALclassDefinition* definition);

// Property records in the old layout: a new array, never freed; null for no records and when memory runs out.
// A negative count gives null.
REALproperty* FixProperties(const REALproperty* properties, std::int32_t count);

}  // namespace qvx
