// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdio>
#include <memory>
#include <span>

// Owns a stdio stream. close() tells whether the stream could be closed; the destructor is the safety net for
// every other way out. Where a shell command is started while the stream is open the mode carries "e", so that what the
// command leaves running does not keep our file. Elsewhere it does not: some C libraries make two more calls for it.
class File
{
public:
    File(const char* path, const char* mode) : stream(std::fopen(path, mode)) {}

    [[nodiscard]] explicit operator bool() const { return stream != nullptr; }
    [[nodiscard]] std::FILE* get() const { return stream.get(); }

    // To be called before anything is read. `buffer` outlives the stream; an empty one makes every read a call of its
    // own.
    void useBuffer(std::span<char> buffer)
    {
        static_cast<void>(std::setvbuf(get(), buffer.data(), buffer.empty() ? _IONBF : _IOFBF, buffer.size()));
    }

    // Returns 0, or EOF with errno set. The stream is gone in either case.
    [[nodiscard]] int close() { return std::fclose(stream.release()); }

private:
    struct Closer {
        void operator()(std::FILE* open) const { std::fclose(open); }
    };

    std::unique_ptr<std::FILE, Closer> stream;
};
