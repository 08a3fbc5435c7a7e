// tests/libcocoa/raising.h - bodies that raise, for the tests of exceptions.
#pragma once

#include <functional>

#include "tests/libcocoa/paths.h"

inline void RaiseBang(void*) {
  Raise(NewException("Bang", "for a test"));
}

inline void CallFunction(void* context) {
  (*static_cast<const std::function<void()>*>(context))();
}

// A body that calls `path` around `inner`, as a function and a context.
template <typename Path>
void Through(const Path& path, const std::function<void()>& inner) {
  path(&CallFunction, const_cast<void*>(static_cast<const void*>(&inner)));
}
