// tests/bundle/scripted/stack_call.cpp - calls on any stack that a host may come with.
#include "tests/bundle/scripted/stack_call.h"

// The words are copied below the aligned stack pointer, moved down by the offset.
asm(R"(
  .text
  .globl scripted_call_at_offset
  .globl scripted_call_for_double_at_offset
  .type scripted_call_at_offset, @function
  .type scripted_call_for_double_at_offset, @function
scripted_call_at_offset:
scripted_call_for_double_at_offset:
  .cfi_startproc
  pushl %ebp
  .cfi_def_cfa_offset 8
  .cfi_offset %ebp, -8
  movl %esp, %ebp
  .cfi_def_cfa_register %ebp
  pushl %esi
  pushl %edi
  .cfi_offset %esi, -12
  .cfi_offset %edi, -16
  movl 16(%ebp), %ecx
  leal 15(,%ecx,4), %eax
  andl $-16, %eax
  addl $16, %eax
  subl %eax, %esp
  andl $-16, %esp
  subl 20(%ebp), %esp
  andl $-4, %esp
  movl %esp, %edi
  movl 12(%ebp), %esi
  cld
  rep movsl
  call *8(%ebp)
  leal -8(%ebp), %esp
  popl %edi
  popl %esi
  popl %ebp
  .cfi_def_cfa %esp, 4
  .cfi_restore %ebp
  .cfi_restore %esi
  .cfi_restore %edi
  ret
  .cfi_endproc
  .size scripted_call_at_offset, .-scripted_call_at_offset
)");
