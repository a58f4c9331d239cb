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
    static UciError unreadableKey() { return UciError("Parse error"); }
    static UciError io() { return UciError("I/O error"); }
    // Some commands fail without a word.
    static UciError silent() { return UciError(""); }
};

// The command line itself makes no sense.
class UsageError : public std::runtime_error
{
public:
    UsageError() : std::runtime_error("usage") {}
};

// The real tool could do this.
class NotSimulated : public std::runtime_error
{
public:
    explicit NotSimulated(const std::string& what) : std::runtime_error(what + " is not simulated") {}
};
