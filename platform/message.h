// platform/message.h - typed message sends; selectors and classes are looked up once and kept.
#pragma once

#include <algorithm>
#include <type_traits>

#include "platform/cocoa.h"

namespace qvx {

// A text that can be a template argument.
template <std::size_t Size>
struct FixedString {
  char text[Size];
  consteval FixedString(const char (&source)[Size]) { std::copy_n(source, Size, text); }  // NOLINT: implicit
};

// A message with the exact type of its method: Message<"insertColor:key:atIndex:", void(id, id, NSUInteger)>.
// Calling it sends it; a nil receiver answers 0 or 0.0, and so does a selector that the platform can't
// register.
template <FixedString Selector, typename Signature>
class Message;

template <FixedString Selector, typename Result, typename... Arguments>
class Message<Selector, Result(Arguments...)> {
 public:
  Result operator()(id receiver, Arguments... arguments) const {
    SEL selector = selector_;
    if (selector == nullptr) [[unlikely]] {
      selector = selector_ = sel_registerName(Selector.text);
      if (selector == nullptr) return Result();
    }
    using Method = Result (*)(id, SEL, Arguments...);
    if constexpr (std::is_floating_point_v<Result>) {
      return reinterpret_cast<Method>(&objc_msgSend_fpret)(receiver, selector, arguments...);
    } else {
      return reinterpret_cast<Method>(&objc_msgSend)(receiver, selector, arguments...);
    }
  }

  // For passing the selector itself to the platform.
  static SEL Get() {
    if (selector_ == nullptr) selector_ = sel_registerName(Selector.text);
    return selector_;
  }

 private:
  inline static constinit SEL selector_ = nullptr;
};

// The class object, or nil while the platform has no such class.
template <FixedString Name>
id PlatformClass() {
  static constinit id found = nullptr;
  if (found == nullptr) [[unlikely]]
    found = reinterpret_cast<id>(objc_getClass(Name.text));
  return found;
}

}  // namespace qvx
