// hostrun/host/suggest.h - the names that there are, and what a misspelled one may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hostrun/host/registry.h"

namespace hostrun {

// Of this class alone, each once, in the order of registration; constants are shared, constructors are left
// out.
std::vector<std::string> OwnMemberNamesOf(const Class& cls, bool shared);
// Of this class and those it descends from.
std::vector<std::string> MemberNamesOf(const Class& cls, bool shared);
// Of the defined classes that programs may name.
std::vector<std::string> ClassNames();

// Those of `names` that differ from `wanted` by few letters, without regard to case: the nearest first, each
// once, at most three. Where there are none, those that begin with it.
std::vector<std::string> NearestNames(std::string_view wanted, const std::vector<std::string>& names);

// "; did you mean X, Y or Z?", the end of an error; empty when nothing is near.
std::string DidYouMean(std::string_view wanted, const std::vector<std::string>& names);

}  // namespace hostrun
