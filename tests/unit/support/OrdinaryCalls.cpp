// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "OrdinaryCalls.h"

#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace ordinary
{

int runSystem(const char* command)
{
    return std::system(command);
}

std::string readPipe(const char* command)
{
    FILE* pipe = popen(command, "r");
    if (pipe == nullptr) {
        return "no pipe";
    }
    std::string text;
    std::array<char, 16> piece{};
    while (std::fgets(piece.data(), piece.size(), pipe) != nullptr) {
        text += piece.data();
    }
    return text + std::to_string(pclose(pipe));
}

void logWarning(const char* text)
{
    syslog(LOG_WARNING, "%s %d", text, 7);
}

int setClock(std::time_t moment)
{
    const timespec time{moment, 0};
    return clock_settime(CLOCK_REALTIME, &time);
}

std::time_t readClock()
{
    return std::time(nullptr);
}

bool exists(const char* path)
{
    struct stat record {
    };
    return stat(path, &record) == 0;
}

long sizeOf(const char* path)
{
    struct stat record {
    };
    return stat(path, &record) == 0 ? static_cast<long>(record.st_size) : -1;
}

std::string readLine(const char* path)
{
    FILE* file = std::fopen(path, "re");
    if (file == nullptr) {
        return "cannot open";
    }
    std::array<char, 1024> line{};
    const bool read = std::fgets(line.data(), line.size(), file) != nullptr;
    const bool closed = std::fclose(file) == 0;
    return std::string(read ? line.data() : "nothing") + (closed ? "" : " (not closed)");
}

bool writeFile(const char* path, const char* text)
{
    FILE* file = std::fopen(path, "we");
    std::fwrite(text, 1, std::strlen(text), file);
    const bool good = std::ferror(file) == 0;
    return std::fclose(file) == 0 && good;
}

int makeDirectory(const char* path)
{
    return mkdir(path, 0777);
}

int countEntries(const char* path)
{
    dirent** entries = nullptr;
    const int count = scandir(path, &entries, nullptr, alphasort);
    for (int i = 0; i < count; ++i) {
        std::free(entries[i]);
    }
    std::free(entries);
    return count;
}

int lockFile(const char* path)
{
    const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    const int result = flock(descriptor, LOCK_EX);
    close(descriptor);
    return result;
}

int openDatagramSocket()
{
    return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

int bindTo(int socket, std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

long sendDatagram(int socket, const char* address, std::uint16_t port, const char* text)
{
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    inet_aton(address, &to.sin_addr);
    return sendto(socket, text, std::strlen(text), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

long receiveDatagram(int socket)
{
    std::array<char, 64> buffer{};
    return recvfrom(socket, buffer.data(), buffer.size(), 0, nullptr, nullptr);
}

int waitForNothing()
{
    return select(0, nullptr, nullptr, nullptr, nullptr);
}

void closeDescriptor(int descriptor)
{
    close(descriptor);
}

} // namespace ordinary
