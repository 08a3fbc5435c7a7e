// hostrun/commands/trace_words.cpp - arguments and results as texts, from their words on the stack.
#include "hostrun/commands/trace_words.h"

#include <type_traits>

#include "hostrun/commands/describe.h"
#include "hostrun/host/arrays.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/service_list.h"
#include "hostrun/host/words.h"

namespace hostrun {
namespace {

// A service's argument; empty for one that can't be shown: a pointer, an encoding.
template <class T>
std::string ServiceArgument(std::uint32_t word, ObjectNames& names) {
  if constexpr (std::is_same_v<T, std::int32_t> || std::is_same_v<T, qvx::REALArrayType>) {
    return std::to_string(static_cast<std::int32_t>(word));
  } else if constexpr (std::is_same_v<T, Object*>) {
    return names.Of(reinterpret_cast<const Object*>(word));
  } else if constexpr (std::is_same_v<T, HostString*>) {
    return LiteralText(Value::Share(reinterpret_cast<HostString*>(word)));
  } else if constexpr (std::is_same_v<T, const char*>) {
    return word == 0 ? "null" : '"' + std::string(reinterpret_cast<const char*>(word)) + '"';
  } else {
    return {};
  }
}

// A service's arguments up to the first that can't be shown. Each takes one word.
template <class Function>
struct ServiceArguments;
template <class R, class... A>
struct ServiceArguments<R(A...)> {
  static std::string Text(const std::uint32_t* words, [[maybe_unused]] ObjectNames& names) {
    std::string text;
    [[maybe_unused]] const auto add = [&text](const std::string& argument) {
      text += (text.empty() || argument.empty() ? "" : ", ") + argument;
      return !argument.empty();
    };
    static_cast<void>((add(ServiceArgument<A>(*words++, names)) && ...));
    return text.empty() ? text : "(" + text + ")";
  }
};

}  // namespace

std::string ObjectNames::Of(const Object* object) {
  if (object == nullptr) return "Nil";
  if (object->cls == &ArrayClass())
    return "array of " + std::to_string(ArrayDataOf(const_cast<Object*>(object)).items.size());
  if (object->cls->origin != Origin::Bundle) return object->cls->name;
  int& number = numbers_[object];
  if (number == 0) number = ++last_[object->cls];
  return object->cls->name + "#" + std::to_string(number);
}

std::string ValueText(const Value& value, ObjectNames& names) {
  return value.kind() == Kind::Object ? names.Of(value.object()) : LiteralText(value);
}

std::string WordsText(const Parameter& parameter, const std::uint32_t*& words, bool after,
                      ObjectNames& names) {
  const std::uint32_t* at = words;
  words += parameter.byref ? 1 : WordCount(*parameter.type);
  if (parameter.byref) at = reinterpret_cast<const std::uint32_t*>(*at);
  const std::string text = ValueText(ShareWords(*parameter.type, at), names);
  return parameter.byref && !after ? "byref " + text : text;
}

std::string ServiceText(std::string_view name, const std::uint32_t* words, ObjectNames& names) {
  std::string text;
  ForEachService([&]<class Kind>(const char*, std::string_view hostName) {
    if (text.empty() && hostName == name)
      text = std::string(name) + ServiceArguments<typename Kind::Function>::Text(words, names);
  });
  return text;
}

}  // namespace hostrun
