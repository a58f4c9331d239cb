// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// What is said about members, of whom there may be hundreds of thousands: in few words.

// The card unpacks as root, and so gives files to owners that it may not even have.
class ForeignOwners
{
public:
    void note(std::int64_t user, std::int64_t group, const std::string& path);
    void tell(std::vector<std::string>& warnings) const;

private:
    std::size_t foreign = 0;
    std::string example;
};

// What must not be on a card. Nobody reads more of it than is told.
class Problems
{
public:
    // `problem` is said behind the path: "has an absolute path".
    void note(const std::string& path, const std::string& problem);
    void tell(std::vector<std::string>& problems) const;

private:
    std::size_t found = 0;
    std::vector<std::string> told;
};
