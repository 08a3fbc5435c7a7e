// libcocoa/colours/exported_handles.m - which objects have been handed out as Core Graphics handles.
#import "libcocoa/colours/exported_handles.h"

#import <Foundation/Foundation.h>
#include <pthread.h>

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static NSHashTable* handles;  // addresses, not retained

void QVXExportHandle(id object) {
  pthread_mutex_lock(&lock);
  if (!handles) {
    NSHashTable* made = NSCreateHashTable(NSNonOwnedPointerHashCallBacks, 16);
    __atomic_store_n(&handles, made, __ATOMIC_RELEASE);
  }
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
  if (!handle || !__atomic_load_n(&handles, __ATOMIC_ACQUIRE)) return NO;
  pthread_mutex_lock(&lock);
  BOOL live = NSHashGet(handles, handle) != NULL;
  pthread_mutex_unlock(&lock);
  return live;
}
