// bundle/bridge/guard.h - the native-exception guard: no platform exception of class NSException crosses into
// the host.
//
// Guard with `Guarded`, which answers what its body answers; use `GuardedFill` instead where a result that is
// set before an exception must reach the host all the same.
//
// A platform exception arrives by a jump into EnterFrame. Everything that must survive the jump lives in
// memory: what the body captures by reference, in the frames of EnterFrame's callers; its Holdings and the
// result that it fills, in EnterFrame's own, where Shared keeps them out of registers. What the guard
// deliberately does not catch: platform objects thrown that are no NSException, and C++ exceptions; both go
// on unchanged.
#pragma once

#include <array>
#include <bit>
#include <tuple>
#include <type_traits>

#include "bundle/bridge/exceptions.h"
#include "bundle/bridge/holdings.h"

namespace qvx {

// What becomes of an NSException after its delivery: it is raised as a host exception, or dropped.
enum class OnNSException { kRaise, kDrop };

// The state of a body that keeps none.
struct Nothing {};

// For the compiler, the memory of `state` is anybody's from here on: whatever is called may read and change
// it. So it holds at each call what it should, and is read again after the jump.
template <typename State>
void Shared(State& state) {
  if constexpr (!std::is_empty_v<State>) asm volatile("" : : "r"(&state) : "memory");
}

// A body goes to EnterFrame in words, each an argument of its own: where they are the arguments that the host
// has passed, nothing is copied. One object would be copied several words at once, and such a copy, with all
// that comes behind it, waits until each word has been written. A double waits for its two words too: bodies
// capture CGFloats.
template <typename Body>
using WordsOf = std::array<std::uintptr_t, sizeof(Body) / sizeof(std::uintptr_t)>;
template <typename Body, typename... Words>
Body OfWords(Words... words) {
  return std::bit_cast<Body>(WordsOf<Body>{words...});
}
// A body that captures nothing is less than a word.
template <typename Body>
Body OfWords(Body body) {
  return body;
}

// Leaves an exception frame at the end of its scope, normally or while a C++ exception unwinds, and then lets
// the body give back what it still holds. A delivered exception jumps over it, as it must: the platform has
// left that frame already.
template <typename Body, typename State>
class FrameExit {
 public:
  FrameExit(ObjCExceptionFrame& frame, Body& body, State& state)
      : frame_(frame), body_(body), state_(state) {}
  FrameExit(const FrameExit&) = delete;
  FrameExit& operator=(const FrameExit&) = delete;
  ~FrameExit() {
    objc_exception_try_exit(&frame_);
    body_.Left(state_);
  }

 private:
  ObjCExceptionFrame& frame_;
  Body& body_;
  State& state_;
};

// InFrame, below, for a body that comes in words. Never inlined: the function that _setjmp belongs to holds
// nothing that changes before the delivery but the shared state. The host may enter the bundle on any 4-byte
// aligned stack; from here on it is aligned to 16 bytes. The callers' is not: they leave nothing to do while
// a C++ exception unwinds.
template <typename Body, typename... Words>
[[gnu::noinline, gnu::force_align_arg_pointer]] auto EnterFrame(Words... words) {
  Body body = OfWords<Body>(words...);
  typename Body::State state;
  Shared(state);
  body.Begin(state);
  ObjCExceptionFrame frame;
  objc_exception_try_enter(&frame);
  if (_setjmp(frame.buffer) == 0) {
    const FrameExit exit(frame, body, state);
    return body.Run(state);
  }
  return body.Ended(objc_exception_extract(&frame), state);
}

// Runs `body.Run(state)` inside an exception frame, with a state that `body.Begin(state)` has set, and
// answers what that answers or, after a delivered exception, what `body.Ended(exception, state)` answers.
template <typename Body>
auto InFrame(const Body& body) {
  if constexpr (sizeof(Body) < sizeof(std::uintptr_t)) {
    return EnterFrame<Body>(body);
  } else {
    const auto words = std::bit_cast<WordsOf<Body>>(body);
    return std::apply([](auto... each) { return EnterFrame<Body>(each...); }, words);
  }
}

// The end of a body that a delivered exception has left: gives back what it held, then raises or drops an
// NSException. Anything else, and what is thrown while the host exception is raised, is passed on; what was
// `kept` for the caller, who gets nothing then, is given back first. Both lists may be null.
void EndDelivered(id exception, OnNSException then, Holdings* held, Holdings* kept);

// The same for a body without holdings.
void EndDropped(id exception);
void EndRaised(id exception);

// What is done before the frame is entered, if anything. What it throws passes the guard by; a result that is
// to be filled must not be a handle then, as nothing holds it yet.
using Preparation = void (*)();
inline void PrepareNothing() {}

// What InFrame runs for Guarded: a body alone, or with its holdings.
template <OnNSException then, Preparation prepare, typename Body>
struct GuardedBody {
  Body body;

  using State = Nothing;

  void Begin(Nothing&) { prepare(); }
  auto Run(Nothing&) { return body(); }
  void Left(Nothing&) {}
  auto Ended(id exception, Nothing&) {
    if constexpr (then == OnNSException::kDrop) {
      EndDropped(exception);
    } else {
      EndRaised(exception);
    }
    return std::invoke_result_t<Body&>();
  }
};
template <OnNSException then, Preparation prepare, typename Body>
struct GuardedHoldingBody {
  Body body;

  using State = Holdings;

  void Begin(Holdings&) { prepare(); }
  auto Run(Holdings& holdings) { return body(holdings); }
  void Left(Holdings& holdings) {
    if (holdings.Count() > 0) [[unlikely]]
      holdings.GiveBackWhileUnwinding();
  }
  auto Ended(id exception, Holdings& holdings) {
    EndDelivered(exception, then, &holdings, nullptr);
    return std::invoke_result_t<Body&, Holdings&>();
  }
};

// Guards a body, which takes nothing or its Holdings, and answers what it answers; the neutral value
// (nothing, 0, null) after an NSException.
template <OnNSException then = OnNSException::kRaise, Preparation prepare = &PrepareNothing, typename Body>
auto Guarded(Body body) {
  if constexpr (std::is_invocable_v<Body&, Holdings&>) {
    return InFrame(GuardedHoldingBody<then, prepare, Body>{body});
  } else {
    return InFrame(GuardedBody<then, prepare, Body>{body});
  }
}

// A handle that a guarded body fills, held where it stands until it is the caller's.
template <typename Handle>
struct FilledHandle {
  Handle* variable;
};
template <typename Handle>
void GiveBack(FilledHandle<Handle> filled) {
  if (*filled.variable != nullptr) GiveBack(*filled.variable);
}

// What InFrame runs for GuardedFill.
template <typename Result>
struct Filling {
  Result result;
  Holdings holdings;
  Holdings kept;
};
template <OnNSException then, Preparation prepare, typename Result, typename Body>
struct FillingBody {
  using Word = std::conditional_t<std::is_pointer_v<Result>, Result, std::uintptr_t>;

  Body body;
  Word first;

  using State = Filling<Result>;

  void Begin(Filling<Result>& filling) {
    prepare();
    filling.result = static_cast<Result>(first);
    if constexpr (std::is_pointer_v<Result>) filling.kept.Hold(FilledHandle<Result>{&filling.result});
  }
  Result Run(Filling<Result>& filling) {
    body(filling.result, filling.holdings);
    filling.kept.ForgetAll();
    return filling.result;
  }
  void Left(Filling<Result>& filling) {
    if (filling.holdings.Count() + filling.kept.Count() > 0) [[unlikely]] {
      filling.holdings.GiveBackWhileUnwinding();
      filling.kept.GiveBackWhileUnwinding();
    }
  }
  Result Ended(id exception, Filling<Result>& filling) {
    EndDelivered(exception, then, &filling.holdings, &filling.kept);
    return filling.result;
  }
};

// Guards a body, which takes the result, `result` until it sets another, and its Holdings; answers the result
// as it stands at the end, after an NSException too. A handle is an owned reference.
template <OnNSException then = OnNSException::kRaise, Preparation prepare = &PrepareNothing, typename Result,
          typename Body>
Result GuardedFill(Result result, Body body) {
  using Filler = FillingBody<then, prepare, Result, Body>;
  return InFrame(Filler{body, static_cast<typename Filler::Word>(result)});
}

}  // namespace qvx
