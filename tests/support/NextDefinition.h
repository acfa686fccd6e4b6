#pragma once

#include <dlfcn.h>

// The definition of a function that the test program's own definition stands in front of: the real one,
// or that of the sanitizer, which forwards to the real one.
#define NEXT_DEFINITION(function)                                                                \
  ([] {                                                                                          \
    static const auto next = reinterpret_cast<decltype(&function)>(dlsym(RTLD_NEXT, #function)); \
    return next;                                                                                 \
  }())
