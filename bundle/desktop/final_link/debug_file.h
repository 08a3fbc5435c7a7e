// bundle/desktop/final_link/debug_file.h - the file that turns the bundle's addresses into names and lines.
#pragma once

#include "bundle/desktop/final_link/layout.h"

namespace desktop {

// The companion of `bundle`, which the object was linked into: the object's sections for debuggers, with the
// bundle's addresses in them, and the names of all that the object defines. It has the bundle's UUID and its
// segments, without what is in them. Refuses a relocation for debuggers that it does not know.
Bytes DebugFile(const Object& object, const Imports& imports, const Layout& layout, const Bytes& bundle);

}  // namespace desktop
