// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/TimeSettingsError.h"

#include "support/ErrorText.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace
{

// An allocation may change errno, also one that succeeds.
bool allocationChangesErrno = false;

} // namespace

void* operator new(std::size_t size)
{
    void* memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    if (allocationChangesErrno) {
        errno = ENOMEM;
    }
    return memory;
}

// Not inline: gcc would see free() meet a new that it does not see through, and warn of a mismatch.
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

TEST(TimeSettingsErrorTest, CarriesItsTextAndThatOfErrno)
{
    errno = ENOLCK;
    EXPECT_EQ(TimeSettingsError::fromErrno("flock() FAILED: ").what(), errorText("flock() FAILED: ", ENOLCK));
}

TEST(TimeSettingsErrorTest, BuildingItsTextDoesNotChangeTheReason)
{
    const std::string text(4000, 'x');
    errno = ENOLCK;
    allocationChangesErrno = true;
    const TimeSettingsError error = TimeSettingsError::fromErrno(text.c_str());
    allocationChangesErrno = false;
    EXPECT_EQ(error.what(), errorText(text, ENOLCK));
}
