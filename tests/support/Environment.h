// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

// A variable of the environment that is another one for the time of a test.
class Environment
{
public:
    Environment(std::string newName, const std::string& value) : name(std::move(newName))
    {
        if (const char* old = std::getenv(name.c_str())) {
            before = old;
        }
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    ~Environment()
    {
        if (before) {
            ::setenv(name.c_str(), before->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::string name;
    std::optional<std::string> before;
};
