// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/FakeSystem.h"

#include <map>
#include <string>

// The card's settings as far as the daemon reads them: answers "uci [-q] get KEY > FILE" with the key's value, or with
// exit status 1 for a key that is not there. All other uci commands are FakeSystem's to answer and only noted down.
class FakeUci
{
public:
    explicit FakeUci(FakeSystem& system);

    void set(const std::string& key, const std::string& value);
    void remove(const std::string& key);

private:
    [[nodiscard]] std::optional<FakeSystem::Answer> answerTo(std::string_view command) const;

    std::map<std::string, std::string, std::less<>> values;
};
