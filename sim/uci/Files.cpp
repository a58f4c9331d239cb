// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Files.h"

#include "sim/uci/UciError.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

class Descriptor
{
public:
    explicit Descriptor(int opened) : fd(opened)
    {
        if (fd < 0) {
            throw UciError::io();
        }
    }
    ~Descriptor() { ::close(fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return fd; }

private:
    int fd;
};

void write(const Descriptor& file, std::string_view text)
{
    [[maybe_unused]] const ssize_t written = ::write(file.get(), text.data(), text.size());
}

bool isRegularFile(const std::string& path)
{
    struct stat status {
    };
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// A file that is no configuration, beside the one it is to replace.
std::string freshName(const std::string& path)
{
    const std::size_t slash = path.rfind('/') + 1;
    return path.substr(0, slash) + "." + path.substr(slash) + ".uci-XXXXXX";
}

} // namespace

std::optional<std::string> readFile(const std::string& path)
{
    if (!isRegularFile(path)) {
        return std::nullopt;
    }
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    char piece[4096];
    ssize_t count = 0;
    while ((count = ::read(file.get(), piece, sizeof piece)) > 0) {
        text.append(piece, static_cast<std::size_t>(count));
    }
    return text;
}

void requireWritable(const std::string& path)
{
    const Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
}

void appendToFile(const std::string& path, std::string_view text)
{
    write(Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)), text);
}

void rewriteFile(const std::string& path, std::string_view text)
{
    write(Descriptor(::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC)), text);
}

void replaceFile(const std::string& path, std::string_view text)
{
    std::string fresh = freshName(path);
    write(Descriptor(::mkostemp(fresh.data(), O_CLOEXEC)), text);
    struct stat former {
    };
    const bool isReplaced = ::stat(path.c_str(), &former) == 0 && ::chmod(fresh.c_str(), former.st_mode) == 0 &&
                            ::rename(fresh.c_str(), path.c_str()) == 0;
    if (isReplaced) {
        return;
    }
    ::unlink(fresh.c_str());
    throw UciError::io();
}

// What cannot be made is noticed when a file in it is opened.
void makeDirectory(const std::string& path)
{
    ::mkdir(path.c_str(), 0700);
}

std::vector<std::string> listFiles(const std::string& path)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(path.c_str()), ::closedir);
    std::vector<std::string> names;
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (!name.starts_with('.') && isRegularFile(std::string(path).append("/").append(name))) {
            names.push_back(name);
        }
    }
    std::ranges::sort(names);
    return names;
}
