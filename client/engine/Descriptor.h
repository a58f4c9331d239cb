// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <unistd.h>
#include <utility>

// Owns a file descriptor and closes it; -1 is none.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int owned) : fd(owned) {}
    Descriptor(Descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(fd, other.fd);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    [[nodiscard]] int get() const { return fd; }
    explicit operator bool() const { return fd != -1; }
    void reset()
    {
        if (fd != -1) {
            // On purpose: after a failure, too, the number is free, and to close it again could close that of somebody
            // else.
            ::close(std::exchange(fd, -1));
        }
    }

private:
    int fd = -1;
};
