// hostrun/commands/trace_words.h - arguments and results as texts, from their words on the stack.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "hostrun/host/declaration.h"
#include "hostrun/host/objects.h"
#include "hostrun/host/value.h"

namespace hostrun {

// Names for objects that tell them apart: "NSColorQVX#3" is the third NSColorQVX that was named. Only the
// bundle's objects are numbered.
class ObjectNames {
 public:
  std::string Of(const Object* object);
  // The object is about to die; its address may come again.
  void Forget(const Object* object) { numbers_.erase(object); }

 private:
  std::map<const Object*, int> numbers_;  // of live objects
  std::map<const Class*, int> last_;
};

std::string ValueText(const Value& value, ObjectNames& names);

// The argument at `words`; moves `words` past it. `after` the call, what stands in a by-reference argument.
std::string WordsText(const Parameter& parameter, const std::uint32_t*& words, bool after,
                      ObjectNames& names);

// The use of a service with its arguments; empty when there is no service of that name.
std::string ServiceText(std::string_view name, const std::uint32_t* words, ObjectNames& names);

}  // namespace hostrun
