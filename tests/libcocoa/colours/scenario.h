// tests/libcocoa/colours/scenario.h - a behaviour of the colour classes, and what it is with and without
// libcocoa.
//
// A scenario is run in a process of its own, by a program linked with GNUstep alone and by one linked with
// this project's library too. It answers with a text; the programs add what a scenario can't say itself: that
// it raised.
#pragma once

#include <stddef.h>

#ifdef __OBJC__
#import "libcocoa/colours/NSColor+CoreGraphics.h"
#import "libcocoa/colours/NSColor+Named.h"
#import "libcocoa/colours/NSColorSpace+Predefined.h"
#import "libcocoa/colours/NSColorSpace+Profiles.h"
typedef NSString* (*ScenarioFunction)(void);

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
#else
typedef void* (*ScenarioFunction)(void);
#endif

typedef struct {
  const char* name;   // a sentence
  const char* plain;  // the answer of GNUstep alone; "" where that is not the same from run to run
  const char* here;   // the answer with libcocoa
  ScenarioFunction run;
} Scenario;

// The tables, each ended by an entry without a name.
extern const Scenario gnustepScenarios[];
extern const Scenario spaceScenarios[];
extern const Scenario inkScenarios[];
extern const Scenario profileScenarios[];
extern const Scenario conversionScenarios[];
extern const Scenario colourScenarios[];
extern const Scenario namedScenarios[];
extern const Scenario archiveScenarios[];
extern const Scenario pasteboardScenarios[];
extern const Scenario listScenarios[];
extern const Scenario listFileScenarios[];
extern const Scenario folderScenarios[];
extern const Scenario exchangeScenarios[];
