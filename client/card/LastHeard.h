// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// Where names were last heard, by this program and the ones before. Only ever to say so: what answered there is perhaps
// another card by now, so this is never used as an address.
class LastHeard
{
public:
    struct Hearing {
        std::string address;     // 0.0.0.0: no connection led to where it was heard from
        std::int64_t moment = 0; // seconds since 1970
        std::string interface;   // on which; empty: it was not noted, as by programs before this one
    };

    // What was remembered; nothing if that cannot be read.
    static LastHeard load();
    static LastHeard parse(std::string_view text);

    [[nodiscard]] std::optional<Hearing> of(const std::string& name) const;
    void note(const std::string& name, Hearing hearing);
    [[nodiscard]] std::string text() const;
    // Adds to what is remembered, by other runs meanwhile, too. A failure is none of the user's concern: the next run
    // knows less.
    void save() const;

private:
    std::map<std::string, Hearing> hearings; // by plain word
};

// "3 s", "2 min", "5 h" or "9 days".
[[nodiscard]] std::string ageText(std::int64_t seconds);
