// tests/libcocoa/colours/watched_threads.m - what the library shares among threads, used by four at once, for
// a tool that watches the locks.
#define _GNU_SOURCE
#include <pthread.h>
#include <unistd.h>

#import "libcocoa/colours/NSColor+CoreGraphics.h"
#import "libcocoa/colours/NSColorSpace+Predefined.h"

enum { kThreads = 4, kRounds = 4 };

static NSData* firstProfile;
static pthread_barrier_t end;

// A profile with sRGB's colours by another maker: other transforms, made and forgotten among the rest.
static NSColorSpace* SpaceByMaker(int maker) {
  NSMutableData* profile = [NSMutableData dataWithData:firstProfile];
  ((unsigned char*)[profile mutableBytes])[48] = (unsigned char)(maker + 1);
  return [[[NSColorSpace alloc] initWithICCProfileData:profile] autorelease];
}

// Everything that has a lock or a table: spaces, profiles, transforms, handles, lists.
static void UseAll(int round) {
  NSColorSpace* space = SpaceByMaker(round);
  NSColor* color = [NSColor colorWithSRGBRed:0.25F green:0.5F blue:0.75F alpha:1];
  NSColor* there = [color colorUsingColorSpace:space];
  [there colorUsingColorSpace:[NSColorSpace adobeRGB1998ColorSpace]];
  [NSColor colorWithCGColor:[there CGColor]];
  [[NSColorSpace genericCMYKColorSpace] ICCProfileData];
  [NSColorList availableColorLists];
  [[NSColor controlColor] colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
}

static void* Work(void* unused) {
  for (int round = 0; round < kRounds; ++round) {
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    UseAll(round);
    [pool release];
  }
  pthread_barrier_wait(&end);
  // A thread that ends holds a lock of GNUstep's for a moment, which the end of the process could find held:
  // each waits here to end with it.
  pause();
  return unused;
}

int main(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  firstProfile = [[[NSColorSpace sRGBColorSpace] ICCProfileData] retain];
  // What is made once is published by atomics, which helgrind takes for plain stores: the first use by many
  // threads has a test of its own.
  UseAll(kRounds);
  pthread_barrier_init(&end, NULL, kThreads + 1);
  pthread_t thread;
  for (int i = 0; i < kThreads; ++i)
    if (pthread_create(&thread, NULL, Work, NULL) != 0) return 1;
  // Not joined: helgrind stops at a join of a thread that the Objective-C runtime has seen.
  pthread_barrier_wait(&end);
  [pool release];
  return 0;
}
