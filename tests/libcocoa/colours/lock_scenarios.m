// tests/libcocoa/colours/lock_scenarios.m - every lock that is taken is given back, and none that was not.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <pthread.h>

#import "tests/libcocoa/colours/scenario.h"

// What the watched thread holds, each lock as often as it has it.
enum { kMostHeld = 100 };
static _Thread_local BOOL isWatched;
static const void* held[kMostHeld];
static int heldCount, takenCount, unheldCount;

static void Taken(const void* lock) {
  if (!isWatched) return;
  ++takenCount;
  if (heldCount < kMostHeld) held[heldCount++] = lock;
}

static void GivenBack(const void* lock) {
  if (!isWatched) return;
  int i = heldCount - 1;
  while (i >= 0 && held[i] != lock) --i;
  if (i < 0)
    ++unheldCount;
  else
    held[i] = held[--heldCount];
}

// Take the place of the C library's own, which they call.
#define WATCHED(name, type, note)                                                        \
  int name(type* lock) {                                                                 \
    static int (*own)(type*);                                                            \
    if (!__atomic_load_n(&own, __ATOMIC_ACQUIRE))                                        \
      __atomic_store_n(&own, (int (*)(type*))dlsym(RTLD_NEXT, #name), __ATOMIC_RELEASE); \
    int result = own(lock);                                                              \
    if (result == 0) note(lock);                                                         \
    return result;                                                                       \
  }
WATCHED(pthread_mutex_lock, pthread_mutex_t, Taken)
WATCHED(pthread_mutex_trylock, pthread_mutex_t, Taken)
WATCHED(pthread_mutex_unlock, pthread_mutex_t, GivenBack)
WATCHED(pthread_rwlock_rdlock, pthread_rwlock_t, Taken)
WATCHED(pthread_rwlock_wrlock, pthread_rwlock_t, Taken)
WATCHED(pthread_rwlock_unlock, pthread_rwlock_t, GivenBack)

// What becomes of the locks that the function takes.
static NSString* LocksOf(void (*use)(void)) {
  isWatched = YES;
  use();
  isWatched = NO;
  return [NSString stringWithFormat:@"some were taken: %@, still held: %d, given back unheld: %d",
                                    YesNo(takenCount > 0), heldCount, unheldCount];
}

#define BALANCED "some were taken: yes, still held: 0, given back unheld: 0"

// The first of a process: its profile is made.
static void UseBuiltIn(void) {
  [[NSColorSpace adobeRGB1998ColorSpace] ICCProfileData];
}

SCENARIO("the locks around a profile that the library makes are given back", "", BALANCED) {
  return LocksOf(UseBuiltIn);
}

static void UseProfiles(void) {
  NSColorSpace* space = [[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"a98.icc")];
  NSColorSpace* twin = [[NSColorSpace alloc] initWithICCProfileData:ProfileNamed(@"a98.icc")];
  [[[NSColorSpace alloc] initWithColorSyncProfile:[space colorSyncProfile]] release];
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [[NSColor redColor] colorUsingColorSpace:space];
  [pool release];
  [twin release];
  [space release];
}

SCENARIO("the locks around profiles and transforms are given back", "", BALANCED) {
  UseProfiles();
  return LocksOf(UseProfiles);
}

static void UseHandles(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  [NSColor colorWithCGColor:[[NSColor colorWithDeviceWhite:0.5 alpha:1] CGColor]];
  [pool release];
}

SCENARIO("the locks around handles are given back", "", BALANCED) {
  return LocksOf(UseHandles);
}

static void UseLists(void) {
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  NSColorList* list = [[[NSColorList alloc] initWithName:@"Mine"] autorelease];
  [list writeToFile:nil];
  [NSColorList availableColorLists];
  [list removeFile];
  [NSColorList availableColorLists];
  [pool release];
}

SCENARIO("the locks around lists that are written and removed are given back", "", BALANCED) {
  return LocksOf(UseLists);
}
