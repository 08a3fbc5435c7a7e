// bundle/desktop/include/sys/_types/_mbstate_t.h - mbstate_t, which libc++ looks for here.
#pragma once

union mbstate_t {
  char bytes[128];
  long long aligned;
};
