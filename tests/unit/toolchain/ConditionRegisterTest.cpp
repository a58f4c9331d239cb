// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include <cstdint>
#include <gtest/gtest.h>
#include <stdexcept>

namespace
{

// The fields that a function gives back to its caller as they were: 2, 3 and 4.
constexpr std::uint32_t kept = 0x00fff000;

// Part of whoever asks: a function of its own would give back what it found.
[[gnu::always_inline]] inline std::uint32_t comparedWith(int value)
{
    std::uint32_t conditions = 0;
    asm volatile("cmpwi 2, %1, 0\n\tcmpwi 3, %1, 0\n\tcmpwi 4, %1, 0\n\tmfcr %0"
                 : "=r"(conditions)
                 : "r"(value)
                 : "cr2", "cr3", "cr4");
    return conditions & kept;
}

std::uint32_t conditions()
{
    std::uint32_t conditions = 0;
    asm volatile("mfcr %0" : "=r"(conditions));
    return conditions & kept;
}

class Witness
{
public:
    explicit Witness(std::uint32_t& seen) : _seen(seen) {}
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;
    ~Witness() { _seen = conditions(); }

private:
    std::uint32_t& _seen;
};

[[gnu::noinline]] void throwWithOtherConditions()
{
    comparedWith(1);
    throw std::runtime_error("thrown");
}

[[gnu::noinline]] void throwFromALargeFrame()
{
    char room[40000];
    asm volatile("" : : "r"(&room[0]) : "memory");
    comparedWith(1);
    throwWithOtherConditions();
}

[[gnu::noinline]] void passOn(std::uint32_t& seen)
{
    const Witness witness(seen);
    throwWithOtherConditions();
}

TEST(ConditionRegisterTest, IsTheCatchersAgain)
{
    const auto before = comparedWith(-1);
    try {
        throwWithOtherConditions();
    } catch (const std::exception&) {
        EXPECT_EQ(before, conditions());
    }
}

TEST(ConditionRegisterTest, IsTheCatchersAgainAfterSeveralFrames)
{
    const auto before = comparedWith(-1);
    std::uint32_t seen = 0;
    try {
        passOn(seen);
    } catch (const std::exception&) {
        EXPECT_EQ(before, conditions());
    }
}

TEST(ConditionRegisterTest, IsThatOfAFrameThatCleansUp)
{
    const auto before = comparedWith(-1);
    std::uint32_t seen = 0;
    try {
        passOn(seen);
    } catch (const std::exception&) {
        EXPECT_EQ(before, seen);
    }
}

TEST(ConditionRegisterTest, IsTheCatchersAgainAfterALargeFrame)
{
    const auto before = comparedWith(-1);
    try {
        throwFromALargeFrame();
    } catch (const std::exception&) {
        EXPECT_EQ(before, conditions());
    }
}

} // namespace
