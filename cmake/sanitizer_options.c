// cmake/sanitizer_options.c - how AddressSanitizer runs in every program of a watched build, whatever its
// environment.

const char* __asan_default_options(void);

// Exception frames must lie on the real stack; what a delivered exception jumps over is lost on purpose, and
// the platform's own classes live until the end. A request for more memory than there is fails, as
// with the C library.
const char* __asan_default_options(void) {
  return "detect_stack_use_after_return=0:detect_leaks=0:alloc_dealloc_mismatch=0:malloc_context_size=1:"
         "allocator_may_return_null=1";
}
