// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <stdexcept>
#include <string>

// What the tool says before it gives up; the words are those that people know from the real one.
class UciError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;

    static UciError notFound() { return UciError("Entry not found"); }
    static UciError invalidArgument() { return UciError("Invalid argument"); }
    static UciError io(const std::string& path) { return UciError("I/O error: " + path); }
};

// The command line itself makes no sense.
class UsageError : public UciError
{
public:
    using UciError::UciError;
};
