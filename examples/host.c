/* examples/host.c - the smallest host: loads a bundle, makes a colour, reads a component, frees the colour.
 *
 * Plain C that anyone may copy; docs/embedding.md walks through it. Bundles are 32-bit, and so is their host:
 *
 *   gcc -m32 -o host examples/host.c -ldl
 *   ./host BUNDLE PLATFORM-LIBRARY [HOST-VERSION [DESKTOP-LOADER]]
 *
 * On Linux a desktop bundle needs DESKTOP-LOADER, libdesktoploader.so, which does for it what dlopen does for
 * others.
 */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- The bundle's records, as it hands them over ---- */

typedef void (*function)(void);
struct object;

/* Up to layout 9 a method's record has 16 bytes and a property's 40; after that 24 and 48. */
struct method {
  function code, second;
  const char* declaration;
  uint32_t flags;
};

struct property {
  const char *group, *name, *type;
  uint32_t flags;
  function getter, setter;
};

struct class_record {
  int32_t layout;
  const char *name, *super_name;
  int32_t data_size;
  uint32_t data_offset; /* the host writes where the class data starts in its objects */
  void (*constructor)(struct object*);
  void (*destructor)(struct object*);
  char* properties;
  int32_t property_count;
  char* methods;
  int32_t method_count;
  void* unused[12]; /* events, interfaces, constants, flags, shared properties */
  char* shared_methods;
  int32_t shared_method_count;
};

/* ---- Objects: a header of 24 bytes, then the class data, which is the bundle's ---- */

enum { DATA_OFFSET = 24 };

struct object {
  const struct class_record* class_record;
  int32_t references;
  uint32_t unused[4];
};
_Static_assert(sizeof(struct object) == DATA_OFFSET, "class data starts 24 bytes into an object");

static struct class_record* classes[16];
static int class_count;

static struct class_record* find_class(const char* name) {
  for (int i = 0; i < class_count; i++)
    if (strcmp(classes[i]->name, name) == 0) return classes[i];
  return NULL;
}

/* ---- The services that this host offers; the bundle does without the others ---- */

static double host_version = 2015.0;

static long double get_version(void) {
  return host_version;
}
static int32_t register_version(int32_t layout) {
  return layout;
}

static void register_class(struct class_record* record) {
  if (class_count == sizeof classes / sizeof *classes) return;
  record->data_offset = DATA_OFFSET;
  classes[class_count++] = record;
}

/* A new object has one reference, the caller's. Unknown classes have no objects: the bundle copes with NULL.
 */
static struct object* new_instance(const char* class_name) {
  struct class_record* record = find_class(class_name);
  if (record == NULL) return NULL;
  struct object* object = calloc(1, DATA_OFFSET + (size_t)record->data_size);
  if (object == NULL) return NULL;
  object->class_record = record;
  object->references = 1;
  record->constructor(object);
  return object;
}

static void lock_object(struct object* object) {
  object->references++;
}

static void unlock_object(struct object* object) {
  if (--object->references > 0) return;
  object->class_record->destructor(object);
  free(object);
}

static void* resolve(const char* name) {
  static const struct {
    const char* name;
    function code;
  } services[] = {
      {"REALGetRBVersion", (function)get_version},
      {"RegisterPluginVersion", (function)register_version},
      {"PluginRegisterClass", (function)register_class},
      {"PluginNewInstance", (function)new_instance},
      {"REALLockObject", (function)lock_object},
      {"REALUnlockObject", (function)unlock_object},
  };
  for (size_t i = 0; i < sizeof services / sizeof *services; i++)
    if (strcmp(services[i].name, name) == 0) return (void*)services[i].code;
  return NULL;
}

/* ---- Members, found by what they are declared as ---- */

static function shared_method(const struct class_record* record, const char* declaration) {
  size_t size = record->layout > 9 ? 24 : 16;
  for (int32_t i = 0; i < record->shared_method_count; i++) {
    const struct method* method = (const struct method*)(record->shared_methods + (size_t)i * size);
    if (strcmp(method->declaration, declaration) == 0) return method->code;
  }
  return NULL;
}

static function getter(const struct class_record* record, const char* name) {
  size_t size = record->layout > 9 ? 48 : 40;
  for (int32_t i = 0; i < record->property_count; i++) {
    const struct property* property = (const struct property*)(record->properties + (size_t)i * size);
    if (strcmp(property->name, name) == 0) return property->getter;
  }
  return NULL;
}

static void* loaded(const char* file, int flags) {
  void* library = dlopen(file, flags);
  if (library != NULL) return library;
  fprintf(stderr, "host: wanted a library that loads, found: %s\n", dlerror());
  exit(2);
}

static void* symbol(void* library, const char* file, const char* name) {
  void* found = dlsym(library, name);
  if (found != NULL) return found;
  fprintf(stderr, "host: wanted %s in %s, found none\n", name, file);
  exit(2);
}

/* The entry of a desktop bundle, by the functions that hostrun/loader/loader.h describes. */
static void* desktop_entry(const char* loader, const char* bundle) {
  void* library = loaded(loader, RTLD_NOW);
  void* (*open)(const char*, char*, unsigned long);
  open = (void* (*)(const char*, char*, unsigned long))symbol(library, loader, "QVXOpenDesktopBundle");
  void* (*find)(void*, const char*) =
      (void* (*)(void*, const char*))symbol(library, loader, "QVXDesktopSymbol");
  char error[256];
  void* opened = open(bundle, error, sizeof error);
  if (opened != NULL) return find(opened, "REALPluginMain");
  fprintf(stderr, "host: %s\n", error);
  exit(2);
}

int main(int count, char** arguments) {
  if (count < 3) {
    fprintf(stderr, "host: wanted BUNDLE PLATFORM-LIBRARY [HOST-VERSION], found %d arguments\n", count - 1);
    return 2;
  }
  if (count > 3) host_version = atof(arguments[3]);

  /* The platform first, for all to see: the bundle's undefined symbols are resolved from the process. */
  void* platform = loaded(arguments[2], RTLD_NOW | RTLD_GLOBAL);
  void* (*push_pool)(void) = (void* (*)(void))symbol(platform, arguments[2], "objc_autoreleasePoolPush");
  void (*pop_pool)(void*) = (void (*)(void*))symbol(platform, arguments[2], "objc_autoreleasePoolPop");

  void* entry = count > 4
                    ? desktop_entry(arguments[4], arguments[1])
                    : symbol(loaded(arguments[1], RTLD_NOW | RTLD_LOCAL), arguments[1], "REALPluginMain");
  ((void (*)(void* (*)(const char*)))entry)(resolve);
  const struct class_record* colors = find_class("NSColorQVX");
  if (colors == NULL) {
    fprintf(stderr, "host: wanted the class NSColorQVX, found none of it among %d\n", class_count);
    return 2;
  }
  printf("%d classes, records of layout %d\n", class_count, (int)colors->layout);

  struct object* (*make)(double, double, double, double);
  make = (struct object * (*)(double, double, double, double))
      shared_method(colors,
                    "colorWithCalibratedRGB(red as double, green as double, blue as double, "
                    "alpha as double=1.0) as NSColorQVX");
  double (*green)(struct object*, int32_t);
  green = (double (*)(struct object*, int32_t))getter(colors, "greenComponent");
  if (make == NULL || green == NULL) {
    fprintf(stderr, "host: wanted colorWithCalibratedRGB and greenComponent, found no such members\n");
    return 2;
  }

  /* The platform's temporary objects live until the pool is popped: one around each call from a program. */
  void* pool = push_pool();
  struct object* color = make(1.0, 0.5, 0.25, 1.0);
  if (color == NULL) return 1;
  printf("green is %g\n", green(color, 0));
  unlock_object(color);
  pop_pool(pool);
  return 0;
}
