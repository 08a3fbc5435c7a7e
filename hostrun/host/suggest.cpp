// hostrun/host/suggest.cpp - the names that there are, and what a misspelled one may have meant.
#include "hostrun/host/suggest.h"

#include <algorithm>
#include <iterator>

#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr std::size_t kMost = 3;
constexpr std::size_t kShortestBeginning = 3;
constexpr std::size_t kLongest = 100;  // longer names are never near

// How many letters must be put in, taken away, changed or swapped with their neighbour.
std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    before = std::move(last);
    last = row;
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row[b.size()];
}

}  // namespace

std::vector<std::string> OwnMemberNamesOf(const Class& cls, bool shared) {
  std::vector<std::string> names;
  for (const Property& property : cls.properties) {
    if (property.shared == shared) names.push_back(property.name);
  }
  for (const Method& method : shared ? cls.sharedMethods : cls.methods) {
    const std::string& name = method.signature.name;
    const bool hidden = name.starts_with('_') || SameName(name, "Constructor");
    if (!hidden && std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  if (!shared) return names;
  for (const Constant& constant : cls.constants) names.push_back(constant.name);
  return names;
}

std::vector<std::string> MemberNamesOf(const Class& cls, bool shared) {
  std::vector<std::string> names;
  for (const Class* c = &cls; c != nullptr; c = c->super) {
    std::ranges::copy(OwnMemberNamesOf(*c, shared), std::back_inserter(names));
  }
  return names;
}

std::vector<std::string> ClassNames() {
  std::vector<std::string> names;
  for (const auto& cls : TheRegistry().classes()) {
    if (cls->defined && !cls->name.starts_with('_')) names.push_back(cls->name);
  }
  return names;
}

std::vector<std::string> NearestNames(std::string_view wanted, const std::vector<std::string>& names) {
  struct Near {
    std::size_t distance;
    std::string name;
  };
  const std::string lower = LowerName(wanted);
  std::vector<Near> near;
  for (const std::string& name : names) {
    if (lower.size() > kLongest || name.size() > kLongest) continue;
    const std::size_t distance = Distance(lower, LowerName(name));
    const std::size_t allowed = std::max(lower.size(), name.size()) / 3;
    const bool known = std::any_of(near.begin(), near.end(),
                                   [&name](const Near& other) { return SameName(other.name, name); });
    if (distance <= allowed && !known) near.push_back({distance, name});
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const Near& a, const Near& b) { return a.distance < b.distance; });
  std::vector<std::string> nearest;
  // What is twice as far as the nearest was hardly meant.
  for (const Near& one : near) {
    if (nearest.size() < kMost && one.distance <= 2 * near.front().distance) nearest.push_back(one.name);
  }
  if (!nearest.empty() || lower.size() < kShortestBeginning) return nearest;
  for (const std::string& name : names) {
    const bool known = std::ranges::find(nearest, name) != nearest.end();
    if (nearest.size() == kMost || known || name.size() > kLongest) continue;
    if (LowerName(name).starts_with(lower)) nearest.push_back(name);
  }
  return nearest;
}

std::string DidYouMean(std::string_view wanted, const std::vector<std::string>& names) {
  const std::vector<std::string> nearest = NearestNames(wanted, names);
  std::string list;
  for (std::size_t i = 0; i < nearest.size(); ++i) {
    list += (i == 0 ? "" : i + 1 == nearest.size() ? " or " : ", ") + nearest[i];
  }
  return list.empty() ? list : "; did you mean " + list + "?";
}

}  // namespace hostrun
