// tests/libcocoa/paths.h - functions of other languages for an exception to pass through.
#pragma once

#include "bundle/platform/cocoa.h"

extern "C" {

using Body = void (*)(void* context);

// Each calls body(context) and counts in `*ran` what ran of its own afterwards.
void ThroughFinally(Body, void* context, int* ran);
void ThroughFinallyWithoutReturn(Body, void* context, int* ran);  // the body never returns
void ThroughTwoFinallys(Body, void* context, int* ran);
void ThroughSynchronized(Body, void* context, id lock);
void ThroughUnrelatedCatch(Body, void* context, int* ran);  // its @catch takes strings only
void ThroughFinallyThatThrows(Body, void* context, id thrown);
void ThroughFinallyThatThrowsAndCatches(Body, void* context, int* ran);
void ThroughFinallyCalling(Body, void* context, Body cleanUp, void* cleanUpContext);
int ThroughFinallyThatReturns(Body, void* context);  // the exception ends there; returns 7
void ThroughPlainC(Body, void* context);             // has no unwind tables
// Has none either. Enters a frame, leaves it, and enters it again without _setjmp; 1 if that is delivered to.
int InAReenteredPlainFrame(Body, void* context);

// Answers what its @catch (NSException *) took, nil for nothing.
id ThroughCatch(Body, void* context);
// Takes the exception and throws it again; `*ran` counts.
void ThroughRethrow(Body, void* context, int* ran);

// A setjmp frame in a function that has nothing to clean up. Answers what was delivered, nil for nothing.
id GuardedInC(Body, void* context);

// The same inside of a @try with a @finally, which counts in `*ran`; what that was on delivery.
id GuardedInFinally(Body, void* context, int* ran, int* ranAtDelivery);

id NewException(const char* name, const char* reason);  // autoreleased
void Raise(id exception);                               // -[NSException raise]
bool IsUnlocked(id lock);                               // asked on another thread
id NewRootObject();                                     // of a class that has nothing but an isa
}
