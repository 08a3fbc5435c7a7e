// libcocoa/runtime/unwind_info.c - reads a function's call frame information.
#include "libcocoa/runtime/unwind_info.h"

#include <stddef.h>
#include <string.h>

#include "libcocoa/runtime/leb128.h"

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
  kOmitted = 0xff,
};

static bool IsWord(uint8_t encoding) {
  uint8_t format = encoding & 0x0f;
  return format == kAbsolute || format == kUnsigned4 || format == kSigned4;
}

static uintptr_t ReadPointer(uint8_t encoding, const uint8_t* p, const EHBases* bases) {
  if (encoding == kOmitted || !IsWord(encoding)) return 0;
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

static const uint8_t* EndOf(const uint32_t* length) {
  return (const uint8_t*)(length + 1) + *length;
}

// What the letters of a common entry's augmentation say.
typedef struct {
  uint8_t actionsEncoding;
  uint8_t addressEncoding;
} Augmentation;

static bool ReadAugmentation(const char* letters, const uint8_t* p, const EHBases* bases,
                             QVXFrameInformation* out, Augmentation* augmentation) {
  for (; *letters != 0; ++letters) {
    switch (*letters) {
      case 'P':
        if (!IsWord(p[0])) return false;
        out->personality = ReadPointer(p[0], p + 1, bases);
        p += 1 + sizeof(uint32_t);
        break;
      case 'L':
        augmentation->actionsEncoding = *p++;
        break;
      case 'R':
        augmentation->addressEncoding = *p++;
        break;
      case 'S':
        out->isSignalFrame = true;
        break;
      default:
        return false;
    }
  }
  return true;
}

static bool ReadCommonEntry(const uint32_t* common, const EHBases* bases, QVXFrameInformation* out,
                            Augmentation* augmentation) {
  const uint8_t* version = (const uint8_t*)(common + 2);
  const char* letters = (const char*)version + 1;
  if (letters[0] != 'z') return false;
  const uint8_t* p = (const uint8_t*)letters + strlen(letters) + 1;
  p = QVXReadUnsigned(p, &out->codeUnit);
  p = QVXReadSigned(p, &out->dataUnit);
  uint32_t ignored;
  p = *version == 1 ? p + 1 : QVXReadUnsigned(p, &ignored);  // the return address's register
  uint32_t size;
  p = QVXReadUnsigned(p, &size);
  out->common = (QVXFrameProgram){p + size, EndOf(common)};
  return ReadAugmentation(letters + 1, p, bases, out, augmentation);
}

bool QVXFindFrameInformation(uintptr_t address, QVXFrameInformation* out) {
  EHBases bases;
  const DescriptionEntry* entry = _Unwind_Find_FDE((void*)address, &bases);
  if (!entry) return false;
  *out = (QVXFrameInformation){.entry = entry, .start = (uintptr_t)bases.function};
  Augmentation augmentation = {kOmitted, kAbsolute};
  const uint32_t* common = (const uint32_t*)((uintptr_t)&entry->distance - (uintptr_t)entry->distance);
  if (!ReadCommonEntry(common, &bases, out, &augmentation) || !IsWord(augmentation.addressEncoding))
    return false;
  uint32_t size;
  const uint8_t* p = (const uint8_t*)(entry + 1) + 2 * sizeof(uint32_t);  // past start and size
  p = QVXReadUnsigned(p, &size);
  out->hasActions = size != 0 && ReadPointer(augmentation.actionsEncoding, p, &bases) != 0;
  out->own = (QVXFrameProgram){p + size, EndOf(&entry->length)};
  return true;
}

bool QVXHasObjectiveCActions(const QVXFrameInformation* information) {
  return information->hasActions && information->personality == (uintptr_t)__gnu_objc_personality_v0;
}

bool QVXHasUnwindActions(struct _Unwind_Context* function) {
  return _Unwind_GetLanguageSpecificData(function) != 0;
}

QVXPersonality QVXObjectiveCPersonality(struct _Unwind_Context* function) {
  if (!QVXHasUnwindActions(function)) return NULL;
  int beforeInstruction = 0;
  uintptr_t pc = _Unwind_GetIPInfo(function, &beforeInstruction);
  if (!beforeInstruction) --pc;  // a return address may lie behind the function's end
  QVXFrameInformation information;
  if (!QVXFindFrameInformation(pc, &information)) return NULL;
  return QVXHasObjectiveCActions(&information) ? __gnu_objc_personality_v0 : NULL;
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
bool QVXStartsInTheMiddle(const QVXFrameInformation* information) {
  const uint8_t* p = information->own.begin;
  while (p < information->own.end) {
    uint8_t instruction = *p++;
    if ((instruction & kPrimaryMask) == kRegisterOffset || instruction == kArgumentsSize) {
      uint32_t ignored;
      p = QVXReadUnsigned(p, &ignored);
    } else if (instruction != kNop && instruction != kRememberState) {
      return instruction >= kDefineCfa && instruction <= kDefineCfaExpression;
    }
  }
  return false;
}

bool QVXMayShareFunction(uintptr_t pc, uintptr_t otherPC) {
  QVXFrameInformation one, other;
  bool found = QVXFindFrameInformation(pc, &one);
  if (QVXFindFrameInformation(otherPC, &other) != found) return false;
  if (!found) return true;  // nothing is known of either
  return one.entry == other.entry || QVXStartsInTheMiddle(&one) || QVXStartsInTheMiddle(&other);
}
