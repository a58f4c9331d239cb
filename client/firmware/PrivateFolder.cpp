// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/PrivateFolder.h"

#include "client/model/Failure.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fmt/core.h>
#include <fstream>
#include <system_error>

namespace
{

Failure cannot(std::string_view what, const std::string& path)
{
    return {ExitCode::badFile, Category::badFile, "making a folder of its own",
            fmt::format("cannot {} {}: {}", what, path, std::strerror(errno))};
}

} // namespace

PrivateFolder::PrivateFolder()
{
    const char* among = std::getenv("TMPDIR");
    const std::filesystem::path folders = among != nullptr && *among != '\0' ? among : "/tmp";
    std::string pattern = folders / "tarvelctl-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw cannot("make a folder in", folders);
    }
    folder = pattern;
}

PrivateFolder::~PrivateFolder()
{
    std::error_code ignored; // what cannot be removed is found by who looks through the temporary files
    std::filesystem::remove_all(folder, ignored);
}

void PrivateFolder::write(std::string_view name, std::string_view text) const
{
    std::ofstream file(path(name), std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw cannot("write", path(name));
    }
}
