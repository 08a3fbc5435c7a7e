// libcocoa/runtime/host_support.h - what a host process needs around its calls into a bundle.
//
// Plain C that stands alone: a host may link the library, or look the functions up after
// dlopen("libcocoa.so", RTLD_NOW | RTLD_GLOBAL). Nothing here raises.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// A new autorelease pool for this thread. Pools are popped in the opposite order, on the thread that pushed
// them.
void* objc_autoreleasePoolPush(void);
void objc_autoreleasePoolPop(void* pool);
// Releases what was autoreleased in `pool` and leaves it pushed, for a fraction of what a pop and a push
// cost. No other pool may be pushed inside of it.
void QVXEmptyPool(void* pool);

// Switches the counting of live Objective-C objects on or off. Objects made before that are unknown, and
// freeing one of them makes the number of its class smaller.
void QVXCountInstances(unsigned char on);

// Counted instances of the class and of every class below it; 0 for NULL and for a name that is no class.
long QVXLiveInstances(const char* className);

#ifdef __cplusplus
}
#endif
