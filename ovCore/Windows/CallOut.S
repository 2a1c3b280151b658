// void OvRunGuarded(CGuardedCall* pCall): makes the call under a structured handler. Returns when the call has, or when the
// handler has ended it. The handler's record lies on the stack:
//      0 next   4 OvOnException   8 pCall
// and above it edi, esi, ebx, ebp and the return address.

    .text
    .globl _OvRunGuarded
_OvRunGuarded:
    .cfi_startproc
    pushl %ebp
    .cfi_def_cfa_offset 8
    .cfi_offset 5, -8
    movl %esp, %ebp
    .cfi_def_cfa_register 5
    pushl %ebx
    .cfi_offset 3, -12
    pushl %esi
    .cfi_offset 6, -16
    pushl %edi
    .cfi_offset 7, -20
    pushl 8(%ebp)
    pushl $_OvOnException
    pushl %fs:0
    movl %esp, %fs:0
    subl $16, %esp
    andl $-16, %esp
    movl 8(%ebp), %eax
    movl %eax, (%esp)
    call _OvMakeGuardedCall
.Lleave:
    leal -24(%ebp), %esp    // the record
    popl %fs:0
    addl $8, %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    .cfi_def_cfa 4, 4
    ret
    .cfi_endproc

// [[noreturn]] void OvEndGuarded(CHandlerRecord* pRecord, EXCEPTION_RECORD* pException): runs the handlers between the
// exception and the guarded call for their cleaning up, and makes OvRunGuarded return.
    .globl _OvEndGuarded
_OvEndGuarded:
    pushl %ebp
    movl %esp, %ebp
    pushl $0                // the value in eax afterwards
    pushl 12(%ebp)
    pushl $.Lunwound
    pushl 8(%ebp)
    call _RtlUnwind@16      // of the registers it keeps only esp and ebp
.Lunwound:
    cld
    fnclex
    emms
    movl 8(%ebp), %ebp
    addl $24, %ebp
    jmp .Lleave
