// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <vector>

// Whether somebody with a key has made the firmware that lies unpacked in the working directory. For the hardened
// build. The public keys are the files in /etc/tarveld/keys; the card's usign and sha256sum do the work. SHA256SUMS has
// to be signed in SHA256SUMS.sig, and to name each of `files`, the archive's members without its directories, with the
// right sum. Returns 0, or -1 after a warning. Without a key everything is accepted, with a warning.
int checkSignature(const std::vector<std::string>& files);
