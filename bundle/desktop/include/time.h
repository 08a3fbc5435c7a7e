// bundle/desktop/include/time.h - the desktop's <time.h>: the type that libc++'s <memory> names on the way.
#pragma once

typedef long time_t;
