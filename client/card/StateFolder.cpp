// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/StateFolder.h"

#include <cctype>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/core.h>
#include <fstream>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

std::filesystem::path stateFolder()
{
    const char* stateHome = std::getenv("XDG_STATE_HOME");
    if (stateHome != nullptr && *stateHome != '\0') {
        return std::filesystem::path(stateHome) / "tarvelctl";
    }
    const char* home = std::getenv("HOME");
    return home == nullptr ? std::filesystem::path() : std::filesystem::path(home) / ".local/state/tarvelctl";
}

std::string plainWord(std::string_view name)
{
    std::string word;
    for (const char letter : name) {
        const auto code = static_cast<unsigned char>(letter);
        // The program sets no locale, so that letters are those of ASCII.
        word += std::isalnum(code) != 0 || letter == '-' ? std::string(1, letter) : fmt::format("%{:02x}", code);
    }
    return word;
}

StateLock::StateLock()
{
    if (stateFolder().empty()) {
        return;
    }
    std::error_code ignored; // the file cannot be opened then
    std::filesystem::create_directories(stateFolder(), ignored);
    file = Descriptor(::open((stateFolder() / ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    // A lock of the kernel, which goes with whoever holds it, also if that one is killed.
    if (file) {
        static_cast<void>(::flock(file.get(), LOCK_EX));
    }
}

bool replaceStateFile(const std::string& name, std::string_view text)
{
    if (stateFolder().empty()) {
        return false;
    }
    std::error_code error;
    std::filesystem::create_directories(stateFolder(), error);
    // Written beside it and renamed, so that a reader finds the former text or this one, and never a part. Its name has
    // the process in it, because other runs may write the same file now.
    const std::filesystem::path temporary = stateFolder() / fmt::format(".{}.{}", name, ::getpid());
    std::ofstream file(temporary);
    file << text;
    file.close(); // only now is it known whether the disk had room
    if (!file) {
        std::filesystem::remove(temporary, error);
        return false;
    }
    std::filesystem::rename(temporary, stateFolder() / name, error);
    return !error;
}
