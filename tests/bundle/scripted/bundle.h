// tests/bundle/scripted/bundle.h - the only way for a test into the bundle: by pointer, or by class and
// declaration.
#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/native_object.h"

namespace scripted {

// Calls a function of the bundle as the host would. A handle that it answers is the test's from then on.
template <typename Result, typename... Parameters, typename... Arguments>
Result Call(Result (*function)(Parameters...), Arguments... arguments) {
  if constexpr (std::is_void_v<Result>) {
    const Inside inside;
    function(arguments...);
  } else {
    const auto result = [&] {
      const Inside inside;
      return function(arguments...);
    }();
    if constexpr (std::is_pointer_v<Result>) TheHost().Adopt(result);
    return result;
  }
}

// What stands in a record for an argument of that type.
inline void* Pass(HostObject& object) {
  return object.Handle();
}
inline void* Pass(std::nullptr_t) {
  return nullptr;
}
inline void* Pass(void* handle) {
  return handle;
}
inline void* Pass(qvx::REALstring string) {
  return string;
}
inline double Pass(double value) {
  return value;
}
inline std::int32_t Pass(std::int32_t value) {
  return value;
}
inline double* Pass(double* value) {
  return value;
}

enum class Table : std::uint8_t { kMethods, kSharedMethods, kProperties };

// The function of the record with that declaration, or of the only one with that name; aborts the test where
// there is none, or where several have the name.
void* FunctionOf(Table table, std::string_view className, std::string_view declaration);

template <typename Result, typename... Arguments>
Result CallFunction(void* function, Arguments&&... arguments) {
  using Function = Result (*)(decltype(Pass(arguments))...);
  return Call(reinterpret_cast<Function>(function), Pass(arguments)...);
}

template <typename Result, typename... Arguments>
Result CallMethod(std::string_view className, std::string_view declaration, Arguments&&... arguments) {
  return CallFunction<Result>(FunctionOf(Table::kMethods, className, declaration), arguments...);
}

template <typename Result, typename... Arguments>
Result CallShared(std::string_view className, std::string_view declaration, Arguments&&... arguments) {
  return CallFunction<Result>(FunctionOf(Table::kSharedMethods, className, declaration), arguments...);
}

// Reads a property; the parameter word is ignored by every getter, so it is rubbish.
template <typename Result, typename Self>
Result GetProperty(std::string_view className, std::string_view name, Self&& self) {
  return CallFunction<Result>(FunctionOf(Table::kProperties, className, name), self,
                              std::int32_t{-559038737});
}

// Whether the floating-point stack is empty, as it must be between calls.
bool FloatingPointStackIsEmpty();

// Calls REALPluginMain as a host of that version, and forgets the events of the start.
void Start(long double version);

}  // namespace scripted
