// bundle/desktop/library_pins.cpp - the desktop's C library as declared here has its widths.
#include <setjmp.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/_types/_mbstate_t.h>
#include <time.h>

#include <type_traits>

#include "bundle/platform/cocoa.h"

static_assert(sizeof(jmp_buf) == 72 && alignof(jmp_buf) == 4);
static_assert(sizeof(ObjCExceptionFrame) == 88 && offsetof(ObjCExceptionFrame, reserved) == 72);
static_assert(sizeof(long double) == 16 && alignof(long double) == 16);
static_assert(sizeof(double) == 8 && sizeof(long long) == 8 && alignof(max_align_t) == 16);
static_assert(std::is_same_v<size_t, unsigned long> && sizeof(size_t) == 4);
static_assert(std::is_same_v<ptrdiff_t, int> && std::is_same_v<intptr_t, long>);
static_assert(std::is_same_v<int32_t, int> && std::is_same_v<int64_t, long long>);
static_assert(sizeof(wchar_t) == 4 && sizeof(bool) == 1);
static_assert(std::is_same_v<time_t, long> && sizeof(mbstate_t) == 128);
