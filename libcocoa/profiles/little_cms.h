// libcocoa/profiles/little_cms.h - the library's own Little CMS context.
#pragma once

#include <lcms2.h>
#include <stddef.h>
#include <stdint.h>

// Its error handler is silent. The global context, which belongs to whoever else uses Little CMS in this
// process, is never touched. Never freed; NULL, which stands for the global one, only when memory is
// exhausted.
cmsContext QVXLittleCMS(void);

// The memory, in bytes, that Little CMS holds because of what this thread had it do, less what this thread
// had it give back: for differences.
int64_t QVXLittleCMSMemory(void);

// How much more than now that may be; beyond it Little CMS gets none. Limits what a profile can claim that is
// not there.
void QVXLimitLittleCMS(size_t bytes);
void QVXUnlimitLittleCMS(void);
