// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// A new folder among the temporary files, which only this user may enter, and which is gone afterwards.
class PrivateFolder
{
public:
    PrivateFolder(); // Throws a badFile Failure if there can be none.
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    [[nodiscard]] std::string path(std::string_view name) const { return folder / name; }

    // Throws a badFile Failure.
    void write(std::string_view name, std::string_view text) const;

private:
    std::filesystem::path folder;
};
