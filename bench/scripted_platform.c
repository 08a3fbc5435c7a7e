// bench/scripted_platform.c - the platform's symbols at the least cost that gives right answers.
//
// So that what the bundle adds stands out: every object is one struct, every selector has one method for all
// classes, nothing is checked. Made objects are kept for reuse; nothing is allocated once the benchmarks run.
#include <setjmp.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#define EXPORT __attribute__((visibility("default")))

typedef struct object* id;
typedef const struct selector* SEL;

struct object {
  struct object* class;
  int32_t references;
  float components[5];
  id text;            // a name, a description
  const void* bytes;  // a string's or data's
  long length;        // bytes
  id next;            // while it waits for reuse
  bool owns_bytes;
  bool owns_text;
};

struct selector {
  const char* name;
  void (*method)(void);
};

enum { kPoolSize = 4096, kMostSelectors = 128 };

static struct object colour_class, space_class, list_class, data_class, exception_class, other_class;
static struct object shared_colour = {&colour_class, 1,    {0.25f, 0.5f, 0.75f, 1, 1}, NULL, NULL, 0, NULL,
                                      false,         false};
static struct object grey_colour = {&colour_class, 1, {0.5f, 1}, NULL, NULL, 0, NULL, false, false};
static struct object a_name = {&other_class, 1,    {0},   NULL, "NSCalibratedRGBColorSpace",
                               25,           NULL, false, false};
static struct object shared_space = {&space_class, 1, {0}, &a_name, NULL, 0, NULL, false, false};
static struct object an_exception = {&exception_class, 1, {0}, &a_name, NULL, 0, NULL, false, false};

EXPORT id const NSCalibratedRGBColorSpace = &a_name;

// ---- Objects ----

static id reusable;

static id new_object(struct object* class) {
  id object = reusable;
  if (object != NULL) {
    reusable = object->next;
  } else {
    object = calloc(1, sizeof *object);
  }
  object->class = class;
  object->references = 1;
  return object;
}

static id retain(id self) {
  ++self->references;
  return self;
}

static void release(id self) {
  if (--self->references > 0) return;
  if (self->owns_bytes) free((void*)self->bytes);
  if (self->owns_text) release(self->text);
  self->owns_bytes = self->owns_text = false;
  self->bytes = NULL;
  self->text = NULL;
  self->next = reusable;
  reusable = self;
}

static id pool[kPoolSize];
static int pooled;

EXPORT void objc_autoreleasePoolPop(void* start) {
  int from = (int)(intptr_t)start;
  while (pooled > from) release(pool[--pooled]);
}

EXPORT void* objc_autoreleasePoolPush(void) {
  return (void*)(intptr_t)pooled;
}

static id autorelease(id self) {
  if (pooled == kPoolSize) abort();
  return pool[pooled++] = self;
}

EXPORT void CFRelease(const void* object) {
  release((id)object);
}

// ---- Exception frames: a chain through the frames ----

struct frame {
  char buffer[72];  // the smallest that a bundle brings, the desktop's
  struct frame* outer;
  id exception;
  void* unused[2];
};

static struct frame* innermost;

EXPORT void objc_exception_try_enter(void* address) {
  struct frame* frame = address;
  frame->outer = innermost;
  innermost = frame;
}

EXPORT void objc_exception_try_exit(void* frame) {
  innermost = ((struct frame*)frame)->outer;
}

EXPORT id objc_exception_extract(void* frame) {
  return ((struct frame*)frame)->exception;
}

EXPORT int objc_exception_match(id class, id exception) {
  return exception->class == class;
}

EXPORT void objc_exception_throw(id exception) {
  struct frame* frame = innermost;
  if (frame == NULL) abort();
  innermost = frame->outer;
  frame->exception = exception;
  longjmp((struct __jmp_buf_tag*)(void*)frame, 1);
}

// ---- Strings, URLs, dictionaries ----

static id new_bytes(struct object* class, const void* bytes, long length) {
  id object = new_object(class);
  char* copy = malloc((size_t)length + 1);
  if (copy == NULL) abort();
  memcpy(copy, bytes, (size_t)length);
  copy[length] = 0;
  object->bytes = copy;
  object->length = length;
  object->owns_bytes = true;
  return object;
}

EXPORT id CFStringCreateWithCharacters(id allocator, const uint16_t* units, long count) {
  (void)allocator;
  return new_bytes(&other_class, units, count * 2);
}

EXPORT id CFStringCreateWithCString(id allocator, const char* bytes, uint32_t encoding) {
  (void)allocator, (void)encoding;
  return new_bytes(&other_class, bytes, (long)strlen(bytes));
}

EXPORT unsigned char CFStringGetCString(id string, char* buffer, long size, uint32_t encoding) {
  (void)encoding;
  if (string->length >= size) return 0;
  memcpy(buffer, string->bytes, (size_t)string->length + 1);
  return 1;
}

EXPORT long CFStringGetLength(id string) {
  return string->length;
}

EXPORT id CFStringCreateMutableCopy(id allocator, long size, id string) {
  (void)allocator, (void)size;
  return retain(string);
}

EXPORT void CFStringNormalize(id string, long form) {
  (void)string, (void)form;
}

EXPORT id CFURLCreateFromFSRef(id allocator, const void* ref) {
  (void)allocator, (void)ref;
  return NULL;
}

EXPORT id CFURLCreateCopyAppendingPathComponent(id allocator, id url, id name, unsigned char folder) {
  (void)allocator, (void)url, (void)name, (void)folder;
  return NULL;
}

EXPORT id CFURLCopyFileSystemPath(id url, long style) {
  (void)url, (void)style;
  return NULL;
}

EXPORT void NSLog(id format, ...) {
  (void)format;
}

// Open addressing with linear probing; the table doubles when half full. So large at first that the few
// objects of a row hardly ever collide: a step more would count in one process and not in another.
enum { kFirstCapacity = 4096 };
struct dictionary {
  size_t capacity, count;
  struct entry {
    const void *key, *value;
  } * entries;
};

static size_t slot_of(const struct dictionary* dictionary, const void* key) {
  size_t mask = dictionary->capacity - 1;
  size_t slot = ((uintptr_t)key * 2654435761u >> 7) & mask;
  while (dictionary->entries[slot].key != NULL && dictionary->entries[slot].key != key)
    slot = (slot + 1) & mask;
  return slot;
}

EXPORT void* CFDictionaryCreateMutable(id allocator, long capacity, const void* keys, const void* values) {
  (void)allocator, (void)capacity, (void)keys, (void)values;
  struct dictionary* dictionary = malloc(sizeof *dictionary);
  dictionary->capacity = kFirstCapacity;
  dictionary->count = 0;
  dictionary->entries = calloc(dictionary->capacity, sizeof *dictionary->entries);
  return dictionary;
}

EXPORT long CFDictionaryGetCount(struct dictionary* dictionary) {
  return (long)dictionary->count;
}

EXPORT const void* CFDictionaryGetValue(struct dictionary* dictionary, const void* key) {
  return dictionary->entries[slot_of(dictionary, key)].value;
}

EXPORT void CFDictionarySetValue(struct dictionary* dictionary, const void* key, const void* value);

static void grow(struct dictionary* dictionary) {
  struct dictionary old = *dictionary;
  dictionary->capacity *= 2;
  dictionary->count = 0;
  dictionary->entries = calloc(dictionary->capacity, sizeof *dictionary->entries);
  if (dictionary->entries == NULL) abort();
  for (size_t i = 0; i < old.capacity; ++i) {
    if (old.entries[i].key != NULL)
      CFDictionarySetValue(dictionary, old.entries[i].key, old.entries[i].value);
  }
  free(old.entries);
}

EXPORT void CFDictionarySetValue(struct dictionary* dictionary, const void* key, const void* value) {
  if (dictionary->count * 2 >= dictionary->capacity) grow(dictionary);
  size_t slot = slot_of(dictionary, key);
  if (dictionary->entries[slot].key == NULL) ++dictionary->count;
  dictionary->entries[slot] = (struct entry){key, value};
}

EXPORT void CFDictionaryRemoveValue(struct dictionary* dictionary, const void* key) {
  size_t mask = dictionary->capacity - 1;
  size_t slot = slot_of(dictionary, key);
  if (dictionary->entries[slot].key == NULL) return;
  dictionary->entries[slot] = (struct entry){NULL, NULL};
  --dictionary->count;
  for (slot = (slot + 1) & mask; dictionary->entries[slot].key != NULL; slot = (slot + 1) & mask) {
    struct entry moved = dictionary->entries[slot];
    dictionary->entries[slot] = (struct entry){NULL, NULL};
    dictionary->entries[slot_of(dictionary, moved.key)] = moved;
  }
}

// ---- Methods ----

// What a sibling part would add to NSException; the benchmark's host sets them.
EXPORT void* scripted_instances;
EXPORT void* (*scripted_new_exception)(id exception);

static void* instances(id self, SEL selector) {
  return (void)self, (void)selector, scripted_instances;
}
static void prepare(id self, SEL selector) {
  (void)self, (void)selector;
}
static void* new_exception(id self, SEL selector, id exception) {
  (void)self, (void)selector;
  return scripted_new_exception(exception);
}

static signed char yes(id self, SEL selector) {
  return (void)self, (void)selector, 1;
}
static id itself(id self, SEL selector) {
  return (void)selector, self;
}
static id text(id self, SEL selector) {
  return (void)selector, self->text != NULL ? self->text : &a_name;
}
static long four(id self, SEL selector) {
  return (void)self, (void)selector, 4;
}
static float first(id self, SEL selector) {
  return (void)selector, self->components[0];
}
static float second(id self, SEL selector) {
  return (void)selector, self->components[1];
}
static float third(id self, SEL selector) {
  return (void)selector, self->components[2];
}
static float refused(id self, SEL selector) {
  (void)self, (void)selector;
  objc_exception_throw(&an_exception);
  return 0;
}

static void get_rgba(id self, SEL selector, float* red, float* green, float* blue, float* alpha) {
  (void)selector;
  if (red != NULL) *red = self->components[0];
  if (green != NULL) *green = self->components[1];
  if (blue != NULL) *blue = self->components[2];
  if (alpha != NULL) *alpha = self->components[3];
}

static void get_white(id self, SEL selector, float* white, float* alpha) {
  (void)self, (void)selector, (void)white, (void)alpha;
  objc_exception_throw(&an_exception);
}

static void get_components(id self, SEL selector, float* components) {
  (void)selector;
  memcpy(components, self->components, 4 * sizeof *components);
}

static id new_rgba(id self, SEL selector, float red, float green, float blue, float alpha) {
  (void)self, (void)selector;
  id colour = new_object(&colour_class);
  colour->components[0] = red;
  colour->components[1] = green;
  colour->components[2] = blue;
  colour->components[3] = alpha;
  return autorelease(colour);
}

static id a_colour(id self, SEL selector) {
  return (void)self, (void)selector, &shared_colour;
}
static id a_grey(id self, SEL selector) {
  return (void)self, (void)selector, &grey_colour;
}
static id a_space(id self, SEL selector) {
  return (void)self, (void)selector, &shared_space;
}

static id alloc(id self, SEL selector) {
  return (void)selector, new_object(self);
}
static id with_name(id self, SEL selector, id name) {
  (void)selector;
  self->text = retain(name);
  self->owns_text = true;
  return self;
}
static id with_data(id self, SEL selector, id data) {
  (void)selector;
  self->text = retain(data);
  self->owns_text = true;
  return self;
}
static id send_retain(id self, SEL selector) {
  return (void)selector, retain(self);
}
static void send_release(id self, SEL selector) {
  (void)selector;
  release(self);
}
static id send_autorelease(id self, SEL selector) {
  return (void)selector, autorelease(self);
}
static id data_with_bytes(id self, SEL selector, const void* bytes, unsigned long length) {
  (void)self, (void)selector;
  return autorelease(new_bytes(&data_class, bytes, (long)length));
}
static const void* bytes(id self, SEL selector) {
  return (void)selector, self->bytes;
}
static unsigned long length(id self, SEL selector) {
  return (void)selector, (unsigned long)self->length;
}

#define METHOD(name, function) \
  { name, (void (*)(void))(function) }
static struct selector selectors[kMostSelectors] = {
    METHOD("alloc", alloc),
    METHOD("retain", send_retain),
    METHOD("release", send_release),
    METHOD("autorelease", send_autorelease),
    METHOD("respondsToSelector:", yes),
    METHOD("GetInstancesDictionaryQVX", instances),
    METHOD("PrepareNSExceptionQVX", prepare),
    METHOD("NewNSExceptionQVX:", new_exception),
    METHOD("name", text),
    METHOD("reason", text),
    METHOD("userInfo", text),
    METHOD("description", text),
    METHOD("colorSpaceName", text),
    METHOD("localizedName", text),
    METHOD("redComponent", first),
    METHOD("greenComponent", second),
    METHOD("blueComponent", third),
    METHOD("whiteComponent", refused),
    METHOD("numberOfComponents", four),
    METHOD("numberOfColorComponents", four),
    METHOD("colorSpaceModel", four),
    METHOD("getRed:green:blue:alpha:", get_rgba),
    METHOD("getWhite:alpha:", get_white),
    METHOD("getComponents:", get_components),
    METHOD("colorSpace", a_space),
    METHOD("colorSpaceForColorSpaceName:", a_space),
    METHOD("sRGBColorSpace", a_space),
    METHOD("colorWithDeviceRed:green:blue:alpha:", new_rgba),
    METHOD("colorWithCalibratedRed:green:blue:alpha:", a_colour),
    METHOD("colorWithColorSpace:components:count:", a_colour),
    METHOD("colorWithAlphaComponent:", itself),
    METHOD("colorUsingColorSpaceName:", itself),
    METHOD("redColor", a_colour),
    METHOD("grayColor", a_grey),
    METHOD("colorWithKey:", a_colour),
    METHOD("insertColor:key:atIndex:", itself),
    METHOD("removeColorWithKey:", itself),
    METHOD("initWithName:", with_name),
    METHOD("initWithICCProfileData:", with_data),
    METHOD("ICCProfileData", text),
    METHOD("dataWithBytes:length:", data_with_bytes),
    METHOD("bytes", bytes),
    METHOD("length", length),
};

EXPORT SEL sel_registerName(const char* name) {
  struct selector* selector = selectors;
  for (; selector->name != NULL; ++selector) {
    if (strcmp(selector->name, name) == 0) return selector;
  }
  if (selector == selectors + kMostSelectors - 1) abort();
  *selector = (struct selector)METHOD(name, itself);
  return selector;
}

EXPORT id objc_getClass(const char* name) {
  if (strcmp(name, "NSColor") == 0) return &colour_class;
  if (strcmp(name, "NSColorList") == 0) return &list_class;
  if (strcmp(name, "NSColorSpace") == 0) return &space_class;
  if (strcmp(name, "NSData") == 0) return &data_class;
  if (strcmp(name, "NSException") == 0) return &exception_class;
  return &other_class;
}
