// libcocoa/colours/exported_handles.m - which objects have been handed out as Core Graphics handles.
#import "libcocoa/colours/exported_handles.h"

#import <Foundation/Foundation.h>
#include <pthread.h>

// No message is sent while it is held (see "Locks" in docs/platform.md): the table's functions send none.
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static NSHashTable* handles;  // addresses, not retained; made once

static void MakeTable(void) {
  if (__atomic_load_n(&handles, __ATOMIC_ACQUIRE)) return;
  NSHashTable* none = nil;
  NSHashTable* made = NSCreateHashTable(NSNonOwnedPointerHashCallBacks, 16);
  if (!__atomic_compare_exchange_n(&handles, &none, made, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
    NSFreeHashTable(made);  // another thread was first
}

void QVXExportHandle(id object) {
  MakeTable();
  pthread_mutex_lock(&lock);
  NSHashInsert(handles, object);
  pthread_mutex_unlock(&lock);
}

void QVXForgetHandle(id object) {
  if (!__atomic_load_n(&handles, __ATOMIC_ACQUIRE)) return;
  pthread_mutex_lock(&lock);
  NSHashRemove(handles, object);
  pthread_mutex_unlock(&lock);
}

BOOL QVXIsLiveHandle(const void* handle) {
  if (!__atomic_load_n(&handles, __ATOMIC_ACQUIRE)) return NO;
  pthread_mutex_lock(&lock);
  BOOL live = NSHashGet(handles, handle) != NULL;
  pthread_mutex_unlock(&lock);
  return live;
}
