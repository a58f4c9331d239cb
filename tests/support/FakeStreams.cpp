// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// Open files and descriptors: the real call.

#include "support/Replaced.h"

#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <set>
#include <sys/file.h>
#include <unistd.h>

namespace
{

// Streams with a write that was told to fail, which the C library knows nothing of.
std::set<FILE*> failed;

std::string nameOfLock(int operation)
{
    switch (operation) {
    case LOCK_SH:
        return "LOCK_SH";
    case LOCK_EX:
        return "LOCK_EX";
    case LOCK_UN:
        return "LOCK_UN";
    default:
        return std::to_string(operation);
    }
}

size_t readInto(void* buffer, size_t size, size_t count, FILE* stream)
{
    return replacedMoving("fread", std::to_string(size * count), size_t{0}, size * count,
                          [&](size_t bytes) { return std::fread(buffer, size, size == 0 ? 0 : bytes / size, stream); });
}

} // namespace

extern "C" int fake_fclose(FILE* stream)
{
    failed.erase(stream);
    int result = 0;
    const int reported = replaced("fclose", {}, EOF, [] { return 0; });
    const int error = errno;
    if (reported == 0) {
        result = std::fclose(stream);
    } else if (std::fclose(stream) == 0) { // a failing fclose() has closed the stream all the same
        errno = error;
    }
    return reported == 0 ? result : reported;
}

extern "C" char* fake_fgets(char* line, int size, FILE* stream)
{
    return replaced("fgets", std::to_string(size), static_cast<char*>(nullptr),
                    [&] { return std::fgets(line, size, stream); });
}

extern "C" char* fake_fgets_chk(char* line, size_t, int size, FILE* stream)
{
    return fake_fgets(line, size, stream);
}

extern "C" size_t fake_fread(void* buffer, size_t size, size_t count, FILE* stream)
{
    return readInto(buffer, size, count, stream);
}

extern "C" size_t fake_fread_chk(void* buffer, size_t, size_t size, size_t count, FILE* stream)
{
    return readInto(buffer, size, count, stream);
}

extern "C" size_t fake_fwrite(const void* data, size_t size, size_t count, FILE* stream)
{
    size_t written = 0;
    const bool works = replacedMoving("fwrite", std::to_string(size * count), false, size * count, [&](size_t bytes) {
        written = std::fwrite(data, size, size == 0 ? 0 : bytes / size, stream);
        return true;
    });
    if (!works) {
        failed.insert(stream);
    }
    return written;
}

extern "C" int fake_ferror(FILE* stream)
{
    return failed.contains(stream) ? 1 : std::ferror(stream);
}

extern "C" int fake_flock(int descriptor, int operation)
{
    return replaced("flock", nameOfLock(operation), -1, [&] { return ::flock(descriptor, operation); });
}

extern "C" int fake_close(int descriptor)
{
    return replaced("close", std::to_string(descriptor), -1, [&] { return ::close(descriptor); });
}

extern "C" int fake_fcntl(int descriptor, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return replaced("fcntl", std::to_string(command) + " " + std::to_string(argument), -1,
                    [&] { return ::fcntl(descriptor, command, argument); });
}

// The other names of these calls.
extern "C" [[gnu::alias("fake_fgets")]] char* fake_fgets_unlocked(char* line, int size, FILE* stream);
extern "C" [[gnu::alias("fake_fgets_chk")]] char* fake_fgets_unlocked_chk(char* line, size_t, int size, FILE* stream);
extern "C" [[gnu::alias("fake_fread")]] size_t fake_fread_unlocked(void* buffer, size_t, size_t, FILE* stream);
extern "C" [[gnu::alias("fake_fread_chk")]] size_t fake_fread_unlocked_chk(void*, size_t, size_t, size_t, FILE*);
extern "C" [[gnu::alias("fake_fwrite")]] size_t fake_fwrite_unlocked(const void*, size_t, size_t, FILE* stream);
extern "C" [[gnu::alias("fake_ferror")]] int fake_ferror_unlocked(FILE* stream);
extern "C" [[gnu::alias("fake_fcntl")]] int fake_fcntl64(int descriptor, int command, ...);
extern "C" [[gnu::alias("fake_fcntl")]] int fake_fcntl_time64(int descriptor, int command, ...);
