// libcocoa/runtime/exported.h - what leaves the library; everything else is compiled hidden.
#pragma once

#define QVX_EXPORT __attribute__((visibility("default")))
