// tests/bundle/faults/promises.h - which faults an event can have, and what the bundle promises after them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/bundle/faults/call.h"

namespace faults {

const char* NameOf(Fault fault);

// The faults that make sense at an event; none where nothing can go wrong.
std::vector<Fault> FaultsAt(const Step& step);

// Whether an NSException raised by that function's body is dropped without a word.
bool DropsExceptions(const Target& target);

// Everything that is broken in a call with faults, compared with the same call without, as sentences.
std::vector<std::string> BrokenPromises(const Case& each, const Plan& plan, const Observation& baseline,
                                        const Observation& observed);

// The only deviations from the rules of promises.cpp that are right, each with its reason. An empty pattern
// fits anything.
struct Allowance {
  std::string_view target;   // part of the declaration
  std::string_view event;    // part of the text of the event with the fault
  Fault fault;               // kNone: any
  std::string_view promise;  // part of the sentence that says what is broken
  std::string_view reason;
};
const std::vector<Allowance>& Allowances();
// The allowance that covers a broken promise of a case, or null.
const Allowance* Allowed(const Case& each, const std::vector<Step>& faulted, std::string_view promise);

}  // namespace faults
