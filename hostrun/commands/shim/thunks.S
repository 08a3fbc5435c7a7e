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

	.macro	platform name
	.globl	\name
	.type	\name, @function
\name:
	pushl	$number
	jmp	common
	.size	\name, .-\name
	.set	number, number+1
	.endm

	/* in the order of kPlatformFunctions */
	platform objc_msgSend
	platform objc_msgSend_fpret
	platform objc_getClass
	platform sel_registerName
	platform objc_exception_try_enter
	platform objc_exception_try_exit
	platform objc_exception_extract
	platform objc_exception_match
	platform CFStringCreateWithCharacters
	platform CFStringCreateWithCString
	platform CFStringGetCString
	platform CFStringGetLength
	platform CFStringCreateMutableCopy
	platform CFStringNormalize
	platform CFURLCreateFromFSRef
	platform CFURLCreateCopyAppendingPathComponent
	platform CFURLCopyFileSystemPath
	platform CFRelease
	platform CFDictionaryGetValue
	platform CFDictionarySetValue
	platform CFDictionaryRemoveValue
	platform NSLog

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
