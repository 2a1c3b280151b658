// The trampoline into which the exception handler sends a faulting thread: esi points at a CFaultFrame, and the stack
// pointer at room for a copy. The unwind tables say: this is a signal's frame, and the interrupted registers are in the
// copy. They hold at the call, where the copy lies 16 bytes above the stack pointer.

// The register with the unwinder's number `number` is saved `offset` bytes into the structure.
    .macro saved number, offset
    .cfi_escape 0x10, \number, 3, 0x74, ((16+\offset)&0x7f)|0x80, (16+\offset)>>7
    .endm

    .text
    .globl _OvFaultTrampoline
_OvFaultTrampoline:
    .cfi_startproc
    .cfi_signal_frame
    .cfi_escape 0x0f, 4, 0x74, ((16+0xC4)&0x7f)|0x80, (16+0xC4)>>7, 0x06 // the frame's address: the interrupted esp
    saved 7, 0x9C       // edi
    saved 6, 0xA0       // esi
    saved 3, 0xA4       // ebx
    saved 2, 0xA8       // edx
    saved 1, 0xAC       // ecx
    saved 0, 0xB0       // eax
    saved 5, 0xB4       // ebp
    saved 8, 0xB8       // eip
    cld
    fnclex              // a floating-point fault is still pending
    emms                // and the interrupted code may have left values on that stack
    movl %esp, %edi
    movl $800/4, %ecx
    rep movsl
    movl %esp, %eax
    subl $12, %esp
    pushl %eax
    call _OvRunTranslator
    ud2
    .cfi_endproc
