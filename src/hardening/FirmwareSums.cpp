// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/FirmwareSums.h"

#include <algorithm>
#include <optional>

namespace
{

// 64 digits, a blank, a blank or a star, and the path. What sha256sum puts before a name with a line end or a backslash
// is none of that: such names are refused in archives.
std::optional<FileSum> readLine(std::string_view line)
{
    constexpr std::size_t digits = 64;
    constexpr std::size_t pathStart = digits + 2;
    if (line.size() <= pathStart || line.find_first_not_of("0123456789abcdef") != digits || line[digits] != ' ' ||
        (line[digits + 1] != ' ' && line[digits + 1] != '*')) {
        return std::nullopt;
    }
    return FileSum{std::string(line.substr(0, digits)), withoutStart(line.substr(pathStart))};
}

bool has(const std::vector<std::string>& files, const char* name)
{
    return std::find(files.begin(), files.end(), name) != files.end();
}

} // namespace

FirmwareSums readSums(std::string_view text)
{
    FirmwareSums sums;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (std::optional<FileSum> sum = readLine(text.substr(0, end))) {
            sums.files.push_back(std::move(*sum));
        } else if (sums.strangeLine == 0) {
            sums.strangeLine = number;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return sums;
}

bool hasSignature(const std::vector<std::string>& files)
{
    return has(files, sumsName) && has(files, signatureName);
}

std::vector<std::string> unlistedOf(const std::vector<std::string>& files, const FirmwareSums& sums)
{
    const ListedFiles listing(sums);
    std::vector<std::string> unlisted;
    std::copy_if(files.begin(), files.end(), std::back_inserter(unlisted),
                 [&](const std::string& file) { return !listing.has(file); });
    return unlisted;
}

ListedFiles::ListedFiles(const FirmwareSums& sums) : listed{sumsName, signatureName}
{
    listed.reserve(listed.size() + sums.files.size());
    for (const FileSum& sum : sums.files) {
        listed.push_back(sum.path);
    }
    std::sort(listed.begin(), listed.end());
}

bool ListedFiles::has(std::string_view file) const
{
    return std::binary_search(listed.begin(), listed.end(), file);
}

std::string withoutStart(std::string_view path)
{
    while (path.starts_with("./")) {
        path.remove_prefix(2);
    }
    return std::string(path);
}
