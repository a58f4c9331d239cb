// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// Files by their name: the real call, in the sandbox. The journal shows the card's name.

#include "support/Replaced.h"
#include "support/Sandbox.h"

#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

std::string octal(mode_t mode)
{
    char text[16]{};
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode));
    return text;
}

std::string nameOf(int flags)
{
    struct Flag {
        int bit;
        const char* name;
    };
    constexpr Flag known[] = {{O_CREAT, "|O_CREAT"},   {O_EXCL, "|O_EXCL"},       {O_TRUNC, "|O_TRUNC"},
                              {O_APPEND, "|O_APPEND"}, {O_CLOEXEC, "|O_CLOEXEC"}, {O_NONBLOCK, "|O_NONBLOCK"}};
    const int access = flags & O_ACCMODE;
    std::string text = access == O_RDONLY ? "O_RDONLY" : access == O_WRONLY ? "O_WRONLY" : "O_RDWR";
    for (const Flag& flag : known) {
        if ((flags & flag.bit) != 0) {
            text += flag.name;
        }
    }
    return text;
}

int openIn(const char* name, int flags, mode_t mode)
{
    std::string arguments = std::string(name) + " " + nameOf(flags);
    if ((flags & O_CREAT) != 0) {
        arguments += " " + octal(mode);
    }
    return replaced("open", arguments, -1, [&] { return ::open(sandboxed(name).c_str(), flags, mode); });
}

} // namespace

extern "C" FILE* fake_fopen(const char* name, const char* mode)
{
    return replaced("fopen", std::string(name) + " " + mode, static_cast<FILE*>(nullptr),
                    [&] { return std::fopen(sandboxed(name).c_str(), mode); });
}

extern "C" int fake_open(const char* name, int flags, ...)
{
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    return openIn(name, flags, mode);
}

extern "C" int fake_open_2(const char* name, int flags)
{
    return openIn(name, flags, 0);
}

extern "C" int fake_stat(const char* name, struct stat* result)
{
    return replaced("stat", name, -1, [&] { return ::stat(sandboxed(name).c_str(), result); });
}

extern "C" int fake_access(const char* name, int mode)
{
    return replaced("access", std::string(name) + " " + std::to_string(mode), -1,
                    [&] { return ::access(sandboxed(name).c_str(), mode); });
}

extern "C" int fake_remove(const char* name)
{
    return replaced("remove", name, -1, [&] { return std::remove(sandboxed(name).c_str()); });
}

extern "C" int fake_unlink(const char* name)
{
    return replaced("unlink", name, -1, [&] { return ::unlink(sandboxed(name).c_str()); });
}

extern "C" int fake_mkdir(const char* name, mode_t mode)
{
    return replaced("mkdir", std::string(name) + " " + octal(mode), -1,
                    [&] { return ::mkdir(sandboxed(name).c_str(), mode); });
}

extern "C" int fake_chdir(const char* name)
{
    return replaced("chdir", name, -1, [&] { return ::chdir(sandboxed(name).c_str()); });
}

extern "C" int fake_scandir(const char* name, dirent*** entries, int (*filter)(const dirent*),
                            int (*compare)(const dirent**, const dirent**))
{
    return replaced("scandir", name, -1, [&] { return ::scandir(sandboxed(name).c_str(), entries, filter, compare); });
}

// The other names of these calls.
extern "C" [[gnu::alias("fake_fopen")]] FILE* fake_fopen64(const char* name, const char* mode);
extern "C" [[gnu::alias("fake_open")]] int fake_open64(const char* name, int flags, ...);
extern "C" [[gnu::alias("fake_open_2")]] int fake_open64_2(const char* name, int flags);
extern "C" [[gnu::alias("fake_stat")]] int fake_stat64(const char* name, struct stat* result);
extern "C" [[gnu::alias("fake_stat")]] int fake_stat_time64(const char* name, struct stat* result);
extern "C" [[gnu::alias("fake_stat")]] int fake_stat64_time64(const char* name, struct stat* result);
extern "C" [[gnu::alias("fake_scandir")]] int fake_scandir64(const char* name, dirent*** entries,
                                                             int (*filter)(const dirent*),
                                                             int (*compare)(const dirent**, const dirent**));
