// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "util/File.h"
#include "util/Report.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include <dirent.h>
#include <sys/stat.h>

int LibUtils::readFirstLine(std::string& value, const std::string& path)
{
    File file(path.c_str(), "re");
    if (!file) {
        reportErrno("fopen() failed: ");
        return -1;
    }

    int result = 0;
    std::array<char, 1024> line;
    errno = 0; // fgets() leaves it alone at the end of an empty file
    if (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) == nullptr) {
        reportErrno("fgets() failed or file is empty: ");
        result = -1;
    } else {
        value = line.data();
        value.erase(std::min(value.find('\n'), value.size()));
    }

    // On purpose: a file that was read well stays well read.
    if (file.close() != 0) {
        reportErrno("fclose() FAILED: ");
    }
    return result;
}

int LibUtils::fileExists(const std::string& path)
{
    struct stat record = {};
    return stat(path.c_str(), &record) == 0 ? 1 : 0;
}

int LibUtils::getFileSize(const std::string& path, std::int64_t& size)
{
    struct stat record = {};
    if (stat(path.c_str(), &record) != 0) {
        return -1;
    }
    size = record.st_size;
    return 0;
}

int LibUtils::directoryEntryFilter(const dirent* entry)
{
    const std::string_view name = entry->d_name;
    return name == "." || name == ".." || name == "squashfs" ? 0 : 1;
}
