// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// Stands before every program that the daemon runs on the simulated card: writes down how the program was called,
// waits or fails if a test asked for that, and then becomes the real program. It is a program of its own, and a small
// one, because a shell script at this place would cost more time than the programs behind it.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

const std::string cardDirectory = "/run/card";
const std::string programDirectory = "/run/programs";

// One record is one line; its fields are separated by tabs.
std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += "\\\\";
        } else if (c == '\n') {
            result += "\\n";
        } else if (c == '\t') {
            result += "\\t";
        } else {
            result += c;
        }
    }
    return result;
}

// A single write to a file opened for appending: lines of programs that run side by side never mix.
void appendLine(const std::string& path, const std::string& line)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0 || ::write(fd, (line + "\n").c_str(), line.size() + 1) < 0) {
        std::perror(path.c_str());
    }
    if (fd >= 0) {
        ::close(fd);
    }
}

// The text of `sh -c TEXT`; null for any other use of the shell.
const char* shellText(char* const argv[])
{
    if (argv[1] == nullptr || std::string_view(argv[1]) != "-c" || argv[2] == nullptr) {
        return nullptr;
    }
    return std::string_view(argv[2]) == "--" ? argv[3] : argv[2];
}

void record(std::string_view name, char* const argv[])
{
    if (name == "sh") {
        if (const char* text = shellText(argv)) {
            appendLine(cardDirectory + "/commands", escaped(text));
        }
        return;
    }
    std::string line = escaped(argv[0]);
    for (char* const* argument = argv + 1; *argument != nullptr; ++argument) {
        line.append("\t").append(escaped(*argument));
    }
    appendLine(cardDirectory + "/calls", line);
}

void waitWhileHeld(const std::string& name)
{
    const std::string marker = cardDirectory + "/control/hold/" + name;
    const timespec pause{0, 2'000'000};
    while (::access(marker.c_str(), F_OK) == 0) {
        ::nanosleep(&pause, nullptr);
    }
}

std::string joined(char* const argv[])
{
    std::string text;
    for (char* const* argument = argv + 1; *argument != nullptr; ++argument) {
        text.append(text.empty() ? "" : " ").append(*argument);
    }
    return text;
}

void copyRest(std::FILE* file)
{
    char piece[1024];
    while (std::fgets(piece, sizeof piece, file) != nullptr) {
        std::fputs(piece, stdout);
    }
}

// The marker holds "STATUS" or "STATUS TEXT"; with a text only calls whose arguments contain it fail. The lines after
// it are what the program prints.
void failIfTold(const std::string& name, char* const argv[])
{
    const std::string marker = cardDirectory + "/control/fail/" + name;
    std::FILE* file = std::fopen(marker.c_str(), "re");
    if (file == nullptr) {
        return;
    }
    char line[1024] = "";
    char* rest = line;
    const bool isRead = std::fgets(line, sizeof line, file) != nullptr;
    const long status = isRead ? std::strtol(line, &rest, 10) : 1;
    std::string_view matching = rest;
    while (matching.starts_with(' ')) {
        matching.remove_prefix(1);
    }
    while (matching.ends_with('\n')) {
        matching.remove_suffix(1);
    }
    if (joined(argv).find(matching) != std::string::npos) {
        copyRest(file);
        std::exit(static_cast<int>(status));
    }
    std::fclose(file);
}

std::string baseName(std::string_view path)
{
    return std::string(path.substr(path.find_last_of('/') + 1));
}

} // namespace

int main(int, char* argv[])
{
    const std::string name = baseName(argv[0]);
    if (std::getenv("CARD_UNRECORDED") == nullptr) {
        record(name, argv);
        waitWhileHeld(name);
        failIfTold(name, argv);
    }
    const std::string program = programDirectory + "/" + name;
    ::execv(program.c_str(), argv);
    std::perror(program.c_str());
    return errno == ENOENT ? 127 : 126;
}
