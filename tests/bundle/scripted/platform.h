// tests/bundle/scripted/platform.h - the scripted platform: answers every message, and does to order what no
// real one does.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/bundle/scripted/event_log.h"
#include "tests/bundle/scripted/native_object.h"

namespace scripted {

// One message on its way. Arguments are read by position; the answer is written by Answer.
class Send {
 public:
  Send(NativeObject* receiver, std::string selector, const std::uint32_t* arguments)
      : receiver_(receiver), selector_(std::move(selector)), arguments_(arguments) {}

  [[nodiscard]] NativeObject* Receiver() const { return receiver_; }
  [[nodiscard]] const std::string& Selector() const { return selector_; }

  [[nodiscard]] std::uint32_t Word(std::size_t position) const { return arguments_[position]; }
  [[nodiscard]] float Float(std::size_t position) const;
  [[nodiscard]] void* Pointer(std::size_t position) const;
  [[nodiscard]] NativeObject* Object(std::size_t position) const { return Native(Pointer(position)); }
  // Writes through an output argument; an output that the sender left out is skipped.
  void Output(std::size_t position, float value) const;

  void Answer(const NativeObject* object) {
    word = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(object));
  }
  void Answer(std::nullptr_t) { word = 0; }
  void Answer(float value) { number = value; }
  void Answer(std::uint32_t value) { word = value; }
  void Answer(std::int32_t value) { word = static_cast<std::uint32_t>(value); }
  void Answer(bool value) { word = value ? 1 : 0; }
  void Raise(NativeObject* exception) { raised = exception; }
  // Delivers nil, as no platform does on purpose.
  void RaiseNil() { raisesNil = true; }

  std::uint32_t word = 0;
  float number = 0;
  NativeObject* raised = nullptr;
  bool raisesNil = false;

 private:
  NativeObject* receiver_;
  std::string selector_;
  const std::uint32_t* arguments_;
};

using Selectors = std::set<std::string, std::less<>>;
using Behaviour = std::function<void(Send&)>;

// A method's types: the result, then the arguments.
//   @ object   f CGFloat   i integer   I unsigned integer   c BOOL   v nothing
//   p pointer to CGFloat, may be null   h opaque handle   : selector   * bytes
struct MethodTypes {
  std::string_view className;
  bool onClass;
  std::string_view selector;
  std::string_view types;
};

// The declared methods of every class that the bundle may talk to.
const std::vector<MethodTypes>& DeclaredMethods();

class Platform {
 public:
  // Every later send of the selector does this.
  void On(std::string_view selector, Behaviour behaviour);
  // Only the next send; several calls queue up.
  void Once(std::string_view selector, Behaviour behaviour);

  // Shorthands.
  template <typename Value>
  void Answer(std::string_view selector, Value value) {
    On(selector, [value](Send& send) { send.Answer(value); });
  }
  template <typename Value>
  void AnswerOnce(std::string_view selector, Value value) {
    Once(selector, [value](Send& send) { send.Answer(value); });
  }
  void Raise(std::string_view selector, NativeObject* exception);
  void RaiseOnce(std::string_view selector, NativeObject* exception);
  // Every later send of one of the selectors, which outlive the platform, unless it has a behaviour of its
  // own.
  void RaiseEach(const Selectors& selectors, NativeObject* exception);

  // The sibling part: class methods on NSException. All three present unless forgotten.
  void ForgetSibling();
  void Forget(std::string_view selector) { siblingMethods.erase(std::string(selector)); }
  void Learn(std::string_view selector) { siblingMethods.emplace(selector); }

  // Carries out a message; what it raises is in the result.
  void Dispatch(Send& send, bool viaFpret);

  // What colours and spaces answer unless a behaviour says otherwise.
  std::vector<float> components{0.25F, 0.5F, 0.75F, 1.0F};
  std::map<std::string, std::int32_t, std::less<>> integers;
  std::map<std::string, bool, std::less<>> booleans;
  std::map<std::string, std::vector<std::uint8_t>, std::less<>> files;  // by path
  std::set<std::string, std::less<>> siblingMethods{"GetInstancesDictionaryQVX", "PrepareNSExceptionQVX",
                                                    "NewNSExceptionQVX:"};
  NativeObject* instances = MakeDictionary("instances");

  // A message that the receiver has no method for raises, as on a real platform; otherwise it is a violation.
  bool unknownMessagesRaise = false;

  // What the C functions do.
  bool failCreateWithCharacters = false;
  bool failMutableCopy = false;
  bool failGetCString = false;
  bool failURLFromRef = false;
  bool failAppend = false;
  bool failPath = false;

 private:
  void DefaultAnswer(Send& send, const MethodTypes& method);
  bool AnswerRootClass(Send& send);
  bool AnswerFoundation(Send& send);
  NativeObject* Shared(std::string_view className, std::string_view name);

  std::map<std::string, Behaviour, std::less<>> behaviours_;
  std::map<std::string, std::deque<Behaviour>, std::less<>> once_;
  std::map<std::string, NativeObject*, std::less<>> shared_;
  const Selectors* raising_ = nullptr;
  NativeObject* raised_ = nullptr;
};

Platform& ThePlatform();

}  // namespace scripted
