// hostrun/commands/messages.cpp - platform messages as texts, from their words on the stack.
#include "hostrun/commands/messages.h"

#include <cctype>
#include <cstring>
#include <vector>

#include "hostrun/host/functions.h"
#include "hostrun/host/platform_library.h"

namespace hostrun {
namespace {

// The functions of the Objective-C run-time that look something up without sending a message.
struct Runtime {
  const char* (*className)(const void* cls) = nullptr;
  unsigned char (*isMetaClass)(const void* cls) = nullptr;
  const char* (*selectorName)(const void* selector) = nullptr;
  const void* (*instanceMethod)(const void* cls, const void* selector) = nullptr;
  const char* (*typeEncoding)(const void* method) = nullptr;

  bool Complete() const {
    return className != nullptr && isMetaClass != nullptr && selectorName != nullptr &&
           instanceMethod != nullptr && typeEncoding != nullptr;
  }
};

template <class F>
void Find(F& function, const char* name) {
  function = reinterpret_cast<F>(GlobalSymbol(name));
}

const Runtime& TheRuntime() {
  static const Runtime runtime = [] {
    Runtime found;
    Find(found.className, "class_getName");
    Find(found.isMetaClass, "class_isMetaClass");
    Find(found.selectorName, "sel_getName");
    Find(found.instanceMethod, "class_getInstanceMethod");
    Find(found.typeEncoding, "method_getTypeEncoding");
    return found;
  }();
  return runtime;
}

const void* Pointer(std::uint32_t word) {
  return reinterpret_cast<const void*>(word);
}

// The first word of an object is its class.
const void* ClassOfObject(std::uint32_t object) {
  return *static_cast<const void* const*>(Pointer(object));
}

template <class T>
T Read(const std::uint32_t* words, std::size_t offset) {
  T value;
  std::memcpy(&value, reinterpret_cast<const char*>(words) + offset, sizeof value);
  return value;
}

// One type in a method's encoding, such as "f8": its code, and its offset on the stack.
struct EncodedType {
  char kind = 0;
  std::size_t offset = 0;
};

// "const", "in", "out" and the like, before a type or before what a pointer points at.
bool IsQualifier(char code) {
  return code != 0 && std::strchr("rnNoORV", code) != nullptr;
}

// Takes a type with its place from the front of `encoding`.
EncodedType TakeType(const char*& encoding) {
  while (IsQualifier(*encoding)) ++encoding;
  EncodedType type;
  type.kind = *encoding;
  int depth = 0;
  do {
    if (*encoding == '{' || *encoding == '(' || *encoding == '[') ++depth;
    if (*encoding == '}' || *encoding == ')' || *encoding == ']') --depth;
    if (*encoding != 0) ++encoding;
  } while (*encoding != 0 &&
           (depth > 0 || encoding[-1] == '^' || IsQualifier(encoding[-1]) || *encoding == '?'));
  if (*encoding == '+') ++encoding;  // of a register
  while (std::isdigit(static_cast<unsigned char>(*encoding)) != 0) {
    type.offset = type.offset * 10 + static_cast<std::size_t>(*encoding++ - '0');
  }
  return type;
}

std::string ArgumentText(const std::uint32_t* words, const EncodedType& type) {
  switch (type.kind) {
    case '@':
    case '#':
      return PlatformObjectText(Read<std::uint32_t>(words, type.offset));
    case ':': {
      const void* const selector = Pointer(Read<std::uint32_t>(words, type.offset));
      return selector == nullptr ? "nil" : "@" + std::string(TheRuntime().selectorName(selector));
    }
    case 'f':
      return NumberText(static_cast<double>(Read<float>(words, type.offset)), 7);
    case 'd':
      return NumberText(Read<double>(words, type.offset), 15);
    case 'c':
      return std::to_string(Read<std::int8_t>(words, type.offset));
    case 'C':
    case 'B':
      return std::to_string(Read<std::uint8_t>(words, type.offset));
    case 's':
      return std::to_string(Read<std::int16_t>(words, type.offset));
    case 'S':
      return std::to_string(Read<std::uint16_t>(words, type.offset));
    case 'i':
    case 'l':
      return std::to_string(Read<std::int32_t>(words, type.offset));
    case 'I':
    case 'L':
      return std::to_string(Read<std::uint32_t>(words, type.offset));
    case 'q':
      return std::to_string(Read<std::int64_t>(words, type.offset));
    case 'Q':
      return std::to_string(Read<std::uint64_t>(words, type.offset));
    case '^':
    case '*':
      return Read<std::uint32_t>(words, type.offset) == 0 ? "null" : "a pointer";
    default:
      return "...";
  }
}

// "name: argument name: argument", as far as the method's encoding tells.
std::string SelectorText(const std::uint32_t* words, const void* cls) {
  std::string name = TheRuntime().selectorName(Pointer(words[1]));
  const void* const method = TheRuntime().instanceMethod(cls, Pointer(words[1]));
  if (method == nullptr || name.find(':') == std::string::npos) return name;
  const char* encoding = TheRuntime().typeEncoding(method);
  if (encoding == nullptr) return name;
  for (int i = 0; i < 3; ++i) TakeType(encoding);  // result, receiver, selector
  std::string text;
  for (const char c : name) {
    if (!text.empty() && text.back() != ':' && c != ':' && text.ends_with('\x01')) text.back() = ' ';
    text += c;
    if (c == ':') text += ' ' + (*encoding == 0 ? "..." : ArgumentText(words, TakeType(encoding))) + '\x01';
  }
  if (text.ends_with('\x01')) text.pop_back();
  return text;
}

}  // namespace

std::string PlatformObjectText(std::uint32_t object) {
  if (object == 0) return "nil";
  if (!TheRuntime().Complete()) return "an object";
  const void* const cls = ClassOfObject(object);
  if (TheRuntime().isMetaClass(cls) != 0) return TheRuntime().className(Pointer(object));
  return "<" + std::string(TheRuntime().className(cls)) + ">";
}

std::string MessageText(const std::uint32_t* words) {
  if (!TheRuntime().Complete()) return "a message";
  if (words[0] == 0) return "[nil " + std::string(TheRuntime().selectorName(Pointer(words[1]))) + "]";
  const void* const cls = ClassOfObject(words[0]);
  const bool toClass = TheRuntime().isMetaClass(cls) != 0;
  const void* const named = toClass ? Pointer(words[0]) : cls;
  return std::string(toClass ? "+[" : "-[") + TheRuntime().className(named) + " " + SelectorText(words, cls) +
         "]";
}

}  // namespace hostrun
