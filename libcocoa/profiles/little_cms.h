// libcocoa/profiles/little_cms.h - the library's own Little CMS context.
#pragma once

#include <lcms2.h>
#include <stddef.h>
#include <stdint.h>

// Its error handler is silent. The global context, which belongs to whoever else uses Little CMS in this
// process, is never touched. Never freed; NULL, which stands for the global one, only when memory is
// exhausted.
cmsContext QVXLittleCMS(void);

// How much memory Little CMS may still ask for on this thread, all its requests added up; beyond that it gets
// none. Limits what a profile can claim that is not there.
void QVXLimitLittleCMS(size_t bytes);
void QVXUnlimitLittleCMS(void);

// What Little CMS has asked for on this thread so far, all its requests added up.
uint64_t QVXLittleCMSRequests(void);
