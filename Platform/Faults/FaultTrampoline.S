// The trampoline into which the signal handler sends a faulting thread. On entry the stack pointer points at the
// OvPlatform::CFaultFrame. The unwind tables say: this is a signal's frame, and the interrupted registers are in that structure.

// The register with the unwinder's number `number` is saved in the structure's slot `slot`.
    .macro saved number, slot
    .cfi_escape 0x10, \number, 3, 0x77, (8 * \slot & 0x7f) | 0x80, 8 * \slot >> 7
    .endm

    .text
    .globl OvFaultTrampoline
    .hidden OvFaultTrampoline
    .hidden OvRunTranslator
    .type OvFaultTrampoline, @function
OvFaultTrampoline:
    .cfi_startproc
    .cfi_signal_frame
    .cfi_escape 0x0f, 4, 0x77, (15 * 8 & 0x7f) | 0x80, 15 * 8 >> 7, 0x06 // the frame's address: the interrupted rsp
    saved 8, 0
    saved 9, 1
    saved 10, 2
    saved 11, 3
    saved 12, 4
    saved 13, 5
    saved 14, 6
    saved 15, 7
    saved 5, 8      // rdi
    saved 4, 9      // rsi
    saved 6, 10     // rbp
    saved 3, 11     // rbx
    saved 1, 12     // rdx
    saved 0, 13     // rax
    saved 2, 14     // rcx
    saved 16, 16    // rip
    cld
    fnclex              // a floating-point fault is still pending
    emms                // and the interrupted code may have left values on that stack
    movq %rsp, %rdi
    call OvRunTranslator
    ud2
    .cfi_endproc
    .size OvFaultTrampoline, . - OvFaultTrampoline

    .section .note.GNU-stack, "", @progbits
