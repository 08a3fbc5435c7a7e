/* tests/whole/crashes/crash_host.c - a host that hands the bundle an object that is none, and reports the
 * crash: where it was, counted from where the bundle lies. That is what a host's crash report is to hold.
 *
 *   crash_host BUNDLE PLATFORM-LIBRARY [DESKTOP-LOADER]
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <ucontext.h>

struct object;
/* As far as this host reads it. */
struct class_record {
  int32_t layout;
  const char *name, *super_name;
  int32_t data_size;
  uint32_t data_offset;
  void (*constructor)(struct object*);
  void (*destructor)(struct object*);
};

enum { PAGE = 4096 };

static struct class_record* first_class;
static uintptr_t bundle_start;

static void register_class(struct class_record* record) {
  record->data_offset = 24;
  if (first_class == NULL) first_class = record;
}

static void* resolve(const char* name) {
  return strcmp(name, "PluginRegisterClass") == 0 ? (void*)register_class : NULL;
}

static void report(int number, siginfo_t* info, void* context) {
  const uintptr_t at = (uintptr_t)((ucontext_t*)context)->uc_mcontext.gregs[REG_EIP];
  printf("signal %d for %p, in the bundle at %#lx\n", number, info->si_addr,
         (unsigned long)(at - bundle_start));
  fflush(stdout);
  _Exit(3);
}

/* Whichever file it is, its header is at its start, and that at the start of a page. */
static uintptr_t start_of(const void* entry) {
  uintptr_t page = (uintptr_t)entry & ~(uintptr_t)(PAGE - 1);
  while (memcmp((const void*)page, "\177ELF", 4) != 0 &&
         memcmp((const void*)page, "\316\372\355\376", 4) != 0)
    page -= PAGE;
  return page;
}

static void* entry_of(int count, char** arguments) {
  if (count < 4) {
    void* bundle = dlopen(arguments[1], RTLD_NOW);
    return bundle == NULL ? NULL : dlsym(bundle, "REALPluginMain");
  }
  char error[256];
  void* loader = dlopen(arguments[3], RTLD_NOW);
  if (loader == NULL) return NULL;
  void* (*open)(const char*, char*, unsigned long);
  open = (void* (*)(const char*, char*, unsigned long))dlsym(loader, "QVXOpenDesktopBundle");
  void* (*find)(void*, const char*) = (void* (*)(void*, const char*))dlsym(loader, "QVXDesktopSymbol");
  void* bundle = open(arguments[1], error, sizeof error);
  return bundle == NULL ? NULL : find(bundle, "REALPluginMain");
}

int main(int count, char** arguments) {
  if (count < 3 || dlopen(arguments[2], RTLD_NOW | RTLD_GLOBAL) == NULL) return 2;
  void* entry = entry_of(count, arguments);
  if (entry == NULL) return 2;
  bundle_start = start_of(entry);
  ((void (*)(void* (*)(const char*)))entry)(resolve);
  if (first_class == NULL) return 2;

  struct sigaction action;
  memset(&action, 0, sizeof action);
  action.sa_sigaction = report;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGSEGV, &action, NULL);
  first_class->destructor((struct object*)16);
  return 1;
}
