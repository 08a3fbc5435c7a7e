// libcocoa/runtime/unwind_rules.h - how to get from a function on the stack to its caller: read from the
// unwind tables once for each call site, kept by its address.
//
// Only what compilers write for ordinary functions is understood. Whoever meets anything else walks with the
// compiler's own unwinder, which understands everything and reads its tables each time.
#pragma once

#include <stdbool.h>
#include <stdint.h>

// A function on the stack, as the function that it has called will leave it.
typedef struct {
  uintptr_t returnAddress;
  uintptr_t stackPointer;  // after the return
  uintptr_t ebp;
} QVXPlace;

// How an address is told from a place: a register and an offset, or what is stored there.
typedef enum {
  kQVXNowhere = 0,
  kQVXFromStackPointer,
  kQVXFromEbp,
  kQVXStoredFromEbp,
  kQVXFromEnd,  // of the function's own part of the stack
} QVXBase;

typedef struct {
  uintptr_t address;  // in the function; 0: this rule is not in use
  uintptr_t start;    // where the function starts
  const void* entry;  // which function information it is from
  int32_t endOffset;
  int32_t ebpOffset;
  uint8_t endBase;
  uint8_t ebpBase;         // where the caller's ebp is stored; nowhere: it is still in the register
  bool isOutermost;        // has no caller
  bool startsInTheMiddle;  // a piece that the compiler has moved away from its function
  bool isObjectiveC;       // has handlers or clean-ups of Objective-C
} QVXUnwindRule;

// The rules belong to one thread at a time, and to none that is interrupted while it has them. False: they
// are another's now.
bool QVXTakeUnwindRules(void);
void QVXGiveUnwindRules(void);

// The rule at an address inside a function. False if there is none of this kind.
bool QVXUnwindRuleAt(uintptr_t address, QVXUnwindRule* out);

// The rule of the function at `place`.
bool QVXUnwindRuleOf(const QVXPlace* place, QVXUnwindRule* out);

// The caller of the function that has this frame address.
QVXPlace QVXCallerOf(const void* frameAddress);

// The upper end of the function's part of the stack, above its return address.
uintptr_t QVXUpperEnd(const QVXUnwindRule* rule, const QVXPlace* place);

// The function's caller. False if the rule leads inwards, and so can't be true.
bool QVXStepOutwards(const QVXUnwindRule* rule, QVXPlace* place);
