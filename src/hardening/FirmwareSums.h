// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// What signed firmware says about itself. Its maker signs one file, which has the sums of all others; so that nothing
// can be added, all others have to be listed there.

inline constexpr const char* sumsName = "SHA256SUMS";
inline constexpr const char* signatureName = "SHA256SUMS.sig";

struct FileSum {
    std::string digest; // in hexadecimal
    std::string path;   // without "./" in front
};

struct FirmwareSums {
    std::vector<FileSum> files;
    std::size_t strangeLine = 0; // the first that sha256sum does not write so, or 0
};

// From the text of SHA256SUMS. What a strange line says does not count.
[[nodiscard]] FirmwareSums readSums(std::string_view text);

// Has firmware of these files what has to be signed, and the signature?
[[nodiscard]] bool hasSignature(const std::vector<std::string>& files);

// Those of the files that are neither in the sums nor what has them or signs them.
[[nodiscard]] std::vector<std::string> unlistedOf(const std::vector<std::string>& files, const FirmwareSums& sums);

// The same for files that are told one after another. The sums must outlive it.
class ListedFiles
{
public:
    explicit ListedFiles(const FirmwareSums& sums);

    [[nodiscard]] bool has(std::string_view file) const;

private:
    std::vector<std::string_view> listed; // sorted
};

// How sums and archives are compared: they may write "./" in front, or not.
[[nodiscard]] std::string withoutStart(std::string_view path);
