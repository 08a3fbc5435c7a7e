/* hostrun/commands/shim/thunks.S - stands before functions of the platform and of the host, and reports each call.
 *
 * Each thunk gives hostrun_trace_arrived its number and the place of its arguments, then jumps to the real function
 * with the stack as it found it: the caller, exception frames and return addresses see no difference.
 */
	.text
	.type	common, @function
common:
	/* the thunk's number, the return address, the arguments */
	pushl	%eax
	pushl	%ecx
	pushl	%edx
	movl	12(%esp), %eax
	leal	16(%esp), %ecx
	pushl	%ebp
	movl	%esp, %ebp
	andl	$-16, %esp
	subl	$16, %esp
	movl	%eax, (%esp)
	movl	%ecx, 4(%esp)
	call	hostrun_trace_arrived
	movl	%ebp, %esp
	popl	%ebp
	movl	%eax, 12(%esp)
	popl	%edx
	popl	%ecx
	popl	%eax
	ret
	.size	common, .-common

	.set	number, 0

	/* One for each function of the list that comes back, numbered by its line there. */
	.macro	thunk_Function name
	.globl	\name
	.type	\name, @function
\name:
	pushl	$number
	jmp	common
	.size	\name, .-\name
	.endm
	.macro	thunk_NoReturn name
	.endm
	.macro	thunk_Data name
	.endm

#define PLATFORM_SYMBOL(name, kind, library) thunk_##kind name; .set number, number + 1
#include "bundle/platform/symbols.inc"

	/* thunks of one size for whatever is wrapped later */
	.globl	hostrun_trace_spare
	.hidden	hostrun_trace_spare
	.balign	16
hostrun_trace_spare:
	.rept	64
	.balign	16
	pushl	$number
	jmp	common
	.set	number, number+1
	.endr
	.section	.note.GNU-stack,"",@progbits
