// libcocoa/profiles/little_cms.h - the library's own Little CMS context.
#pragma once

#include <lcms2.h>

// Its error handler is silent. The global context, which belongs to whoever else uses Little CMS in this
// process, is never touched. Never freed; NULL, which stands for the global one, only when memory is
// exhausted.
cmsContext QVXLittleCMS(void);
