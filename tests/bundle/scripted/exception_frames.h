// tests/bundle/scripted/exception_frames.h - the scripted platform's exception frames and their balance.
#pragma once

#include <functional>

#include "tests/bundle/scripted/native_object.h"

namespace scripted {

struct FrameBalance {
  int entered = 0;
  int left = 0;
  int delivered = 0;
};

// The bundle's frames so far; the frames of PassedOn are not counted.
FrameBalance Frames();
// How many of the bundle's frames are open.
int OpenFrames();

// Raises: pops the innermost frame and jumps to it. Nothing with a destructor may be alive between it and
// here.
[[noreturn]] void Deliver(NativeObject* exception);

// Runs the body inside a frame of the test's own and answers what the bundle let through, or null.
NativeObject* PassedOn(const std::function<void()>& body);

// Forgets every frame and the balance.
void ForgetFrames();

}  // namespace scripted
