// bundle/desktop/section_order.cpp - the order of the sections in the desktop bundle's object; linked first.
//
// Not every distance between the sections of __TEXT is written down as a relocation: call frame information
// counts on the assembler's. The final link moves them as one block, so nothing else may lie between them.
__asm__(
    ".section __TEXT,__text,regular,pure_instructions\n"
    ".section __TEXT,__const\n"
    ".section __TEXT,__cstring,cstring_literals\n"
    ".section __TEXT,__literal16,16byte_literals\n"
    ".section __TEXT,__literal8,8byte_literals\n"
    ".section __TEXT,__literal4,4byte_literals\n"
    ".section __TEXT,__gcc_except_tab\n"
    ".section __TEXT,__eh_frame,coalesced,no_toc+strip_static_syms+live_support\n"
    ".text\n");
