// libcocoa/runtime/unwind_switch.S - continues in an outer function's call, giving up the stack below it.

// switch_to_call_site(const struct call_site *site, void *argument): as though the function at `site` had made its
// call to forced_unwind_from_here(argument), which takes its argument in eax and does not return.
        .text
        .globl  switch_to_call_site
        .hidden switch_to_call_site
        .type   switch_to_call_site, @function
        .hidden forced_unwind_from_here
switch_to_call_site:
        .cfi_startproc
        movl    4(%esp), %ecx
        movl    8(%esp), %eax
        movl    0(%ecx), %ebx
        movl    4(%ecx), %ebp
        movl    8(%ecx), %esi
        movl    12(%ecx), %edi
        movl    16(%ecx), %esp
        pushl   20(%ecx)
        jmp     forced_unwind_from_here
        .cfi_endproc
        .size   switch_to_call_site, . - switch_to_call_site

        .section .note.GNU-stack, "", @progbits
