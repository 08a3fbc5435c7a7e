// tests/bundle/faults/allowances.cpp - what is right although it looks like a broken promise, each with its
// reason.
#include "tests/bundle/faults/promises.h"

namespace faults {
namespace {

constexpr std::string_view kNotTakenBack = "a host that throws instead of taking something back still has it";
constexpr std::string_view kNobodyTakes = "nothing can be given back to a host that has no service for it";
constexpr std::string_view kNoLock =
    "a host without the service to lock gets the cached object without the lock, and counts one reference "
    "too few";
constexpr std::string_view kUnlockedAnyway =
    "what is read is unlocked even where it could not be locked, so the host counts one reference too few";
constexpr std::string_view kNoClass = "without the class NSException no exception can be told to be one";
constexpr std::string_view kNotSent = "a message whose selector the platform can't register is not sent";
constexpr std::string_view kThePools =
    "what was sent autorelease is the pool's, whatever the message answers";
constexpr std::string_view kReleaseRaises =
    "a release that raises is not sent again: what it left behind is the platform's";
constexpr std::string_view kUnguarded =
    "the predefined spaces are answered without a frame: what raises there takes the new wrapper along";
constexpr std::string_view kBeforeGuard =
    "the preparation comes before the guard: what raises there leaves before anything is given back";
constexpr std::string_view kRemoveFirst =
    "the cache entry is removed before the native object is released: what raises there ends both";
constexpr std::string_view kThroughHost =
    "what a destructor passes on leaves the host in the middle of freeing: the rest is the host's loss";
constexpr std::string_view kStale = "loading a list leaves the cache entry of the list that it replaces";
constexpr std::string_view kRetained = "an instance wraps what retain answers";
constexpr std::string_view kStays = "a result set before an exception stays";

}  // namespace

const std::vector<Allowance>& Allowances() {
  static const std::vector<Allowance> allowances = {
      {"", "REALUnlockObject(", Fault::kBadAlloc, "references", kNotTakenBack},
      {"", "REALUnlockObject(", Fault::kBadAlloc, "is never freed", kNotTakenBack},
      {"", "REALUnlockString(", Fault::kBadAlloc, "references", kNotTakenBack},
      {"", "PluginDisposeStringData(", Fault::kBadAlloc, "were not disposed of", kNotTakenBack},
      {"", "resolve REALUnlockObject", Fault::kMissing, "references", kNobodyTakes},
      {"", "resolve REALUnlockObject", Fault::kMissing, "is never freed", kNobodyTakes},
      {"", "resolve REALUnlockString", Fault::kMissing, "references", kNobodyTakes},
      {"", "resolve REALLockObject", Fault::kMissing, "are accounted for", kNoLock},
      {"", "resolve REALLockObject", Fault::kMissing, "was used after it was freed", kNoLock},
      {"", "resolve REALLockObject", Fault::kMissing, "was unlocked once too often", kNoLock},
      {"", "resolve REALLockString", Fault::kMissing, "are accounted for", kUnlockedAnyway},
      {"", "resolve REALLockString", Fault::kMissing, "was used after it was freed", kUnlockedAnyway},
      {"", "resolve REALLockString", Fault::kMissing, "was unlocked once too often", kUnlockedAnyway},
      {"", "REALLockString(", Fault::kBadAlloc, "are accounted for", kUnlockedAnyway},
      {"", "REALLockString(", Fault::kBadAlloc, "was used after it was freed", kUnlockedAnyway},
      {"", "REALLockString(", Fault::kBadAlloc, "was unlocked once too often", kUnlockedAnyway},
      {"", "REALLockObject(block", Fault::kBadAlloc, "are accounted for", kUnlockedAnyway},
      {"", "REALLockObject(block", Fault::kBadAlloc, "was used after it was freed", kUnlockedAnyway},
      {"", "REALLockObject(block", Fault::kBadAlloc, "was unlocked once too often", kUnlockedAnyway},
      {"", "objc_getClass(\"NSException\")", Fault::kNull, "it passed on NSException#", kNoClass},
      {"", "sel_registerName(\"release\")", Fault::kNull, "held", kNotSent},
      {"", "sel_registerName(\"autorelease\")", Fault::kNull, "held", kNotSent},
      {"", " autorelease]", Fault::kNull, "held", kThePools},
      {"", "sel_registerName(\"initWith", Fault::kNull, "held", kNotSent},
      {"", "sel_registerName(\"retain\")", Fault::kNull, "the result is empty-", kRetained},
      {"", " retain]", Fault::kNull, "the result is empty-", kRetained},
      {"", " release]", Fault::kNone, "held", kReleaseRaises},
      {"", " release]", Fault::kRaiseNSException, "the result after an exception", kReleaseRaises},
      {"ColorSpace as NSColorSpaceQVX", " retain]", Fault::kNone, "references", kUnguarded},
      {"ColorSpace as NSColorSpaceQVX", " retain]", Fault::kNone, "is never freed", kUnguarded},
      {"ColorSpace as NSColorSpaceQVX", "CFDictionarySetValue(", Fault::kNone, "references", kUnguarded},
      {"ColorSpace as NSColorSpaceQVX", "CFDictionarySetValue(", Fault::kNone, "is never freed", kUnguarded},
      {"destructor", "InstancesDictionaryQVX", Fault::kNone, "held", kBeforeGuard},
      {"destructor", "PrepareNSExceptionQVX", Fault::kNone, "held", kBeforeGuard},
      {"availableColorSpaces", "InstancesDictionaryQVX", Fault::kNone, "array#1 ", kBeforeGuard},
      {"availableColorSpaces", "PrepareNSExceptionQVX", Fault::kNone, "array#1 ", kBeforeGuard},
      {"", "CFDictionaryRemoveValue(", Fault::kNone, "held", kRemoveFirst},
      {"destructor", "CFDictionaryRemoveValue(", Fault::kNone, "the cache still knows", kRemoveFirst},
      {"NSColorSpaceQVX.", "CFDictionaryRemoveValue(", Fault::kRaiseNSException, "the cache still knows",
       kRemoveFirst},
      {"availableColorSpaces", "CFDictionaryRemoveValue(", Fault::kRaiseOther, "is never freed",
       kThroughHost},
      {"availableColorSpaces", "CFDictionaryRemoveValue(", Fault::kRaiseOther, "references", kThroughHost},
      {"availableColorSpaces", " release]", Fault::kRaiseOther, "is never freed", kThroughHost},
      {"availableColorSpaces", " release]", Fault::kRaiseOther, "references", kThroughHost},
      {"NSColorListQVX.Create", "CFDictionarySetValue(", Fault::kRaiseNSException,
       "the result after an exception is true", kStays},
      {"NSColorListQVX.Load", "", Fault::kNone, "the cache still knows NSColorListQVX", kStale},
  };
  return allowances;
}

}  // namespace faults
