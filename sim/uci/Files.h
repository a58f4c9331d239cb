// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Whole small files. Operations that fail for another reason than a missing file throw UciError.

// Nothing if the file does not exist.
std::optional<std::string> readFile(const std::string& path);

// Appends with a single write, so that two processes never mix their lines.
void appendToFile(const std::string& path, std::string_view text);

// Replaces the file at once: a reader sees the old text or the new one.
void replaceFile(const std::string& path, std::string_view text);

void removeFile(const std::string& path);
void makeDirectory(const std::string& path);

// Names of the regular files, sorted, hidden ones left out; empty if the directory does not exist.
std::vector<std::string> listFiles(const std::string& path);
