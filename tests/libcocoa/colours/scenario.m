// tests/libcocoa/colours/scenario.m - the program that runs one scenario, by its number, and its helpers.
#import "tests/libcocoa/colours/scenario.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/libcocoa/colours/ink_profile.h"

// Seconds after which a scenario hangs.
enum { kPatience = 20 };

NSString* Joined(NSArray* parts) {
  return [parts componentsJoinedByString:@", "];
}
NSString* YesNo(BOOL value) {
  return value ? @"yes" : @"no";
}

NSString* Shown(NSColor* color) {
  if (!color) return @"nil";
  NSMutableString* text = [NSMutableString string];
  CGFloat components[32];
  [color getComponents:components];
  for (NSInteger i = 0; i < [color numberOfComponents]; i++)
    [text appendFormat:@"%.3f ", (double)components[i]];
  NSString* kind = [[color colorSpaceName] stringByReplacingOccurrencesOfString:@"ColorSpace" withString:@""];
  [text appendString:[kind hasPrefix:@"NS"] ? [kind substringFromIndex:2] : kind];
  if ([kind isEqual:@"NSCustom"]) [text appendFormat:@" %@", [[color colorSpace] localizedName]];
  return text;
}

static NSString* Environment(const char* name) {
  const char* value = getenv(name);
  if (!value) {
    fprintf(stderr,
            "scenario: wanted %s in the environment, found nothing; run me through colour_behaviour_test\n",
            name);
    exit(2);
  }
  return [NSString stringWithUTF8String:value];
}

static NSString* Made(NSString* folder) {
  [[NSFileManager defaultManager] createDirectoryAtPath:folder
                            withIntermediateDirectories:YES
                                             attributes:nil
                                                  error:NULL];
  return folder;
}

NSString* InScratch(NSString* name) {
  return [Made([Environment("QVX_SCENARIO_FOLDER") stringByAppendingPathComponent:@"Scratch"])
      stringByAppendingPathComponent:name];
}

NSString* UserColours(void) {
  return Made([Environment("QVX_SCENARIO_FOLDER") stringByAppendingPathComponent:@"User/Colors"]);
}

NSString* SystemColours(void) {
  return Made([Environment("QVX_SCENARIO_FOLDER") stringByAppendingPathComponent:@"System/Colors"]);
}

NSData* ProfileNamed(NSString* fileName) {
  NSData* data =
      [NSData dataWithContentsOfFile:[Environment("QVX_ICC_FOLDER") stringByAppendingPathComponent:fileName]];
  if (!data)
    [NSException raise:@"NoSuchProfile" format:@"wanted the profile %@ below QVX_ICC_FOLDER", fileName];
  return data;
}

NSData* InkProfile(unsigned inks) {
  size_t size = 0;
  void* bytes = MakeInkProfile(inks, &size);
  if (!bytes) [NSException raise:@"NoSuchProfile" format:@"wanted a profile of %u inks, found none", inks];
  return [NSData dataWithBytesNoCopy:bytes length:size freeWhenDone:YES];
}

NSColor* Pattern(void) {
  NSImage* image = [[[NSImage alloc] initWithSize:NSMakeSize(2, 2)] autorelease];
  return [NSColor colorWithPatternImage:image];
}

@interface UnheardColor : NSColor
@end

@implementation UnheardColor
- (Class)classForCoder {
  return [NSColor class];
}
- (void)encodeWithCoder:(NSCoder*)coder {
  [coder encodeObject:@"UnheardOfColorSpace"];
}
@end

NSColor* Unheard(void) {
  return [[UnheardColor new] autorelease];
}

void InChild(void (*function)(void)) {
  pid_t child = fork();
  if (child == 0) {
    @try {
      function();
    } @catch (NSException* exception) {
      _exit(1);
    }
    _exit(0);
  }
  int status = 1;
  waitpid(child, &status, 0);
  if (status != 0)
    [NSException raise:@"ChildFailed" format:@"the child process ended with status %d", status];
}

static const Scenario* Find(const char* wanted) {
  static const Scenario* const tables[] = {
      gnustepScenarios,  inkScenarios,    spaceScenarios,   profileScenarios,    conversionScenarios,
      colourScenarios,   namedScenarios,  archiveScenarios, pasteboardScenarios, listScenarios,
      listFileScenarios, folderScenarios, exchangeScenarios};
  for (size_t i = 0; i < sizeof tables / sizeof *tables; i++)
    for (const Scenario* each = tables[i]; each->name; each++) {
      if (!wanted)
        printf("%s\n%s\n%s\n", each->name, each->plain, each->here);
      else if (strcmp(each->name, wanted) == 0)
        return each;
    }
  return NULL;
}

static NSString* Read(const void* path) {
  return ListAsText([NSString stringWithUTF8String:path]);
}
static NSString* Write(const void* path) {
  return YesNo(WriteStockList([NSString stringWithUTF8String:path]));
}
static NSString* Ask(const void* scenario) {
  return ((const Scenario*)scenario)->run();
}

// Prints the answer, or what was raised.
static int Run(NSString* (*function)(const void*), const void* argument) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSString* answer;
  @try {
    answer = function(argument);
  } @catch (NSException* exception) {
    answer = [@"raises " stringByAppendingString:[exception name]];
  }
  printf("%s\n", [answer UTF8String]);
  fflush(stdout);
  [pool release];
  return 0;
}

// In the child: its own folder takes what it prints, and a hanging scenario is ended by the alarm.
static int RunApart(const char* name) {
  const Scenario* scenario = Find(name);
  const char* folder = getenv("QVX_SCENARIO_FOLDER");
  if (!scenario || !folder || chdir(folder) != 0 || !freopen("output", "w", stdout) ||
      !freopen("errors", "w", stderr) || !freopen("/dev/null", "r", stdin))
    return 2;
  alarm(kPatience);
  return Run(Ask, scenario);
}

// Runs each scenario whose name is read in a child process, and answers with the child's status. No message
// has been sent in this process, so each child is as new as a process of its own.
static int Serve(void) {
  char name[1024];
  while (fgets(name, sizeof name, stdin)) {
    name[strcspn(name, "\n")] = 0;
    pid_t child = fork();
    if (child == 0) exit(RunApart(name));
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child) return 2;
    printf("%d\n", status);
    fflush(stdout);
  }
  return 0;
}

// Without an argument: every scenario's name and its two expected answers, a line each. With "serve": see
// above. With "read" or "write" and a path: what the exchange scenarios ask of the program with GNUstep
// alone. With a name: its answer.
int main(int argc, char** argv) {
  if (argc > 1 && strcmp(argv[1], "serve") == 0) return Serve();
  if (argc > 2 && strcmp(argv[1], "read") == 0) return Run(Read, argv[2]);
  if (argc > 2 && strcmp(argv[1], "write") == 0) return Run(Write, argv[2]);
  const Scenario* scenario = Find(argc > 1 ? argv[1] : NULL);
  if (argc < 2) return 0;
  if (!scenario) {
    fprintf(stderr,
            "scenario: wanted a scenario's name, found \"%s\"; start me without arguments for a list\n",
            argv[1]);
    return 2;
  }
  return Run(Ask, scenario);
}
