// tests/bundle/scripted/platform.cpp - the scripted platform: checks every message against the declared types
// and answers it.
#include "tests/bundle/scripted/platform.h"

#include <bit>
#include <cstring>

#include "tests/bundle/scripted/host.h"
#include "tests/bundle/scripted/text.h"

namespace scripted {
namespace {

const MethodTypes* Declared(const NativeObject& receiver, std::string_view selector) {
  for (const MethodTypes& method : DeclaredMethods()) {
    const bool fits = method.className == receiver.className ||
                      (method.className == "NSObject" && method.onClass == receiver.isClass);
    if (fits && method.onClass == receiver.isClass && method.selector == selector) return &method;
  }
  return nullptr;
}

const MethodTypes* DeclaredAnywhere(std::string_view selector) {
  for (const MethodTypes& method : DeclaredMethods()) {
    if (method.selector == selector) return &method;
  }
  return nullptr;
}

std::string DescribeArgument(const Send& send, std::size_t position, char type) {
  switch (type) {
    case 'f':
      return Number(send.Float(position));
    case 'i':
      return std::to_string(static_cast<std::int32_t>(send.Word(position)));
    case 'I':
      return std::to_string(send.Word(position));
    case 'p':
      return send.Word(position) == 0 ? "null" : "out";
    case '*':
      return send.Word(position) == 0 ? "null" : "bytes";
    case 'h':
      return IsNative(send.Pointer(position)) ? Describe(send.Pointer(position))
                                              : Hexadecimal(send.Word(position));
    case ':':
      return "@selector(" + SelectorName(static_cast<SEL>(send.Pointer(position))) + ")";
    default:
      return Describe(send.Pointer(position));
  }
}

std::string DescribeMessage(const Send& send, const MethodTypes& method) {
  std::string text = "[" + Describe(send.Receiver());
  const std::string& selector = send.Selector();
  std::size_t start = 0;
  for (std::size_t i = 1; i < method.types.size(); ++i) {
    const std::size_t colon = selector.find(':', start);
    text += " " + selector.substr(start, colon + 1 - start) + DescribeArgument(send, i - 1, method.types[i]);
    start = colon + 1;
  }
  if (method.types.size() == 1) text += " " + selector;
  return text + "]";
}

void CheckArguments(const Send& send, const MethodTypes& method, const std::string& text) {
  for (std::size_t i = 1; i < method.types.size(); ++i) {
    const void* const pointer = send.Pointer(i - 1);
    if (method.types[i] == '@' && pointer != nullptr) {
      if (!IsNative(pointer)) {
        Log().Violation(text + ": argument " + std::to_string(i) + " wanted an object, found " +
                        Describe(pointer));
      } else if (Native(pointer)->freed) {
        Log().Violation(text + ": argument " + std::to_string(i) + " is an object that was freed");
      }
    }
  }
}

bool IsInitialiser(std::string_view selector) {
  return selector.starts_with("initWith");
}

}  // namespace

Platform& ThePlatform() {
  static auto* const platform = new Platform;
  return *platform;
}

float Send::Float(std::size_t position) const {
  return std::bit_cast<float>(arguments_[position]);
}

void* Send::Pointer(std::size_t position) const {
  return reinterpret_cast<void*>(static_cast<std::uintptr_t>(arguments_[position]));
}

void Send::Output(std::size_t position, float value) const {
  if (auto* const place = static_cast<float*>(Pointer(position)); place != nullptr) *place = value;
}

void Platform::On(std::string_view selector, Behaviour behaviour) {
  behaviours_[std::string(selector)] = std::move(behaviour);
}

void Platform::Once(std::string_view selector, Behaviour behaviour) {
  once_[std::string(selector)].push_back(std::move(behaviour));
}

void Platform::Raise(std::string_view selector, NativeObject* exception) {
  On(selector, [exception](Send& send) { send.Raise(exception); });
}

void Platform::RaiseOnce(std::string_view selector, NativeObject* exception) {
  Once(selector, [exception](Send& send) { send.Raise(exception); });
}

void Platform::RaiseEach(const Selectors& selectors, NativeObject* exception) {
  raising_ = &selectors;
  raised_ = exception;
}

void Platform::ForgetSibling() {
  siblingMethods.clear();
}

NativeObject* Platform::Shared(std::string_view className, std::string_view name) {
  NativeObject*& place = shared_[std::string(name)];
  if (place == nullptr) place = MakeNative(className, name);
  return place;
}

void Platform::Dispatch(Send& send, bool viaFpret) {
  NativeObject* const receiver = send.Receiver();
  const MethodTypes* const method =
      receiver == nullptr ? DeclaredAnywhere(send.Selector()) : Declared(*receiver, send.Selector());
  if (method == nullptr) {
    const std::string text = "[" + Describe(receiver) + " " + send.Selector() + "]";
    const Fault fault = Log().Record(EventKind::kMessage, send.Selector(), text);
    if (!unknownMessagesRaise) {
      Log().Violation(text + ": the receiver has no such method");
    } else if (fault == Fault::kRaiseOther) {
      send.Raise(MakeNative("OtherThrowable"));
    } else if (fault == Fault::kRaiseNSException) {
      send.Raise(MakeException());
    } else if (fault != Fault::kNull) {
      send.Raise(MakeException("NSInvalidArgumentException", "unrecognized selector"));
    }
    return;
  }
  const std::string text = DescribeMessage(send, *method);
  const Fault fault = Log().Record(EventKind::kMessage, send.Selector(), text);
  const char result = method->types[0];
  if (viaFpret != (result == 'f')) {
    Log().Violation(text +
                    (viaFpret ? ": sent for a number on the floating-point stack, the result is in a register"
                              : ": the result is on the floating-point stack, sent for one in a register"));
  }
  CheckArguments(send, *method, text);
  if (receiver == nullptr) return;
  if (receiver->freed) {
    Log().Violation(text + ": the receiver was freed");
    return;
  }
  if (fault == Fault::kRaiseNSException) {
    send.Raise(MakeException());
  } else if (fault == Fault::kRaiseOther) {
    send.Raise(MakeNative("OtherThrowable"));
  } else if (fault != Fault::kNull || result == 'v') {
    if (auto queue = once_.find(send.Selector()); queue != once_.end() && !queue->second.empty()) {
      const Behaviour behaviour = std::move(queue->second.front());
      queue->second.pop_front();
      behaviour(send);
    } else if (auto found = behaviours_.find(send.Selector()); found != behaviours_.end()) {
      found->second(send);
    } else if (raising_ != nullptr && raising_->contains(send.Selector())) {
      send.Raise(raised_);
    } else {
      DefaultAnswer(send, *method);
    }
  }
  // An initialiser consumes its receiver unless it answers it.
  if (IsInitialiser(send.Selector()) &&
      (send.raised != nullptr ||
       send.word != static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(receiver)))) {
    GiveReference(receiver, send.Selector());
  }
  if (result == 'c') send.word = 0xC0FFEE00U | (send.word & 0xFFU);
  if (result == 'v') send.word = 0xDEADBEEFU;
}

bool Platform::AnswerRootClass(Send& send) {
  NativeObject* const receiver = send.Receiver();
  const std::string& selector = send.Selector();
  if (selector == "retain") {
    ++receiver->retains;
    TakeReference(receiver);
    send.Answer(receiver);
  } else if (selector == "release") {
    ++receiver->releases;
    GiveReference(receiver, "release");
  } else if (selector == "autorelease") {
    ++receiver->autoreleases;
    MoveReferenceToPool(receiver);
    send.Answer(receiver);
  } else if (selector == "respondsToSelector:") {
    send.Answer(siblingMethods.contains(SelectorName(static_cast<SEL>(send.Pointer(0)))));
  } else if (selector == "alloc") {
    send.Answer(Owned(MakeNative(receiver->className)));
  } else if (IsInitialiser(selector)) {
    send.Answer(receiver);
  } else {
    return false;
  }
  return true;
}

bool Platform::AnswerFoundation(Send& send) {
  NativeObject* const receiver = send.Receiver();
  const std::string& selector = send.Selector();
  if (selector == "GetInstancesDictionaryQVX") {
    send.Answer(instances);
  } else if (selector == "NewNSExceptionQVX:") {
    send.word = static_cast<std::uint32_t>(
        reinterpret_cast<std::uintptr_t>(TheHost().NewForeign("NSExceptionQVX", send.Object(0))));
  } else if (receiver->className == "NSException" && selector == "name") {
    send.Answer(receiver->items[0]);
  } else if (receiver->className == "NSException" && selector == "reason") {
    send.Answer(receiver->items[1]);
  } else if (receiver->className == "NSException" && selector == "userInfo") {
    send.Answer(receiver->items[2]);
  } else if (selector == "dataWithBytes:length:") {
    const auto* const bytes = static_cast<const std::uint8_t*>(send.Pointer(0));
    send.Answer(Autoreleased(MakeData(std::vector<std::uint8_t>(bytes, bytes + send.Word(1)))));
  } else if (selector == "dataWithContentsOfFile:") {
    const auto found = files.find(ToUTF8(send.Object(0) == nullptr ? u"" : send.Object(0)->text));
    if (found != files.end()) send.Answer(Autoreleased(MakeData(found->second)));
  } else if (selector == "bytes") {
    send.word = receiver->bytes.empty()
                    ? 0
                    : static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(receiver->bytes.data()));
  } else if (selector == "length") {
    send.Answer(receiver->claims ? receiver->claimedLength
                                 : static_cast<std::uint32_t>(receiver->bytes.size()));
  } else if (selector == "objectEnumerator") {
    NativeObject* const enumerator = Autoreleased(MakeNative("NSEnumerator"));
    enumerator->items = receiver->items;
    send.Answer(enumerator);
  } else if (selector == "nextObject") {
    if (receiver->items.empty()) return true;
    send.Answer(receiver->items.front());
    receiver->items.erase(receiver->items.begin());
  } else {
    return false;
  }
  return true;
}

void Platform::DefaultAnswer(Send& send, const MethodTypes& method) {
  if (AnswerRootClass(send) || AnswerFoundation(send)) return;
  const std::string& selector = send.Selector();
  const std::string& className = send.Receiver()->className;
  switch (method.types[0]) {
    case 'f':
      send.Answer(0.5F);
      break;
    case 'i':
    case 'I':
    case 'h':
      if (const auto found = integers.find(selector); found != integers.end()) {
        send.Answer(found->second);
      } else if (selector == "numberOfComponents") {
        send.Answer(static_cast<std::int32_t>(components.size()));
      } else {
        send.Answer(4096);
      }
      break;
    case 'c':
      if (const auto found = booleans.find(selector); found != booleans.end()) {
        send.Answer(found->second);
      } else {
        send.Answer(true);
      }
      break;
    case 'v':
      if (selector == "getComponents:") {
        if (auto* const place = static_cast<float*>(send.Pointer(0)); place != nullptr) {
          std::memcpy(place, components.data(), components.size() * sizeof(float));
        }
      } else if (method.types[1 % method.types.size()] == 'p') {
        for (std::size_t i = 0; i + 1 < method.types.size() && i < components.size(); ++i) {
          send.Output(i, components[i]);
        }
      }
      break;
    case '@':
      if (selector == "generalPasteboard") {
        send.Answer(Shared("NSPasteboard", selector));
      } else if (method.onClass && method.types.size() == 1) {
        send.Answer(Shared(className, selector));
      } else if (selector == "availableColorSpacesWithModel:") {
        send.Answer(Autoreleased(MakeNative("NSArray")));
      } else if (method.onClass) {
        send.Answer(Autoreleased(MakeNative(className)));
      } else if (selector.starts_with("colorWith") || selector.starts_with("colorUsing") ||
                 selector.ends_with("WithLevel:") || selector.starts_with("blended")) {
        send.Answer(Autoreleased(MakeNative("NSColor")));
      } else if (selector == "colorSpace") {
        send.Answer(Shared("NSColorSpace", send.Receiver()->name + ".colorSpace"));
      } else if (selector == "patternImage") {
        send.Answer(Shared("NSImage", send.Receiver()->name + ".patternImage"));
      } else if (selector == "ICCProfileData") {
        send.Answer(Autoreleased(MakeData({1, 2, 3, 4})));
      } else {
        send.Answer(Autoreleased(MakeText(selector)));
      }
      break;
    default:
      break;
  }
}

}  // namespace scripted
