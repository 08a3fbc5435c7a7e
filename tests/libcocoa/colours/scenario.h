// tests/libcocoa/colours/scenario.h - a behaviour of the colour classes, and what it is with and without
// libcocoa.
//
// A scenario is run in a process of its own, by a program linked with GNUstep alone and by one linked with
// this project's library too. It answers with a text; the programs add what a scenario can't say itself: that
// it raised.
#pragma once

#import "libcocoa/colours/NSColor+CoreGraphics.h"
#import "libcocoa/colours/NSColor+System.h"
#import "libcocoa/colours/NSColorSpace+Predefined.h"
#import "libcocoa/colours/NSColorSpace+Profiles.h"

typedef struct Scenario {
  const char* name;   // a sentence
  const char* plain;  // the answer of GNUstep alone; "" where that is not the same from run to run
  const char* here;   // the answer with libcocoa
  NSString* (*run)(void);
  struct Scenario* next;
} Scenario;

// Adds a scenario of static storage to those of the program.
void AddScenario(Scenario* scenario);

// Defines a scenario and adds it before main: SCENARIO(name, plain, here) { return its answer; }
#define SCENARIO(name, plain, here) SCENARIO_COUNTED(__COUNTER__, name, plain, here)
#define SCENARIO_COUNTED(count, name, plain, here) SCENARIO_NUMBERED(count, name, plain, here)
#define SCENARIO_NUMBERED(number, name, plain, here)                      \
  static NSString* Answer##number(void);                                  \
  __attribute__((constructor)) static void Add##number(void) {            \
    static Scenario scenario = {name, plain, here, Answer##number, NULL}; \
    AddScenario(&scenario);                                               \
  }                                                                       \
  static NSString* Answer##number(void)

// --- helpers, in scenario.m

// "a, b, c"
NSString* Joined(NSArray* parts);
NSString* YesNo(BOOL value);

// The components with three decimals and the space's name, or "nil".
NSString* Shown(NSColor* color);

// What the block of code raises: the exception's name, or "nothing".
#define RAISED(code)                     \
  ({                                     \
    NSString* raised = @"nothing";       \
    @try {                               \
      code;                              \
    } @catch (NSException * exception) { \
      raised = [exception name];         \
    }                                    \
    raised;                              \
  })

// A path in the scenario's own folder, which is empty at first.
NSString* InScratch(NSString* name);

// The folders of the user's and the system's colour lists, below the scenario's own folder; made if need be.
NSString* UserColours(void);
NSString* SystemColours(void);

NSData* ProfileNamed(NSString* fileName);  // of the installed free profiles
NSData* InkProfile(unsigned inks);         // made by ink_profile.h
NSColor* Pattern(void);

// A colour that is archived as one of a kind that no reader knows.
NSColor* Unheard(void);

// A list's keys and colours, and a list to write: what another program is asked for.
NSString* ListAsText(NSString* path);
BOOL WriteStockList(NSString* path);

// Runs the function in a child process, so that this one has not touched a colour yet.
void InChild(void (*function)(void));
