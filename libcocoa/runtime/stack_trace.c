// libcocoa/runtime/stack_trace.c - the return addresses that an exception keeps of the stack it was raised
// on.
#include <execinfo.h>
#include <stdlib.h>
#include <string.h>

#include "libcocoa/runtime/exported.h"
#include "libcocoa/runtime/unwind_rules.h"

enum { kMostAddresses = 128 };

// 0 if the rules don't suffice as far as the thread's first function.
static unsigned Walk(QVXPlace place, uintptr_t* addresses, unsigned count) {
  QVXUnwindRule rule;
  while (count < kMostAddresses) {
    if (!QVXUnwindRuleOf(&place, &rule)) return 0;
    addresses[count++] = place.returnAddress;
    if (rule.isOutermost) return count;
    if (!QVXStepOutwards(&rule, &place)) return 0;
  }
  return count;
}

// GNUstep's own, which this one comes before: whoever raises asks it for the stack, to be had from the
// exception later. It reads the unwind tables of every function on the stack, each time. Answers the number
// of addresses, innermost first, in memory that the caller frees; the first one lies in this function.
QVX_EXPORT unsigned GSPrivateReturnAddresses(uintptr_t** addresses) {
  uintptr_t found[kMostAddresses];
  found[0] = (uintptr_t)&GSPrivateReturnAddresses;
  unsigned count = 0;
  if (QVXTakeUnwindRules()) {
    count = Walk(QVXCallerOf(__builtin_frame_address(0)), found, 1);
    QVXGiveUnwindRules();
  }
  if (count == 0) count = (unsigned)backtrace((void**)found, kMostAddresses);
  if (count == 0) return 0;
  *addresses = malloc(count * sizeof **addresses);
  if (!*addresses) return 0;
  memcpy(*addresses, found, count * sizeof **addresses);
  return count;
}
