// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/Sandbox.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace
{

constexpr std::array<std::string_view, 7> cardDirectories{"/etc", "/tmp", "/var", "/dev", "/lib", "/proc", "/sys"};

const Sandbox* current = nullptr;

bool isCardName(std::string_view name)
{
    for (const std::string_view directory : cardDirectories) {
        if (name == directory || (name.starts_with(directory) && name[directory.size()] == '/')) {
            return true;
        }
    }
    return false;
}

// Nothing that would have to be resolved first.
bool isPlain(std::string_view path)
{
    return path.starts_with('/') && path.find("/.") == std::string_view::npos &&
           path.find("//") == std::string_view::npos;
}

std::string makeRoot()
{
    std::string name = (std::filesystem::temp_directory_path() / "tarveld-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no directory can be made for the test");
    }
    return name;
}

} // namespace

Sandbox::Sandbox() : root(makeRoot()), previousDirectory(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    for (const std::string_view directory : cardDirectories) {
        std::filesystem::create_directory(root + std::string(directory));
    }
    std::filesystem::current_path(root);
    current = this;
}

Sandbox::~Sandbox()
{
    current = nullptr;
    if (fchdir(previousDirectory) != 0) {
        std::perror("fchdir() failed after a test");
    }
    close(previousDirectory);
    std::error_code ignored; // a directory left behind harms no other test
    std::filesystem::remove_all(root, ignored);
}

std::string Sandbox::path(std::string_view name) const
{
    if (!name.starts_with('/') || holds(name) || !isCardName(name)) {
        return std::string(name);
    }
    return root + std::string(name);
}

// Read as it stands: where it leads through links is not looked at.
bool Sandbox::holds(std::string_view path) const
{
    // Asked for each call of a test, of which a fuzzer makes thousands a second.
    const std::string place =
        isPlain(path) ? std::string(path) : (std::filesystem::current_path() / path).lexically_normal().string();
    return place.starts_with(root + "/") || place == root;
}

void Sandbox::write(std::string_view name, std::string_view content) const
{
    const std::string file = path(name);
    std::ofstream stream(file, std::ios::binary);
    if (!stream.is_open()) {
        std::filesystem::create_directories(std::filesystem::absolute(file).parent_path());
        stream.open(file, std::ios::binary);
    }
    stream << content << std::flush;
    if (!stream) {
        throw std::runtime_error("cannot write " + file);
    }
}

std::string Sandbox::read(std::string_view name) const
{
    std::ifstream stream(path(name), std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path(name));
    }
    return (std::ostringstream() << stream.rdbuf()).str();
}

bool Sandbox::exists(std::string_view name) const
{
    return std::filesystem::exists(path(name));
}

void Sandbox::makeDirectory(std::string_view name) const
{
    std::filesystem::create_directories(path(name));
}

bool isSandboxed(const char* name)
{
    return current != nullptr ? current->holds(current->path(name)) : *name != '/';
}

std::string sandboxed(const char* name)
{
    if (!isSandboxed(name)) {
        std::fprintf(stderr, "%s would be touched on this machine: %s\n", name,
                     current == nullptr ? "the test has no sandbox (use SystemTest)"
                                        : "it is in no folder of the card");
        std::abort();
    }
    return current != nullptr ? current->path(name) : name;
}
