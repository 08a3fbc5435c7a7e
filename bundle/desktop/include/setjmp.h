// bundle/desktop/include/setjmp.h - the desktop's <setjmp.h>: the buffer of an exception frame.
#pragma once

extern "C" {

typedef int jmp_buf[18];

// Saves registers, but no signal mask. Answers 0, and once more what a jump to the buffer gives.
__attribute__((__returns_twice__)) int _setjmp(jmp_buf buffer);

[[noreturn]] void longjmp(jmp_buf buffer, int result);

}  // extern "C"
