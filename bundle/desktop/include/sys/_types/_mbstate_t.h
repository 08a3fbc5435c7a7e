// bundle/desktop/include/sys/_types/_mbstate_t.h - the desktop's mbstate_t, which libc++ looks for under this
// name.
#pragma once

union mbstate_t {
  char bytes[128];
  long long aligned;
};
