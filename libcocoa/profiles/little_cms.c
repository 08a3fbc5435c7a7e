// libcocoa/profiles/little_cms.c - the library's own Little CMS context.
#include "libcocoa/profiles/little_cms.h"

#include <lcms2_plugin.h>
#include <pthread.h>
#include <stdbool.h>
#include <stdlib.h>

static cmsContext context;

static void IgnoreError(cmsContext raiser, cmsUInt32Number code, const char* text) {}

static _Thread_local uint64_t requested;
static _Thread_local uint64_t limit = UINT64_MAX;

static bool Grants(size_t size) {
  if (size > limit - requested) return false;
  requested += size;
  return true;
}

static void* Allocate(cmsContext asker, cmsUInt32Number size) {
  return Grants(size) ? malloc(size) : NULL;
}

static void* Reallocate(cmsContext asker, void* block, cmsUInt32Number size) {
  return Grants(size) ? realloc(block, size) : NULL;
}

static void Free(cmsContext asker, void* block) {
  free(block);
}

void QVXLimitLittleCMS(size_t bytes) {
  limit = requested + bytes;
}

void QVXUnlimitLittleCMS(void) {
  limit = UINT64_MAX;
}

uint64_t QVXLittleCMSRequests(void) {
  return requested;
}

static void MakeContext(void) {
  // The rest is made of these three by Little CMS itself.
  cmsPluginMemHandler memory = {
      .base = {cmsPluginMagicNumber, 2000, cmsPluginMemHandlerSig, NULL},
      .MallocPtr = Allocate,
      .FreePtr = Free,
      .ReallocPtr = Reallocate,
  };
  context = cmsCreateContext(&memory, NULL);
  if (context) cmsSetLogErrorHandlerTHR(context, IgnoreError);
}

cmsContext QVXLittleCMS(void) {
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, MakeContext);
  return context;
}
