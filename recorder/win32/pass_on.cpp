// ClearReceiveData and GetPortComIndex: what they are given and return is known to nobody but host and library.
// They are noted, and passed on by a jump that leaves the arguments where they are, in registers and on the
// stack; so what they return goes to the host directly and is not seen here.
//
// In the frame: room for the arguments of the function that is called (0x20), rcx, rdx, r8, r9, xmm0 to xmm3;
// 8 more bytes align the stack. Arguments beyond these lie above the return address.
asm(R"(
.macro PASS_ON name, target
  .globl \name
  .def \name; .scl 2; .type 32; .endef
  .seh_proc \name
\name:
  subq $0x88, %rsp
  .seh_stackalloc 0x88
  .seh_endprologue
  movq %rcx, 0x20(%rsp)
  movq %rdx, 0x28(%rsp)
  movq %r8, 0x30(%rsp)
  movq %r9, 0x38(%rsp)
  movaps %xmm0, 0x40(%rsp)
  movaps %xmm1, 0x50(%rsp)
  movaps %xmm2, 0x60(%rsp)
  movaps %xmm3, 0x70(%rsp)
  call \target
  movq 0x20(%rsp), %rcx
  movq 0x28(%rsp), %rdx
  movq 0x30(%rsp), %r8
  movq 0x38(%rsp), %r9
  movaps 0x40(%rsp), %xmm0
  movaps 0x50(%rsp), %xmm1
  movaps 0x60(%rsp), %xmm2
  movaps 0x70(%rsp), %xmm3
  addq $0x88, %rsp
  rex64 jmp *%rax
  .seh_endproc
.endm
.text
PASS_ON ClearReceiveData, RecorderClearTarget
PASS_ON GetPortComIndex, RecorderIndexTarget
)");
