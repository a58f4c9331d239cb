// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "sim/uci/UciError.h"

namespace
{

class Descriptor
{
public:
    Descriptor(const std::string& path, int flags) : fd(::open(path.c_str(), flags | O_CLOEXEC, 0644)) {}
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return fd; }

private:
    int fd;
};

void writeAll(const std::string& path, int flags, std::string_view text)
{
    const Descriptor file(path, flags);
    if (file.get() < 0 || ::write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        throw UciError::io();
}

bool isRegularFile(const std::string& path)
{
    struct stat status {
    };
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

std::optional<std::string> readFile(const std::string& path)
{
    const Descriptor file(path, O_RDONLY);
    if (file.get() < 0 && errno == ENOENT)
        return std::nullopt;
    std::string text;
    char piece[4096];
    ssize_t count = 0;
    while ((count = ::read(file.get(), piece, sizeof piece)) > 0)
        text.append(piece, static_cast<std::size_t>(count));
    if (count < 0)
        throw UciError::io();
    return text;
}

void appendToFile(const std::string& path, std::string_view text)
{
    writeAll(path, O_WRONLY | O_CREAT | O_APPEND, text);
}

void replaceFile(const std::string& path, std::string_view text)
{
    const std::string fresh = path + ".new";
    writeAll(fresh, O_WRONLY | O_CREAT | O_TRUNC, text);
    if (std::rename(fresh.c_str(), path.c_str()) != 0)
        throw UciError::io();
}

void removeFile(const std::string& path)
{
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        throw UciError::io();
}

void makeDirectory(const std::string& path)
{
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        throw UciError::io();
}

std::vector<std::string> listFiles(const std::string& path)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), ::closedir);
    std::vector<std::string> names;
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (!name.starts_with('.') && isRegularFile(std::string(path).append("/").append(name)))
            names.push_back(name);
    }
    std::ranges::sort(names);
    return names;
}
