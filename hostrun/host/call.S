/* hostrun/host/call.S - calls a cdecl function with words laid out at run-time.
 *
 * uint64_t runner_call_words(void (*function)(void), const uint32_t* words, uint32_t count)
 * double runner_call_words_for_real(the same)
 *
 * The words become the arguments in their order, on a stack aligned to 16 bytes. Whatever the function leaves
 * in eax, edx or st0 is the result: the caller picks by the name through which it calls.
 */
	.text
	.globl	runner_call_words
	.hidden	runner_call_words
	.type	runner_call_words, @function
runner_call_words:
	.cfi_startproc
	pushl	%ebp
	.cfi_def_cfa_offset 8
	.cfi_offset %ebp, -8
	movl	%esp, %ebp
	.cfi_def_cfa_register %ebp
	movl	16(%ebp), %ecx
	movl	12(%ebp), %edx
	leal	0(,%ecx,4), %eax
	subl	%eax, %esp
	andl	$-16, %esp
	jmp	2f
1:	movl	(%edx,%ecx,4), %eax
	movl	%eax, (%esp,%ecx,4)
2:	decl	%ecx
	jns	1b
	call	*8(%ebp)
	leave
	.cfi_def_cfa %esp, 4
	.cfi_restore %ebp
	ret
	.cfi_endproc
	.globl	runner_call_words_for_real
	.hidden	runner_call_words_for_real
	.set	runner_call_words_for_real, runner_call_words
	.size	runner_call_words, .-runner_call_words
	.section	.note.GNU-stack,"",@progbits
