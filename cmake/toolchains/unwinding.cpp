// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
//
// Linked into every program for the card, before the C++ library: an exception brings back the condition register.
//
// The compiler keeps comparisons over a call in fields 2 to 4 of that register, which a function that uses them must
// give back to its caller; but its unwind information does not say where it saved them. So an exception that passed
// such a function left its catcher with somebody else's comparisons, and a loop that asks a flag might never end. The
// prologue says what the unwind information does not: it saves the whole register by way of r12.
#include <cstdint>
#include <libunwind.h>

namespace libunwind
{

// What the library has noted of a frame that it is about to resume. This replaces its last step.
struct Registers_ppc {
    std::uint32_t instructionPointer;
    std::uint32_t unused;
    std::uint32_t general[32];
    std::uint32_t conditions;
    [[noreturn]] void jumpto();
};

} // namespace libunwind

namespace
{

using libunwind::Registers_ppc;
// C++17, as the compiler takes it to be when CMake tries something: no std::span.
class Instructions
{
public:
    explicit Instructions(const unw_proc_info_t& function) : _function(function) {}
    const std::uint32_t* begin() const { return reinterpret_cast<const std::uint32_t*>(_function.start_ip); }
    const std::uint32_t* end() const { return reinterpret_cast<const std::uint32_t*>(_function.end_ip); }

private:
    unw_proc_info_t _function;
};

constexpr std::uint32_t moveConditionsToR12 = 0x7d800026;
constexpr std::uint16_t makeFrame = 0x9421;
constexpr std::uint32_t makeLargeFrame = 0x7c21016e;
constexpr std::uint16_t storeR12 = 0x9181;
constexpr std::uint32_t storeR12FarOff = 0x7d81012e;
constexpr std::uint32_t indexRegister = 0x0000f800;

// What stands in the registers of a prologue: where a frame is too large for an offset in the instruction itself, a
// pair of instructions makes it, lis for the upper half and ori for the lower.
class Constants
{
public:
    void follow(std::uint32_t instruction)
    {
        const auto operation = instruction >> 26;
        const auto first = instruction >> 21 & 31;
        const auto second = instruction >> 16 & 31;
        if (operation == 15 && second == 0) {
            _values[first] = instruction << 16;
        } else if (operation == 24) {
            _values[second] = _values[first] | (instruction & 0xffff);
        }
    }
    int indexOf(std::uint32_t instruction) const { return static_cast<int>(_values[instruction >> 11 & 31]); }

private:
    std::uint32_t _values[32] = {};
};

// Where a function saved the condition register, in bytes from the stack pointer of its caller; 0 if it did not.
int savedConditions(Instructions function)
{
    Constants constants;
    int frame = 0;
    bool moved = false;
    for (const auto instruction : function) {
        const auto operation = static_cast<std::uint16_t>(instruction >> 16);
        const auto offset = static_cast<std::int16_t>(instruction);
        constants.follow(instruction);
        moved = moved || instruction == moveConditionsToR12;
        if (operation == makeFrame) {
            frame = offset;
        } else if ((instruction & ~indexRegister) == makeLargeFrame) {
            frame = constants.indexOf(instruction);
        } else if (moved && operation == storeR12) {
            return frame + offset;
        } else if (moved && (instruction & ~indexRegister) == storeR12FarOff) {
            return frame + constants.indexOf(instruction);
        }
    }
    return 0;
}

unw_word_t valueOf(unw_cursor_t& frame, unw_regnum_t number)
{
    unw_word_t value = 0;
    unw_get_reg(&frame, number, &value);
    return value;
}

Instructions functionOf(unw_cursor_t& frame)
{
    unw_proc_info_t function{};
    unw_get_proc_info(&frame, &function);
    return Instructions(function);
}

// What the outermost of the frames that are given up had saved is what the frame that goes on had last.
void bringBackConditions(Registers_ppc& resumed)
{
    unw_context_t here;
    unw_cursor_t frame;
    unw_getcontext(&here);
    unw_init_local(&frame, &here);
    while (valueOf(frame, UNW_REG_SP) < resumed.general[1]) {
        const int saved = savedConditions(functionOf(frame));
        if (unw_step(&frame) <= 0) {
            return;
        }
        if (saved != 0) {
            resumed.conditions =
                *reinterpret_cast<const std::uint32_t*>(valueOf(frame, UNW_REG_SP) + static_cast<unw_word_t>(saved));
        }
    }
}

} // namespace

extern "C" [[noreturn]] void tarveld_resume(const Registers_ppc* registers);

asm(R"(
    .text
    .globl tarveld_resume
    .type tarveld_resume, @function
tarveld_resume:
    lmw 13, 60(3)
    .irp number, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31
    lfd \number, 160 + 8 * \number(3)
    .endr
    lwz 0, 136(3)
    mtcr 0
    lwz 0, 0(3)
    mtctr 0
    lwz 4, 24(3)
    lwz 1, 12(3)
    lwz 3, 20(3)
    bctr
    .size tarveld_resume, . - tarveld_resume
)");

void Registers_ppc::jumpto()
{
    bringBackConditions(*this);
    tarveld_resume(this);
}
