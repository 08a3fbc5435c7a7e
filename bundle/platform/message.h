// bundle/platform/message.h - typed message sends; selectors and classes are looked up once and kept.
#pragma once

#include <algorithm>
#include <type_traits>

#include "bundle/platform/cocoa.h"

namespace qvx {

// A text that can be a template argument.
template <std::size_t Size>
struct FixedString {
  char text[Size];
  consteval FixedString(const char (&source)[Size]) { std::copy_n(source, Size, text); }  // NOLINT: implicit
};

// A selector, looked up on first use and kept; null while the platform can't register it.
class Selector {
 public:
  constexpr explicit Selector(const char* name) : name_(name) {}
  SEL Get() { return found_ != nullptr ? found_ : Register(); }

 private:
  SEL Register();  // out of the way of every send

  const char* name_;
  SEL found_ = nullptr;
};

template <FixedString Name>
inline constinit Selector kSelector{Name.text};

// Sends a message whose method has exactly the type Result(id, SEL, Arguments...). A nil receiver answers 0
// or 0.0, and so does a selector that can't be registered. The arguments are read when the message goes out.
template <typename Result, typename... Arguments>
Result Send(id receiver, Selector& selector, const Arguments&... arguments) {
  const SEL registered = selector.Get();
  if (registered == nullptr) [[unlikely]]
    return Result();
  using Method = Result (*)(id, SEL, Arguments...);
  if constexpr (std::is_floating_point_v<Result>) {
    return reinterpret_cast<Method>(&objc_msgSend_fpret)(receiver, registered, arguments...);
  } else {
    return reinterpret_cast<Method>(&objc_msgSend)(receiver, registered, arguments...);
  }
}

// A message with the exact type of its method: Message<"insertColor:key:atIndex:", void(id, id, NSUInteger)>.
// Calling it sends it.
template <FixedString Name, typename Signature>
class Message;

template <FixedString Name, typename Result, typename... Arguments>
class Message<Name, Result(Arguments...)> {
 public:
  Result operator()(id receiver, const Arguments&... arguments) const {
    return Send<Result, Arguments...>(receiver, kSelector<Name>, arguments...);
  }
  // For passing the selector itself to the platform.
  static SEL Get() { return kSelector<Name>.Get(); }
};

// A class, looked up on first use and kept; nil while the platform has no such class.
class ClassSlot {
 public:
  constexpr explicit ClassSlot(const char* name) : name_(name) {}
  id Get() { return found_ != nullptr ? found_ : Find(); }

 private:
  id Find();

  const char* name_;
  id found_ = nullptr;
};

template <FixedString Name>
inline constinit ClassSlot kClass{Name.text};

template <FixedString Name>
id PlatformClass() {
  return kClass<Name>.Get();
}

}  // namespace qvx
