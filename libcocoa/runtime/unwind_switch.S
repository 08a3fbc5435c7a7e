// libcocoa/runtime/unwind_switch.S - continues in an outer function's call, giving up the stack below it.

// QVXSwitchToCallSite(const struct CallSite *site, void *argument): as though the function at `site` had made its
// call to QVXForcedUnwindFromHere(argument), which takes its argument in eax and does not return.
        .text
        .globl  QVXSwitchToCallSite
        .hidden QVXSwitchToCallSite
        .type   QVXSwitchToCallSite, @function
        .hidden QVXForcedUnwindFromHere
QVXSwitchToCallSite:
        .cfi_startproc
        movl    4(%esp), %ecx
        movl    8(%esp), %eax
        movl    0(%ecx), %ebx
        movl    4(%ecx), %ebp
        movl    8(%ecx), %esi
        movl    12(%ecx), %edi
        movl    16(%ecx), %esp
        pushl   20(%ecx)
        jmp     QVXForcedUnwindFromHere
        .cfi_endproc
        .size   QVXSwitchToCallSite, . - QVXSwitchToCallSite

        .section .note.GNU-stack, "", @progbits
