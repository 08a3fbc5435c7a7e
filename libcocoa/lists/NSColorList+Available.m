// libcocoa/lists/NSColorList+Available.m - the lists that a program finds by name, and the one that it may
// not edit.
//
// GNUstep fills its table of lists while it initialises NSColor, with its lock held, and puts what it reads
// into an array: one unreadable file there would crash every program of the user. So while the table is
// filled, a file that is no list gives an empty list, which is then hidden here.
#import "libcocoa/lists/NSColorList+Available.h"

#include <pthread.h>
#include <stdlib.h>

#import "libcocoa/runtime/stock_methods.h"

static NSString* const kSystem = @"System";

typedef struct {
  NSColorList** lists;
  size_t count, room;
} ListTable;

static _Thread_local int loading;      // depth of loading on this thread
static _Thread_local int maintaining;  // depth of GNUstep's own work on the system's colours on this thread

// Guards the two tables below; no message is sent while it is held (see "Locks" in docs/platform.md).
static pthread_mutex_t tableLock = PTHREAD_MUTEX_INITIALIZER;
static ListTable hidden;   // lists that are not shown; not retained
static ListTable written;  // lists that this program wrote into a folder of lists, in order; retained

// The place of the list, or the number of lists.
static size_t Place(const ListTable* table, NSColorList* list) {
  size_t place = 0;
  while (place < table->count && table->lists[place] != list) ++place;
  return place;
}

// NO if it is there already.
static BOOL Add(ListTable* table, NSColorList* list) {
  if (Place(table, list) < table->count) return NO;
  if (table->count == table->room) {
    size_t room = table->room ? 2 * table->room : 8;
    NSColorList** lists = realloc(table->lists, room * sizeof *lists);
    if (!lists) return NO;
    table->lists = lists;
    table->room = room;
  }
  table->lists[table->count++] = list;
  return YES;
}

// NO if it is not there.
static BOOL Remove(ListTable* table, NSColorList* list) {
  size_t place = Place(table, list);
  if (place == table->count) return NO;
  --table->count;
  for (; place < table->count; ++place) table->lists[place] = table->lists[place + 1];
  return YES;
}

BOOL QVXIsLoadingLists(void) {
  return loading > 0;
}

void QVXHideList(NSColorList* list) {
  pthread_mutex_lock(&tableLock);
  Add(&hidden, list);
  BOOL wasWritten = Remove(&written, list);
  pthread_mutex_unlock(&tableLock);
  if (wasWritten) [list autorelease];
}

void QVXMakeListAvailable(NSColorList* list) {
  [list retain];
  pthread_mutex_lock(&tableLock);
  Remove(&hidden, list);
  BOOL isNew = Add(&written, list);
  pthread_mutex_unlock(&tableLock);
  if (!isNew) [list release];
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

BOOL QVXIsFillingSystemList(void) {
  return maintaining > 0;
}

BOOL QVXIsSystemList(NSColorList* list) {
  if (![kSystem isEqual:[list name]]) return NO;
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

// GNUstep locks its table of lists and then uses NSColor; NSColor's +initialize, which runs under the
// runtime's lock, asks for that table. So NSColor is started before the table is asked for.
static void StartColors(void) {
  [NSColor class];
}

@implementation NSColorList (QVXAvailable)

static BOOL IsHidden(NSColorList* list) {
  pthread_mutex_lock(&tableLock);
  BOOL found = Place(&hidden, list) < hidden.count;
  pthread_mutex_unlock(&tableLock);
  return found;
}

static NSArray* WrittenLists(void) {
  pthread_mutex_lock(&tableLock);
  size_t count = written.count;
  NSColorList** copy = malloc(count * sizeof *copy);
  if (!copy) count = 0;
  for (size_t i = 0; i < count; ++i) {
    copy[i] = written.lists[i];
    NSIncrementExtraRefCount(copy[i]);  // -retain without a message
  }
  pthread_mutex_unlock(&tableLock);
  NSArray* lists = [NSArray arrayWithObjects:copy count:count];
  for (size_t i = 0; i < count; ++i) [copy[i] release];
  free(copy);
  return lists;
}

// GNUstep's lists without the hidden ones, and with those that were written since. A list that was written
// takes the place of one that GNUstep read from the same file.
static NSArray* Visible(NSArray* stock) {
  NSMutableArray* lists = [NSMutableArray array];
  NSArray* newer = WrittenLists();
  for (NSColorList* list in stock) {
    BOOL shown = !IsHidden(list);
    for (NSColorList* each in newer)
      if (each != list && [each->_fullFileName isEqual:list->_fullFileName]) shown = NO;
    if (shown) [lists addObject:list];
  }
  for (NSColorList* list in newer)
    if ([lists indexOfObjectIdenticalTo:list] == NSNotFound) [lists addObject:list];
  return lists;
}

+ (NSArray*)availableColorLists {
  static QVXMethod stock;
  StartColors();
  NSArray* lists = ((id(*)(id, SEL))QVXStockClassMethod("NSColorList", _cmd, &stock))(self, _cmd);
  BOOL areAll =
      __atomic_load_n(&hidden.count, __ATOMIC_ACQUIRE) + __atomic_load_n(&written.count, __ATOMIC_ACQUIRE) ==
      0;
  return areAll ? lists : Visible(lists);
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
  StartColors();
  ++loading;
  @try {
    ((void (*)(id, SEL, id))load)(self, _cmd, notification);
  } @finally {
    --loading;
  }
}

+ (void)_setThemeSystemColorList:(NSColorList*)list {
  static QVXMethod stock;
  StartColors();
  ((void (*)(id, SEL, id))QVXStockClassMethod("NSColorList", _cmd, &stock))(self, _cmd, list);
}

// A list made later may get this address: it must not be hidden.
- (void)dealloc {
  static QVXMethod stock;
  pthread_mutex_lock(&tableLock);
  Remove(&hidden, self);
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
