// hostrun/host/dictionaries.h - the host's "Dictionary": values by keys of any type.
#pragma once

namespace hostrun {

void RegisterDictionaryClass();

}  // namespace hostrun
