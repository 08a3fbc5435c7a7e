// libcocoa/profiles/little_cms.c - the library's own Little CMS context.
#include "libcocoa/profiles/little_cms.h"

#include <pthread.h>

static cmsContext context;

static void IgnoreError(cmsContext raiser, cmsUInt32Number code, const char* text) {}

static void MakeContext(void) {
  context = cmsCreateContext(NULL, NULL);
  if (context) cmsSetLogErrorHandlerTHR(context, IgnoreError);
}

cmsContext QVXLittleCMS(void) {
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, MakeContext);
  return context;
}
