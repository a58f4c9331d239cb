// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/LocalFile.h"

#include "client/engine/Descriptor.h"
#include "client/model/Failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fmt/core.h>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace
{

Failure unreadable(const std::string& path)
{
    return {ExitCode::badFile, Category::badFile, "reading a file",
            fmt::format("cannot read {}: {}", path, std::strerror(errno))};
}

std::string readAll(std::FILE* stream, const std::string& path)
{
    // Piece by piece: a pipe does not tell how long it will be.
    std::string text;
    std::string piece(65536, '\0');
    for (std::size_t size = std::fread(piece.data(), 1, piece.size(), stream); size > 0;
         size = std::fread(piece.data(), 1, piece.size(), stream)) {
        text.append(piece, 0, size);
    }
    if (std::ferror(stream) != 0) {
        throw unreadable(path);
    }
    return text;
}

Failure unwritable(const std::string& path, const std::string& why)
{
    return {ExitCode::badFile, Category::badFile, "writing a file", fmt::format("cannot write {}: {}", path, why)};
}

// Where the file really is: behind a link it is the file that gets the text, and not the link.
std::filesystem::path placeOf(const std::string& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw unwritable(path, "it is no regular file"); // a device would be gone
    }
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? std::filesystem::path(path) : real;
}

// A file without a name that anybody looks for, which is removed unless it got another.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::filesystem::path& neighbour)
        : name((neighbour.parent_path() / ".tarvelctl-XXXXXX").string()), file(::mkstemp(name.data()))
    {
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        if (file) {
            ::unlink(name.c_str());
        }
    }

    [[nodiscard]] bool write(std::string_view text) const
    {
        constexpr mode_t forEverybody = 0644; // mkstemp() makes it for its owner alone
        while (file && !text.empty()) {
            const ssize_t written = ::write(file.get(), text.data(), text.size());
            if (written == -1) {
                return false;
            }
            text.remove_prefix(static_cast<std::size_t>(written));
        }
        return file && ::fchmod(file.get(), forEverybody) == 0;
    }
    [[nodiscard]] bool rename(const std::filesystem::path& to)
    {
        if (::rename(name.c_str(), to.c_str()) == -1) {
            return false;
        }
        file.reset();
        return true;
    }

private:
    std::string name;
    Descriptor file;
};

} // namespace

std::string readLocalFile(const std::string& path)
{
    if (path == "-") {
        return readAll(stdin, "standard input");
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file) {
        throw unreadable(path);
    }
    return readAll(file.get(), path);
}

void replaceLocalFile(const std::string& path, std::string_view text)
{
    const std::filesystem::path place = placeOf(path);
    TemporaryFile temporary(place);
    if (!temporary.write(text) || !temporary.rename(place)) {
        throw unwritable(path, std::strerror(errno));
    }
}
