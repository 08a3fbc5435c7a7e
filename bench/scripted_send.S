// bench/scripted_send.S - message sends of the scripted platform: a selector holds its one method.

        .macro  send_method
        movl    4(%esp), %eax
        testl   %eax, %eax
        jz      1f
        movl    8(%esp), %ecx
        jmp     *4(%ecx)
        .endm

        .text
        .globl  objc_msgSend
        .type   objc_msgSend, @function
        .p2align 4
objc_msgSend:
        .cfi_startproc
        send_method
1:      xorl    %edx, %edx
        ret
        .cfi_endproc
        .size   objc_msgSend, . - objc_msgSend

        .globl  objc_msgSend_fpret
        .type   objc_msgSend_fpret, @function
        .p2align 4
objc_msgSend_fpret:
        .cfi_startproc
        send_method
1:      fldz
        ret
        .cfi_endproc
        .size   objc_msgSend_fpret, . - objc_msgSend_fpret

        .section .note.GNU-stack, "", @progbits
