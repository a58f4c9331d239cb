// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/Contents.h"

#include <string>
#include <vector>

// A public key as usign has it, and Debian's signify-openbsd. One of them, whichever is installed, does the work.
class SignatureKey
{
public:
    // From the text of the file `path`. Throws a badFile Failure if that is no public key, or nothing is installed.
    SignatureKey(std::string path, std::string text);

    [[nodiscard]] const std::string& path() const { return keyPath; }

    // Why a hardened card that has this key would not upgrade to what is in an archive, a sentence each; empty if it
    // would. Very many are told as Problems does.
    [[nodiscard]] std::vector<std::string> problemsWith(const Contents& contents) const;

private:
    [[nodiscard]] std::string objectionTo(const std::string& sums, const std::string& signature) const;

    std::string keyPath;
    std::string keyText;
    std::string program;
};

// Those whose texts SignatureKey needs.
[[nodiscard]] Contents contentsForSignature();
