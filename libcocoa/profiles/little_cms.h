// libcocoa/profiles/little_cms.h - what the files that call Little CMS share; no other file sees its types.
#pragma once

#include <lcms2.h>

#include "libcocoa/profiles/colour_profiles.h"

// The library's own context: its error handler is silent, and the global one, which belongs to whoever else
// uses Little CMS in this process, is never touched.
cmsContext QVXLittleCMS(void);

// The open handle. Little CMS reads tags through it, which is not safe from two threads: only under
// the lock of colour_transforms.c, or before the profile is published.
cmsHPROFILE QVXProfileHandle(const QVXProfile* profile);

// The bytes of a newly made built-in profile, from malloc; NULL when memory is exhausted.
void* QVXMakeBuiltIn(QVXBuiltIn which, size_t* size);
