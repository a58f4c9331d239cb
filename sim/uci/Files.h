// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Whole small files, treated as carelessly as the real tool does it: what cannot be opened throws UciError, but nobody
// looks whether a write succeeds.

// Nothing if there is no regular file of this name.
std::optional<std::string> readFile(const std::string& path);

// Makes the file if there is none.
void requireWritable(const std::string& path);

// Appends with a single write, so that two processes never mix their lines.
void appendToFile(const std::string& path, std::string_view text);

// Writes over the file itself.
void rewriteFile(const std::string& path, std::string_view text);

// Replaces a file that is there at once: a reader sees the old text or the new one. Its mode stays.
void replaceFile(const std::string& path, std::string_view text);

void makeDirectory(const std::string& path);

// Names of the regular files, sorted, hidden ones left out; empty if the directory cannot be read.
std::vector<std::string> listFiles(const std::string& path);
