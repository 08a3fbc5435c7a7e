// libcocoa/runtime/unwind_info.c - reads the personality routine out of a function's call frame information.
#include "libcocoa/runtime/unwind_info.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

typedef struct {
  void* text;
  void* data;
  void* function;
} EHBases;

// A frame description entry; the distance leads back to its common information entry.
typedef struct {
  uint32_t length;
  int32_t distance;
} DescriptionEntry;

// From the compiler's run-time library: the entry for a program counter, or NULL.
extern const DescriptionEntry* _Unwind_Find_FDE(void* pc, EHBases*);

extern _Unwind_Reason_Code __gnu_objc_personality_v0(int, _Unwind_Action, _Unwind_Exception_Class,
                                                     struct _Unwind_Exception*, struct _Unwind_Context*);

// Pointer encodings: a format in the low half byte, what it is relative to in the next three bits.
enum {
  kAbsolute = 0x00,
  kUnsigned4 = 0x03,
  kSigned4 = 0x0b,
  kPcRelative = 0x10,
  kDataRelative = 0x30,
  kIndirect = 0x80,
};

static const uint8_t* SkipLEB128(const uint8_t* p) {
  while (*p++ & 0x80) {
  }
  return p;
}

static uintptr_t ReadPointer(uint8_t encoding, const uint8_t* p, const EHBases* bases) {
  uint8_t format = encoding & 0x0f;
  if (format != kAbsolute && format != kUnsigned4 && format != kSigned4) return 0;
  uint32_t value;
  memcpy(&value, p, sizeof value);
  if (value == 0) return 0;
  uintptr_t result = value;
  switch (encoding & 0x70) {
    case 0:
      break;
    case kPcRelative:
      result += (uintptr_t)p;
      break;
    case kDataRelative:
      result += (uintptr_t)bases->data;
      break;
    default:
      return 0;
  }
  if (encoding & kIndirect) memcpy(&result, (const void*)result, sizeof result);
  return result;
}

static const uint8_t* CommonEntry(const DescriptionEntry* entry) {
  return (const uint8_t*)((uintptr_t)&entry->distance - (uintptr_t)entry->distance);
}

static uintptr_t PersonalityAt(void* pc) {
  EHBases bases;
  const DescriptionEntry* entry = _Unwind_Find_FDE(pc, &bases);
  if (!entry) return 0;
  const uint8_t* common = CommonEntry(entry);
  uint8_t version = common[8];
  const char* augmentation = (const char*)common + 9;
  if (augmentation[0] != 'z') return 0;
  const uint8_t* p = (const uint8_t*)augmentation + strlen(augmentation) + 1;
  p = SkipLEB128(p);                         // code alignment
  p = SkipLEB128(p);                         // data alignment
  p = version == 1 ? p + 1 : SkipLEB128(p);  // return address register
  p = SkipLEB128(p);                         // length of what follows
  for (const char* letter = augmentation + 1; *letter != 0; ++letter) {
    switch (*letter) {
      case 'P':
        return ReadPointer(p[0], p + 1, &bases);
      case 'L':
      case 'R':
        ++p;
        break;
      case 'S':
        break;
      default:
        return 0;
    }
  }
  return 0;
}

bool QVXHasUnwindActions(struct _Unwind_Context* function) {
  return _Unwind_GetLanguageSpecificData(function) != 0;
}

QVXPersonality QVXObjectiveCPersonality(struct _Unwind_Context* function) {
  if (!QVXHasUnwindActions(function)) return NULL;
  int beforeInstruction = 0;
  uintptr_t pc = _Unwind_GetIPInfo(function, &beforeInstruction);
  if (!beforeInstruction) --pc;  // a return address may lie behind the function's end
  return PersonalityAt((void*)pc) == (uintptr_t)__gnu_objc_personality_v0 ? __gnu_objc_personality_v0 : NULL;
}

// The call frame instructions that may stand at the head of an entry.
enum {
  kNop = 0x00,
  kRememberState = 0x0a,
  kDefineCfa = 0x0c,
  kDefineCfaExpression = 0x0f,
  kArgumentsSize = 0x2e,
  kRegisterOffset = 0x80,
  kPrimaryMask = 0xc0,
};

// A function starts with its return address on top of the stack, as its common entry says. A piece that was
// moved away starts with its stack already set up, and its entry has to say so before the first instruction.
static bool StartsInTheMiddle(const DescriptionEntry* entry) {
  const uint8_t* end = (const uint8_t*)&entry->distance + entry->length;
  const uint8_t* p = (const uint8_t*)(&entry->distance + 1) + 2 * sizeof(uint32_t);  // past start and size
  if (CommonEntry(entry)[9] == 'z') p += 1 + *p;
  while (p < end) {
    uint8_t instruction = *p++;
    if ((instruction & kPrimaryMask) == kRegisterOffset || instruction == kArgumentsSize) {
      p = SkipLEB128(p);
    } else if (instruction != kNop && instruction != kRememberState) {
      return instruction >= kDefineCfa && instruction <= kDefineCfaExpression;
    }
  }
  return false;
}

bool QVXMayShareFunction(uintptr_t pc, uintptr_t otherPC) {
  EHBases bases, otherBases;
  const DescriptionEntry* entry = _Unwind_Find_FDE((void*)pc, &bases);
  const DescriptionEntry* other = _Unwind_Find_FDE((void*)otherPC, &otherBases);
  if (!entry || !other) return entry == other;
  return entry == other || StartsInTheMiddle(entry) || StartsInTheMiddle(other);
}
