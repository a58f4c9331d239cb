// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Signature.h"

#include "client/firmware/Complaints.h"
#include "client/firmware/ForeignProgram.h"
#include "client/firmware/PrivateFolder.h"
#include "client/model/Failure.h"
#include "hardening/FirmwareSums.h"

#include <algorithm>
#include <fmt/core.h>
#include <fstream>
#include <string_view>
#include <utility>

namespace
{

Failure badKey(std::string hint)
{
    return {ExitCode::badFile, Category::badFile, "reading the key", std::move(hint)};
}

// A line for people, and 42 bytes in base64, of which the first two are always the same.
bool isPublicKey(std::string_view text)
{
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t length = 56;
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos || !text.starts_with("untrusted comment: ")) {
        return false;
    }
    std::string_view key = text.substr(end + 1);
    if (key.ends_with('\n')) {
        key.remove_suffix(1);
    }
    return key.size() == length && key.starts_with("RW") && key.find_first_not_of(digits) == std::string_view::npos;
}

std::string verifier()
{
    for (const char* name : {"usign", "signify-openbsd"}) { // the card's own first
        if (const std::optional<std::string> program = findProgram(name)) {
            return *program;
        }
    }
    throw Failure{ExitCode::badFile, Category::badFile, "checking the signature",
                  "neither usign nor signify-openbsd is installed, and one of them has to check the signature; "
                  "Debian's package is signify-openbsd"};
}

std::string firstLineOf(const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

bool isSigned(const Contents& contents)
{
    std::vector<std::string> signs;
    contents.forEachFile([&](const std::string& file) {
        if (file == sumsName || file == signatureName) {
            signs.push_back(file);
        }
    });
    return hasSignature(signs);
}

void compare(const Contents& contents, const FirmwareSums& sums, Problems& problems)
{
    for (const FileSum& listed : sums.files) {
        const std::optional<std::string> digest = contents.digestOf(listed.path);
        if (!digest) {
            problems.note(listed.path, fmt::format("is in its {}, but is no file in the archive", sumsName));
        } else if (*digest != listed.digest) {
            problems.note(listed.path, fmt::format("has another sum than in its {}", sumsName));
        }
    }
}

} // namespace

SignatureKey::SignatureKey(std::string path, std::string text)
    : keyPath(std::move(path)), keyText(std::move(text)), program(verifier())
{
    if (!isPublicKey(keyText)) {
        throw badKey(fmt::format("{} is no public key as \"usign -G -p\" makes it", keyPath));
    }
}

std::vector<std::string> SignatureKey::problemsWith(const Contents& contents) const
{
    if (!isSigned(contents)) {
        return {fmt::format("it is not signed: it has no {} and {}", sumsName, signatureName)};
    }
    const std::optional<std::string>& text = contents.textOf(sumsName);
    const std::optional<std::string>& signature = contents.textOf(signatureName);
    if (!text || !signature) {
        return {fmt::format("its {} or {} is no plain file of at most {} bytes", sumsName, signatureName,
                            Contents::longestText)};
    }
    // What nobody has signed is looked at no further.
    if (std::string objection = objectionTo(*text, *signature); !objection.empty()) {
        return {objection};
    }
    const FirmwareSums sums = readSums(*text);
    if (sums.strangeLine != 0) {
        return {fmt::format("line {} of its {} is none that sha256sum writes", sums.strangeLine, sumsName)};
    }
    Problems problems;
    const ListedFiles listing(sums);
    contents.forEachFile([&](const std::string& file) {
        if (!listing.has(file)) {
            problems.note(file, fmt::format("is not in its {}", sumsName));
        }
    });
    compare(contents, sums, problems);
    std::vector<std::string> told;
    problems.tell(told);
    return told;
}

std::string SignatureKey::objectionTo(const std::string& sums, const std::string& signature) const
{
    const PrivateFolder folder;
    folder.write("sums", sums);
    folder.write("signature", signature);
    // The text that was found to be a key, and not whatever its path leads to by now.
    folder.write("key", keyText);
    const std::string complaints = folder.path("complaints");
    const int status = runToItsEnd(
        program, {"-V", "-q", "-m", folder.path("sums"), "-x", folder.path("signature"), "-p", folder.path("key")},
        complaints);
    if (status == 0) {
        return "";
    }
    if (status == -1) { // a program that failed has judged nothing, and its failure must not pass for a yes
        return fmt::format("whether {} has signed its {} is not known: {} could not be run to its end", keyPath,
                           sumsName, program);
    }
    const std::string complaint = firstLineOf(complaints);
    return fmt::format("{} has not signed its {}{}", keyPath, sumsName,
                       complaint.empty() ? "" : fmt::format(" ({})", complaint));
}

Contents contentsForSignature()
{
    return Contents({sumsName, signatureName});
}
