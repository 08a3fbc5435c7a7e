// libcocoa/runtime/message_send.S - objc_msgSend and objc_msgSend_fpret over the GCC runtime's lookup.
//
// Both look the method up and jump to it with the caller's arguments untouched, so that the method returns to the
// caller whatever it returns. The stack is aligned here: a host's compiler may keep it at 4 bytes only. The unwind
// tables are exact: the lookup may run +initialize, and that may raise.

        .macro  lookup_and_jump
        pushl   %ebp
        .cfi_def_cfa_offset 8
        .cfi_offset %ebp, -8
        movl    %esp, %ebp
        .cfi_def_cfa_register %ebp
        andl    $-16, %esp
        subl    $8, %esp
        pushl   12(%ebp)                # selector
        pushl   %eax                    # receiver
        call    get_pc_in_ecx
        addl    $_GLOBAL_OFFSET_TABLE_, %ecx
        call    *objc_msg_lookup@GOT(%ecx)
        leave
        .cfi_restore %ebp
        .cfi_def_cfa %esp, 4
        jmp     *%eax
        .endm

        .text
        .globl  objc_msgSend
        .type   objc_msgSend, @function
        .p2align 4
objc_msgSend:
        .cfi_startproc
        movl    4(%esp), %eax
        testl   %eax, %eax
        jz      1f
        lookup_and_jump
1:      xorl    %edx, %edx              # eax is 0 already
        ret
        .cfi_endproc
        .size   objc_msgSend, . - objc_msgSend

        .globl  objc_msgSend_fpret
        .type   objc_msgSend_fpret, @function
        .p2align 4
objc_msgSend_fpret:
        .cfi_startproc
        movl    4(%esp), %eax
        testl   %eax, %eax
        jz      1f
        lookup_and_jump
1:      fldz
        ret
        .cfi_endproc
        .size   objc_msgSend_fpret, . - objc_msgSend_fpret

        .p2align 4
        .type   get_pc_in_ecx, @function
get_pc_in_ecx:
        .cfi_startproc
        movl    (%esp), %ecx
        ret
        .cfi_endproc
        .size   get_pc_in_ecx, . - get_pc_in_ecx

        .section .note.GNU-stack, "", @progbits
