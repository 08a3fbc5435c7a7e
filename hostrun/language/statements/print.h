// hostrun/language/statements/print.h - who sees what a program prints.
#pragma once

#include <functional>
#include <vector>

#include "hostrun/host/value.h"

namespace hostrun {

// `observer` is called with the values of each line just before the line is printed. Empty: nothing is
// called.
void SetPrintObserver(std::function<void(const std::vector<Value>&)> observer);

}  // namespace hostrun
