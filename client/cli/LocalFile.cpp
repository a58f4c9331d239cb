// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/LocalFile.h"

#include "client/model/Failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fmt/core.h>
#include <memory>

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
