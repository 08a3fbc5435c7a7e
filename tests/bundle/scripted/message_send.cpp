// tests/bundle/scripted/message_send.cpp - objc_msgSend and objc_msgSend_fpret for calls of any signature.
#include "tests/bundle/scripted/exception_frames.h"
#include "tests/bundle/scripted/platform.h"
#include "tests/bundle/scripted/stack.h"

namespace scripted {
namespace {

// What the assembly below loads into the registers.
struct Registers {
  std::uint32_t eax;
  std::uint32_t edx;
  float st0;
};
static_assert(sizeof(Registers) == 12);

// What the message delivers: an exception, nil, or nothing.
struct Delivery {
  bool raised = false;
  NativeObject* exception = nullptr;
};

// Carries the message out. Nothing of this function is alive when the exception is delivered.
Delivery Carry(const std::uint32_t* stack, Registers* registers, bool viaFpret) {
  CheckStack(viaFpret ? "objc_msgSend_fpret" : "objc_msgSend", stack);
  const Outside outside;
  auto* const receiver = reinterpret_cast<void*>(static_cast<std::uintptr_t>(stack[0]));
  const auto selector = reinterpret_cast<SEL>(static_cast<std::uintptr_t>(stack[1]));
  *registers = {0, 0, 0};
  if (receiver != nullptr && !IsNative(receiver)) {
    Log().Violation("a message to " + Describe(receiver) + ", which is no object of the platform");
    return {};
  }
  Send send(Native(receiver), SelectorName(selector), stack + 2);
  ThePlatform().Dispatch(send, viaFpret);
  *registers = {send.word, receiver == nullptr ? 0 : 0xBADC0DEU, send.number};
  return {send.raised != nullptr || send.raisesNil, send.raised};
}

}  // namespace
}  // namespace scripted

extern "C" [[gnu::used]] void scripted_send(const std::uint32_t* stack, void* registers, int viaFpret) {
  const scripted::Delivery delivery =
      scripted::Carry(stack, static_cast<scripted::Registers*>(registers), viaFpret != 0);
  if (delivery.raised) scripted::Deliver(delivery.exception);
}

// The caller's arguments start 8 bytes above the saved frame pointer: receiver, selector, the method's own.
asm(R"(
  .text
  # Begins a function that carries its call out; the Registers are then at 16(%esp).
  .macro carry name, via_fpret
  .globl \name
  .type \name, @function
\name:
  .cfi_startproc
  pushl %ebp
  .cfi_def_cfa_offset 8
  .cfi_offset %ebp, -8
  movl %esp, %ebp
  .cfi_def_cfa_register %ebp
  subl $40, %esp
  andl $-16, %esp
  leal 8(%ebp), %eax
  leal 16(%esp), %ecx
  movl %eax, (%esp)
  movl %ecx, 4(%esp)
  movl $\via_fpret, 8(%esp)
  call scripted_send
  .endm

  # Ends it.
  .macro carried name
  leave
  .cfi_def_cfa %esp, 4
  ret
  .cfi_endproc
  .size \name, .-\name
  .endm

  carry objc_msgSend, 0
  movl 16(%esp), %eax
  movl 20(%esp), %edx
  carried objc_msgSend

  carry objc_msgSend_fpret, 1
  flds 24(%esp)
  movl $0xBADBAD, %eax
  carried objc_msgSend_fpret
)");
