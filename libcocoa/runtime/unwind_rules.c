// libcocoa/runtime/unwind_rules.c - how to get from a function on the stack to its caller.
#define _GNU_SOURCE
#include "libcocoa/runtime/unwind_rules.h"

#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <stddef.h>
#include <string.h>

#include "libcocoa/runtime/leb128.h"
#include "libcocoa/runtime/unwind_info.h"

// Registers by their DWARF numbers.
enum { kEsp = 4, kEbp = 5, kEip = 8 };

// Call frame instructions. Those of the first group have an operand in their lower six bits.
enum {
  kAdvance = 0x40,
  kOffset = 0x80,
  kRestore = 0xc0,
  kPrimaryMask = 0xc0,

  kNop = 0x00,
  kAdvance1 = 0x02,
  kAdvance2 = 0x03,
  kAdvance4 = 0x04,
  kUndefined = 0x07,
  kSameValue = 0x08,
  kRememberState = 0x0a,
  kRestoreState = 0x0b,
  kDefineEnd = 0x0c,
  kDefineEndRegister = 0x0d,
  kDefineEndOffset = 0x0e,
  kDefineEndExpression = 0x0f,
  kExpression = 0x10,
  kArgumentsSize = 0x2e,
};

// The two operations of the expressions that a function with a realigned stack has: ebp plus an offset, and
// what is stored there.
enum { kPlusEbp = 0x70 + kEbp, kStored = 0x06 };

typedef struct {
  uint8_t base;
  int32_t offset;
} Location;

// Where things are at one point of a function.
typedef struct {
  Location end;  // nowhere: it is told from a register that no ordinary function has for it
  Location ebp;
  bool hasCaller;
  bool returnsElsewhere;  // the return address is not on top, where a call puts it
} State;

enum { kMostRemembered = 8 };

// A program on its way to `target`.
typedef struct {
  const QVXFrameInformation* information;
  uintptr_t target;
  uintptr_t location;
  State state;
  State entry;  // the state that `kRestore` goes back to
  State remembered[kMostRemembered];
  unsigned depth;
} Run;

static void Put(Run* run, uint32_t number, Location location) {
  if (number == kEbp) run->state.ebp = location;
  if (number == kEip) {
    run->state.hasCaller = location.base != kQVXNowhere;
    run->state.returnsElsewhere = location.base != kQVXFromEnd || location.offset != -4;
  }
}

static void Restore(Run* run, uint32_t number) {
  if (number == kEbp) run->state.ebp = run->entry.ebp;
  if (number == kEip) {
    run->state.hasCaller = run->entry.hasCaller;
    run->state.returnsElsewhere = run->entry.returnsElsewhere;
  }
}

// An expression of the known form. False for any other.
static bool ReadExpression(const uint8_t** p, bool stored, Location* out) {
  uint32_t size;
  const uint8_t* begin = QVXReadUnsigned(*p, &size);
  const uint8_t* end = *p = begin + size;
  if (begin == end || *begin != kPlusEbp) return false;
  begin = QVXReadSigned(begin + 1, &out->offset);
  if (stored && (begin == end || *begin++ != kStored)) return false;
  out->base = stored ? kQVXStoredFromEbp : kQVXFromEbp;
  return begin == end;
}

static uint32_t ReadDistance(const uint8_t** p, uint8_t instruction) {
  uint32_t distance = 0;
  size_t size = instruction == kAdvance1 ? 1 : instruction == kAdvance2 ? 2 : 4;
  memcpy(&distance, *p, size);
  *p += size;
  return distance;
}

static uint8_t BaseOf(uint32_t number) {
  return number == kEsp ? kQVXFromStackPointer : number == kEbp ? kQVXFromEbp : kQVXNowhere;
}

// An instruction without an operand of its own in it. False if it is not understood.
static bool RunExtended(Run* run, uint8_t instruction, const uint8_t** p) {
  State* state = &run->state;
  uint32_t number;
  uint32_t offset;
  Location location = {0};
  switch (instruction) {
    case kNop:
      return true;
    case kAdvance1:
    case kAdvance2:
    case kAdvance4:
      run->location += ReadDistance(p, instruction) * run->information->codeUnit;
      return true;
    case kUndefined:
      *p = QVXReadUnsigned(*p, &number);
      if (number == kEbp) return false;
      Put(run, number, location);
      return true;
    case kSameValue:
      *p = QVXReadUnsigned(*p, &number);
      Put(run, number, location);
      return number != kEip;
    case kRememberState:
      if (run->depth == kMostRemembered) return false;
      run->remembered[run->depth++] = *state;
      return true;
    case kRestoreState:
      if (run->depth == 0) return false;
      *state = run->remembered[--run->depth];
      return true;
    case kDefineEnd:
      *p = QVXReadUnsigned(*p, &number);
      *p = QVXReadUnsigned(*p, &offset);
      state->end = (Location){BaseOf(number), (int32_t)offset};
      return true;
    case kDefineEndRegister:
      *p = QVXReadUnsigned(*p, &number);
      state->end.base = BaseOf(number);
      return true;
    case kDefineEndOffset:
      *p = QVXReadUnsigned(*p, &offset);
      state->end.offset = (int32_t)offset;
      return true;
    case kDefineEndExpression:
      return ReadExpression(p, true, &state->end);
    case kExpression: {
      *p = QVXReadUnsigned(*p, &number);
      bool understood = ReadExpression(p, false, &location);
      Put(run, number, location);
      return understood || (number != kEbp && number != kEip);
    }
    case kArgumentsSize:
      *p = QVXReadUnsigned(*p, &offset);
      return true;
    default:
      return false;
  }
}

static bool RunProgram(Run* run, QVXFrameProgram program) {
  const uint8_t* p = program.begin;
  while (p < program.end && run->location <= run->target) {
    uint8_t instruction = *p++;
    uint8_t operand = instruction & (uint8_t)~kPrimaryMask;
    switch (instruction & kPrimaryMask) {
      case kAdvance:
        run->location += operand * run->information->codeUnit;
        break;
      case kOffset: {
        uint32_t offset;
        p = QVXReadUnsigned(p, &offset);
        Put(run, operand, (Location){kQVXFromEnd, (int32_t)offset * run->information->dataUnit});
        break;
      }
      case kRestore:
        Restore(run, operand);
        break;
      default:
        if (!RunExtended(run, instruction, &p)) return false;
    }
  }
  return true;
}

static bool MakeRule(uintptr_t address, QVXUnwindRule* rule) {
  QVXFrameInformation information;
  if (!QVXFindFrameInformation(address, &information) || information.isSignalFrame) return false;
  Run run = {.information = &information, .target = address, .location = information.start};
  if (!RunProgram(&run, information.common)) return false;
  run.entry = run.state;
  if (!RunProgram(&run, information.own)) return false;
  State* state = &run.state;
  if (state->end.base == kQVXNowhere || (state->hasCaller && state->returnsElsewhere)) return false;
  *rule = (QVXUnwindRule){
      .address = address,
      .start = information.start,
      .entry = information.entry,
      .endOffset = state->end.offset,
      .ebpOffset = state->ebp.offset,
      .endBase = state->end.base,
      .ebpBase = state->ebp.base,
      .isOutermost = !state->hasCaller,
      .startsInTheMiddle = QVXStartsInTheMiddle(&information),
      .isObjectiveC = QVXHasObjectiveCActions(&information),
  };
  return true;
}

// By address: pairs, the newer rule first. A third one that falls on a pair drives the older one out.
enum { kPairsLog2 = 9, kPairs = 1 << kPairsLog2 };
static QVXUnwindRule rules[kPairs][2];
static unsigned long long unloaded;  // how many libraries had been unloaded when the rules were read
static pthread_mutex_t taken = PTHREAD_MUTEX_INITIALIZER;

static int NoteUnloaded(struct dl_phdr_info* info, size_t size, void* count) {
  *(unsigned long long*)count = info->dlpi_subs;
  return 1;
}

// A lock that is tried and not waited for: an exception must get through even out of a signal handler that
// interrupted a walk, or in a child that was forked during one.
bool QVXTakeUnwindRules(void) {
  if (pthread_mutex_trylock(&taken) != 0) return false;
  unsigned long long count = unloaded;
  dl_iterate_phdr(NoteUnloaded, &count);
  if (count != unloaded) {  // other code may lie at the addresses now
    memset(rules, 0, sizeof rules);
    unloaded = count;
  }
  return true;
}

void QVXGiveUnwindRules(void) {
  pthread_mutex_unlock(&taken);
}

// Code that was not loaded from a file may go without being counted.
static bool IsLoadedCode(uintptr_t address) {
  struct dl_find_object found;
  return _dl_find_object((void*)address, &found) == 0;
}

bool QVXUnwindRuleAt(uintptr_t address, QVXUnwindRule* out) {
  // Multiplying by the golden ratio spreads what lies close together.
  QVXUnwindRule* pair = rules[address * 0x9e3779b9u >> (32 - kPairsLog2)];
  for (unsigned i = 0; i < 2; ++i) {
    if (pair[i].address != address) continue;
    *out = pair[i];
    return true;
  }
  if (!MakeRule(address, out)) return false;
  if (!IsLoadedCode(address)) return true;
  pair[1] = pair[0];
  pair[0] = *out;
  return true;
}

// A return address may lie behind the function's end.
bool QVXUnwindRuleOf(const QVXPlace* place, QVXUnwindRule* out) {
  return QVXUnwindRuleAt(place->returnAddress - 1, out);
}

QVXPlace QVXCallerOf(const void* frameAddress) {
  const uintptr_t* words = frameAddress;  // the caller's ebp, the return address
  return (QVXPlace){.returnAddress = words[1], .stackPointer = (uintptr_t)(words + 2), .ebp = words[0]};
}

static uintptr_t WordAt(uintptr_t address) {
  return *(const uintptr_t*)address;
}

uintptr_t QVXUpperEnd(const QVXUnwindRule* rule, const QVXPlace* place) {
  uintptr_t offset = (uintptr_t)rule->endOffset;
  switch (rule->endBase) {
    case kQVXFromStackPointer:
      return place->stackPointer + offset;
    case kQVXFromEbp:
      return place->ebp + offset;
    default:
      return WordAt(place->ebp + offset);
  }
}

bool QVXStepOutwards(const QVXUnwindRule* rule, QVXPlace* place) {
  uintptr_t end = QVXUpperEnd(rule, place);
  if (rule->isOutermost || end <= place->stackPointer) return false;
  uintptr_t ebp = place->ebp;
  if (rule->ebpBase == kQVXFromEnd) ebp = WordAt(end + (uintptr_t)rule->ebpOffset);
  if (rule->ebpBase == kQVXFromEbp) ebp = WordAt(place->ebp + (uintptr_t)rule->ebpOffset);
  *place = (QVXPlace){.returnAddress = WordAt(end - sizeof(uintptr_t)), .stackPointer = end, .ebp = ebp};
  return true;
}
