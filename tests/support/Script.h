// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// What the next calls to a replaced function are to do. Calls without a script do what they always do. Scripts for
// one function are used up in the order they were given; names are those of the plain functions ("recv", "fopen").

// The next call, or every call from the next one on, fails with this errno.
void failNext(std::string_view call, int error);
void failAlways(std::string_view call, int error);

// The next call does nothing and returns this (select: 0 is a time-out; fork: 0 is the child).
void returnNext(std::string_view call, long result);

// The next call (recv, send, fread, ...) moves at most this many bytes.
void limitNext(std::string_view call, std::size_t bytes);

// The next calls are as usual: passNext("select", 2); failNext("select", EINTR);
void passNext(std::string_view call, int times = 1);

void forgetScripts();

// Names of functions that were told to do something and were not called.
std::vector<std::string> unusedScripts();

// For the fakes only.
struct Step {
    enum class Kind { pass, fail, result, limit } kind = Kind::pass;
    long value = 0;
};
Step nextStep(std::string_view call);
