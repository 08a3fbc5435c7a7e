// tests/bundle/faults/inputs.cpp - representative arguments for every kind of parameter.
#include "tests/bundle/faults/inputs.h"

#include <cstring>
#include <limits>

#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/native_object.h"
#include "tests/bundle/scripted/platform.h"

namespace faults {
namespace {

using scripted::HostObject;
using scripted::NativeObject;
using scripted::TheHost;

// The functions that try again in calibrated RGB when a colour has no RGB components of its own.
bool RetriesInRGB(const Target& target) {
  if (target.className != "NSColorQVX") return false;
  if (target.name == "colorValue") return true;
  return (target.name == "getRGB" || target.name == "getHSV") && target.parameters.size() == 5;
}

const char* HostClass(Kind kind) {
  switch (kind) {
    case Kind::kColor:
      return "NSColorQVX";
    case Kind::kColorList:
      return "NSColorListQVX";
    case Kind::kColorSpace:
      return "NSColorSpaceQVX";
    default:
      return "NSImageQVX";
  }
}

const char* NativeClass(Kind kind) {
  switch (kind) {
    case Kind::kColor:
      return "NSColor";
    case Kind::kColorList:
      return "NSColorList";
    case Kind::kColorSpace:
      return "NSColorSpace";
    default:
      return "NSImage";
  }
}

// An instance that holds `native`, whose only reference it is.
void* Instance(const char* hostClass, const char* nativeClass, bool cached, Arguments& arguments) {
  HostObject& object = TheHost().NewObject(hostClass);
  if (nativeClass != nullptr) {
    NativeObject* const native = scripted::Owned(scripted::MakeNative(nativeClass));
    object.SetNative(native);
    if (cached) scripted::ThePlatform().instances->entries[native] = object.Handle();
  }
  arguments.objects.push_back(object.Handle());
  return object.Handle();
}

void* PutInstance(const Parameter& parameter, const std::string& value, bool cached, Arguments& arguments) {
  if (value == "nil") return nullptr;
  const char* const hostClass = HostClass(parameter.kind);
  if (value == "empty") return Instance(hostClass, nullptr, cached, arguments);
  if (value == "wrong kind") {
    return Instance(hostClass, parameter.kind == Kind::kColor ? "NSColorList" : "NSColor", cached, arguments);
  }
  void* const instance = Instance(hostClass, NativeClass(parameter.kind), cached, arguments);
  if (value == "grey") {
    const NativeObject* const grey = TheHost().Object(instance).Native();
    NativeObject* const exception = scripted::MakeException("NSNoRGBComponents");
    scripted::ThePlatform().On("getRed:green:blue:alpha:", [=](scripted::Send& send) {
      if (send.Receiver() == grey) return send.Raise(exception);
      for (std::size_t i = 0; i < 4; ++i) send.Output(i, 0.5F);
    });
  }
  return instance;
}

void* PutVariant(const std::string& value, bool cached, Arguments& arguments) {
  if (value == "nil") return nullptr;
  if (value == "wrong kind") return Instance("NSColorQVX", "NSColor", cached, arguments);
  void* const image =
      TheHost().NewForeign("NSImageQVX", value == "empty" ? nullptr : scripted::MakeNative("NSImage"));
  TheHost().Adopt(image);
  arguments.objects.push_back(image);
  return image;
}

void* PutString(const std::string& value, Arguments& arguments) {
  if (value == "nil") return nullptr;
  qvx::REALstring string = nullptr;
  if (value == "filled") string = TheHost().NewString("calibrated");
  if (value == "empty") string = TheHost().NewString("");
  if (value == "utf-16") string = TheHost().NewString({"a\0b\0", 4}, qvx::kEncodingUTF16);
  if (value == "refused") string = TheHost().NewString("\xFF\xFE\x80", qvx::kEncodingUTF8);
  if (value == "unknown encoding") string = TheHost().NewString("plain", qvx::kEncodingUnknown);
  arguments.strings.push_back(string);
  return string;
}

void* PutBlock(const std::string& value, Arguments& arguments) {
  if (value == "nil") return nullptr;
  HostObject& block =
      TheHost().NewBlock(value == "empty" ? std::vector<std::uint8_t>() : std::vector<std::uint8_t>{1, 2, 3});
  block.hasPointer = value != "without pointer";
  block.claims = value == "negative";
  block.claimedSize = -3;
  arguments.objects.push_back(block.Handle());
  return block.Handle();
}

void* PutItem(const std::string& value, Arguments& arguments) {
  if (value == "nil") return nullptr;
  HostObject& item = value == "existing"        ? TheHost().NewItem("/profiles/a.icc", "/profiles", u"a.icc")
                     : value == "not yet there" ? TheHost().NewItem("", "/profiles", u"\u00E9.icc")
                     : value == "nameless"      ? TheHost().NewItem("", "/profiles", u"")
                     : value == "no such file"  ? TheHost().NewItem("", "/profiles", u"b.icc")
                                                : TheHost().NewItem("", "", u"");
  arguments.objects.push_back(item.Handle());
  return item.Handle();
}

void* PutNumbers(const std::string& value, Arguments& arguments) {
  if (value == "nil") return nullptr;
  const std::size_t count = value == "three" ? 3 : value == "one" ? 1 : value == "20" ? 20 : 21;
  HostObject& array = TheHost().NewNumbers(std::vector<double>(value == "none" ? 0 : count, 0.25));
  arguments.objects.push_back(array.Handle());
  return array.Handle();
}

std::int32_t IntegerOf(const std::string& value) {
  return value == "usual" ? 2 : value == "negative" ? -1 : 0;
}

double DoubleOf(const std::string& value) {
  if (value == "huge") return 1e300;
  return value == "not a number" ? std::numeric_limits<double>::quiet_NaN() : 0.5;
}

void PushWord(Arguments& arguments, std::uint32_t word) {
  arguments.stack.words[arguments.count++] = word;
}

void PushPointer(Arguments& arguments, const void* pointer) {
  PushWord(arguments, static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer)));
}

void Push(const Parameter& parameter, const std::string& value, bool cached, Arguments& arguments) {
  switch (parameter.kind) {
    case Kind::kColor:
    case Kind::kColorList:
    case Kind::kColorSpace:
      return PushPointer(arguments, PutInstance(parameter, value, cached, arguments));
    case Kind::kVariant:
      return PushPointer(arguments, PutVariant(value, cached, arguments));
    case Kind::kString:
      return PushPointer(arguments, PutString(value, arguments));
    case Kind::kBlock:
      return PushPointer(arguments, PutBlock(value, arguments));
    case Kind::kItem:
      return PushPointer(arguments, PutItem(value, arguments));
    case Kind::kNumbers:
      return PushPointer(arguments, PutNumbers(value, arguments));
    case Kind::kInteger:
      return PushWord(arguments, static_cast<std::uint32_t>(IntegerOf(value)));
    case Kind::kParameter:
      return PushWord(arguments, 0xDEADBEEFU);
    case Kind::kDouble: {
      const double number = DoubleOf(value);
      std::memcpy(&arguments.stack.words[arguments.count], &number, sizeof number);
      arguments.count += 2;
      return;
    }
    case Kind::kOutput:
      arguments.outputs[arguments.outputCount] = kUntouched;
      return PushPointer(arguments, &arguments.outputs[arguments.outputCount++]);
  }
}

}  // namespace

std::vector<std::string> ValueNames(const Target& target, const Parameter& parameter) {
  switch (parameter.kind) {
    case Kind::kColor:
    case Kind::kColorList:
    case Kind::kColorSpace:
      // The host makes and destroys instances of its own classes only, and never nil.
      if (target.role == Role::kConstructor) return {"empty"};
      if (parameter.name == "self" && RetriesInRGB(target)) {
        return {"filled", "empty", "nil", "wrong kind", "grey"};
      }
      return {"filled", "empty", "nil", "wrong kind"};
    case Kind::kVariant:
      return {"filled", "empty", "nil", "wrong kind"};
    case Kind::kString:
      return {"filled", "empty", "nil", "utf-16", "refused", "unknown encoding"};
    case Kind::kBlock:
      return {"filled", "empty", "nil", "without pointer", "negative"};
    case Kind::kItem:
      return {"existing", "not yet there", "nil", "nameless", "no such file", "unknown place"};
    case Kind::kNumbers:
      return {"three", "none", "nil", "one", "20", "21"};
    case Kind::kInteger:
      return {"usual", "zero", "negative"};
    case Kind::kDouble:
      return {"usual", "not a number", "huge"};
    case Kind::kOutput:
    case Kind::kParameter:
      break;
  }
  return {"-"};
}

std::vector<Choice> Choices(const Target& target) {
  const Choice usual(target.parameters.size(), 0);
  std::vector<Choice> all{usual};
  bool doublesVaried = false;  // one of them stands for all: they are converted alike
  for (std::size_t i = 0; i < usual.size(); ++i) {
    if (target.parameters[i].kind == Kind::kDouble) {
      if (doublesVaried) continue;
      doublesVaried = true;
    }
    const std::size_t values = ValueNames(target, target.parameters[i]).size();
    for (std::size_t value = 1; value < values; ++value) {
      Choice choice = usual;
      choice[i] = value;
      all.push_back(std::move(choice));
    }
  }
  return all;
}

std::string Describe(const Target& target, const Choice& choice) {
  std::string text;
  for (std::size_t i = 0; i < choice.size(); ++i) {
    const Parameter& parameter = target.parameters[i];
    if (parameter.kind == Kind::kOutput || parameter.kind == Kind::kParameter) continue;
    text += (text.empty() ? "" : ",") + parameter.name + "=" + ValueNames(target, parameter)[choice[i]];
  }
  return text.empty() ? "none" : text;
}

void MakeArguments(const Target& target, const Choice& choice, bool cached, Arguments& arguments) {
  for (std::size_t i = 0; i < choice.size(); ++i) {
    const Parameter& parameter = target.parameters[i];
    Push(parameter, ValueNames(target, parameter)[choice[i]], cached, arguments);
  }
  if (target.role != Role::kSharedMethod && target.role != Role::kEntry) {
    arguments.self = reinterpret_cast<void*>(static_cast<std::uintptr_t>(arguments.stack.words[0]));
  }
}

void Arguments::Release() {
  for (void* const object : objects) TheHost().Unlock(object);
  for (void* const string : strings) TheHost().UnlockString(string);
  objects.clear();
  strings.clear();
}

}  // namespace faults
