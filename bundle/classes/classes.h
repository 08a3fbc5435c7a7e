// bundle/classes/classes.h - the definitions of the three classes. Registration changes them in place.
#pragma once

#include "bundle/host/records.h"

namespace qvx {

extern constinit REALclassDefinition NSColorDefinition;
extern constinit REALclassDefinition NSColorListDefinition;
extern constinit REALclassDefinition NSColorSpaceDefinition;

// The layout version that the static records are written in.
inline constexpr std::int32_t kCurrentLayout = 13;

}  // namespace qvx
