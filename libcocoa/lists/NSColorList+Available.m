// libcocoa/lists/NSColorList+Available.m - the lists that a program finds by name, and the one that it may
// not edit.
//
// GNUstep fills its table of lists while it initialises NSColor, with its lock held, and puts what it reads
// into an array: one unreadable file there would crash every program of the user. So while the table is
// filled, a file that is no list gives an empty list, which is then hidden here.
#import "libcocoa/lists/NSColorList+Available.h"

#include <pthread.h>

#import "libcocoa/runtime/stock_methods.h"

static NSString* const kSystem = @"System";

static _Thread_local int loading;      // depth of loading on this thread
static _Thread_local int maintaining;  // depth of GNUstep's own work on the system's colours on this thread

// Guards the two tables below. While it is held, collections are only asked for what they do by address.
static pthread_mutex_t tableLock = PTHREAD_MUTEX_INITIALIZER;
static NSHashTable* hidden;      // lists that are not shown; addresses, not retained
static NSMutableArray* written;  // lists that this program wrote into a folder of lists; retained

BOOL QVXIsLoadingLists(void) {
  return loading > 0;
}

void QVXHideList(NSColorList* list) {
  pthread_mutex_lock(&tableLock);
  if (!hidden) hidden = NSCreateHashTable(NSNonOwnedPointerHashCallBacks, 4);
  NSHashInsert(hidden, list);
  [[list retain] autorelease];
  [written removeObjectIdenticalTo:list];
  pthread_mutex_unlock(&tableLock);
}

void QVXMakeListAvailable(NSColorList* list) {
  pthread_mutex_lock(&tableLock);
  if (!written) written = [NSMutableArray new];
  if (hidden) NSHashRemove(hidden, list);
  if ([written indexOfObjectIdenticalTo:list] == NSNotFound) [written addObject:list];
  pthread_mutex_unlock(&tableLock);
}

NSString* QVXUserColorFolder(void) {
  NSArray* found = NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES);
  return [found count] ? [[found objectAtIndex:0] stringByAppendingPathComponent:@"Colors"] : nil;
}

NSArray* QVXColorFolders(void) {
  NSMutableArray* folders = [NSMutableArray array];
  for (NSString* library in NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSAllDomainsMask, YES))
    [folders addObject:[library stringByAppendingPathComponent:@"Colors"]];
  return folders;
}

BOOL QVXIsSystemList(NSColorList* list) {
  if (maintaining > 0 || ![kSystem isEqual:[list name]]) return NO;
  return [[NSColorList availableColorLists] indexOfObjectIdenticalTo:list] != NSNotFound;
}

// Runs GNUstep's own work on the system's colours, which edits their list.
static void Maintain(QVXMethod stock, id self, SEL selector, id argument) {
  ++maintaining;
  @try {
    ((void (*)(id, SEL, id))stock)(self, selector, argument);
  } @finally {
    --maintaining;
  }
}

@implementation NSColorList (QVXAvailable)

// GNUstep's lists without the hidden ones, and with those that were written since. A list that was written
// takes the place of one that GNUstep read from the same file.
static NSArray* Visible(NSArray* stock) {
  NSMutableArray* lists = [NSMutableArray array];
  pthread_mutex_lock(&tableLock);
  for (NSColorList* list in stock) {
    BOOL shown = !hidden || !NSHashGet(hidden, list);
    for (NSColorList* newer in written)
      if (newer != list && [newer->_fullFileName isEqual:list->_fullFileName]) shown = NO;
    if (shown) [lists addObject:list];
  }
  for (NSColorList* list in written)
    if ([lists indexOfObjectIdenticalTo:list] == NSNotFound) [lists addObject:list];
  pthread_mutex_unlock(&tableLock);
  return lists;
}

+ (NSArray*)availableColorLists {
  static QVXMethod stock;
  NSArray* lists = ((id(*)(id, SEL))QVXStockClassMethod("NSColorList", _cmd, &stock))(self, _cmd);
  BOOL plain = !__atomic_load_n(&hidden, __ATOMIC_ACQUIRE) && !__atomic_load_n(&written, __ATOMIC_ACQUIRE);
  return plain ? lists : Visible(lists);
}

+ (NSColorList*)colorListNamed:(NSString*)name {
  if (!name) return nil;
  for (NSColorList* list in [self availableColorLists])
    if ([[list name] isEqual:name]) return list;
  return nil;
}

+ (void)_loadAvailableColorLists:(NSNotification*)notification {
  static QVXMethod stock;
  QVXMethod load = QVXStockClassMethod("NSColorList", _cmd, &stock);
  ++loading;
  @try {
    ((void (*)(id, SEL, id))load)(self, _cmd, notification);
  } @finally {
    --loading;
  }
}

// A list made later may get this address: it must not be hidden.
- (void)dealloc {
  static QVXMethod stock;
  pthread_mutex_lock(&tableLock);
  if (hidden) NSHashRemove(hidden, self);
  pthread_mutex_unlock(&tableLock);
  ((void (*)(id, SEL))QVXStockMethod("NSColorList", _cmd, &stock))(self, _cmd);
  return;
  [super dealloc];  // never reached: GNUstep's own does it
}

@end

@implementation NSColor (QVXMaintenance)

+ (void)initialize {
  static QVXMethod stock;
  Maintain(QVXStockClassMethod("NSColor", _cmd, &stock), self, _cmd, nil);
}

+ (void)defaultsDidChange:(NSNotification*)notification {
  static QVXMethod stock;
  Maintain(QVXStockClassMethod("NSColor", _cmd, &stock), self, _cmd, notification);
}

+ (void)themeDidActivate:(NSNotification*)notification {
  static QVXMethod stock;
  Maintain(QVXStockClassMethod("NSColor", _cmd, &stock), self, _cmd, notification);
}

@end
