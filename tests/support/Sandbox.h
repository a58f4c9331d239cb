// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// The directory that stands for the card's root file system while a test runs. The production code opens "/etc/...",
// "/tmp/..." and so on; the fakes lead it here. It is the working directory as well, so that relative names are kept
// in. Gone, with all it holds, when it goes out of scope.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // Where a name of the card is to be found on this machine.
    [[nodiscard]] std::string path(std::string_view name) const;

    // Whether a name of this machine is inside.
    [[nodiscard]] bool holds(std::string_view path) const;

    // These take names of the card ("/etc/pnr/squashfs"), or relative ones.
    void write(std::string_view name, std::string_view content) const;
    [[nodiscard]] std::string read(std::string_view name) const;
    [[nodiscard]] bool exists(std::string_view name) const;
    void makeDirectory(std::string_view name) const;

private:
    std::string root;
    int previousDirectory;
};

// For the fakes: the name to use instead of `name`. Ends the process if that is none in the sandbox of a test, because
// then the call would reach this machine; relative names stay as they are.
std::string sandboxed(const char* name);

// Does the name lead to where a test may write?
bool isSandboxed(const char* name);
