// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/ForeignProgram.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

bool isProgram(const std::string& path)
{
    struct stat found = {};
    return ::stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

class Redirections
{
public:
    explicit Redirections(const std::string& complaints)
    {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        // A file, and no pipe, which somebody would have to read while the program runs.
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, complaints.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                           0600);
    }
    ~Redirections() { ::posix_spawn_file_actions_destroy(&actions); }
    Redirections(const Redirections&) = delete;
    Redirections& operator=(const Redirections&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions; }

private:
    posix_spawn_file_actions_t actions = {};
};

int statusOf(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) == -1) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

std::optional<std::string> findProgram(std::string_view name)
{
    const char* path = std::getenv("PATH");
    std::string_view folders = path == nullptr ? "" : path;
    while (!folders.empty()) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        const std::string folder(folders.substr(0, end));
        folders.remove_prefix(std::min(end + 1, folders.size()));
        // A relative folder of PATH would run what lies wherever the user happens to be.
        if (std::string program = folder + "/" + std::string(name); folder.starts_with('/') && isProgram(program)) {
            return program;
        }
    }
    return std::nullopt;
}

int runToItsEnd(const std::string& program, std::vector<std::string> words, const std::string& complaints)
{
    words.insert(words.begin(), program);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const Redirections redirections(complaints);
    pid_t child = -1;
    if (::posix_spawn(&child, program.c_str(), redirections.get(), nullptr, arguments.data(), environ) != 0) {
        return -1;
    }
    return statusOf(child);
}
