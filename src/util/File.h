// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdio>
#include <memory>

// Owns a stdio stream. close() tells whether the stream could be closed; the destructor is the safety net for
// every other way out. Open modes should carry "e": what a shell command leaves running must not keep our files.
class File
{
public:
    File(const char* path, const char* mode) : stream(std::fopen(path, mode)) {}

    [[nodiscard]] explicit operator bool() const { return stream != nullptr; }
    [[nodiscard]] std::FILE* get() const { return stream.get(); }

    // Returns 0, or EOF with errno set. The stream is gone in either case.
    [[nodiscard]] int close() { return std::fclose(stream.release()); }

private:
    struct Closer {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    std::unique_ptr<std::FILE, Closer> stream;
};
