// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "util/File.h"
#include "util/Report.h"

#include <array>
#include <cerrno>
#include <string_view>

#include <dirent.h>
#include <sys/stat.h>

namespace
{

constexpr std::size_t lineSize = 1024; // with the terminating NUL

} // namespace

int LibUtils::readFirstLine(std::string& value, const std::string& path)
{
    std::array<char, lineSize> buffer; // outlives the stream, and spares it memory and a look at the file's block size
    File file(path.c_str(), "r");
    if (!file) {
        reportErrno("fopen() failed: ");
        return -1;
    }
    file.useBuffer(buffer);

    int result = 0;
    std::array<char, lineSize> line;
    errno = 0; // fgets() leaves it alone at the end of an empty file
    if (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) == nullptr) {
        reportErrno("fgets() failed or file is empty: ");
        result = -1;
    } else {
        const std::string_view text = line.data();
        value = text.substr(0, text.find('\n'));
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
