// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Program.h"
#include "support/SystemTest.h"
#include "unit/client/CardAnswers.h"

#include <cstdlib>
#include <string>
#include <vector>

// Runs whole command lines in this process, against one fake card called card1 at 127.0.0.1, with configuration and
// state folders of the test's own.
class ProgramFixture : public SystemTest
{
protected:
    ProgramFixture()
    {
        ::setenv("XDG_CONFIG_HOME", sandbox.path("/tmp/config").c_str(), 1);
        ::setenv("XDG_STATE_HOME", sandbox.path("/tmp/state").c_str(), 1);
        card.answer(versions, says(versionsXml("KERN-6.1.0")));
        card.answer(ipGet, says(ipXml("127.0.0.1")));
    }

    // The exit status; what was printed is in `out` and `err`. Broadcasts stay on the loopback device.
    int run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {"tarvelctl", "-i", "lo"});
        return runBare(words);
    }

    int runBare(const std::vector<std::string>& words)
    {
        std::vector<const char*> arguments;
        arguments.reserve(words.size());
        for (const std::string& word : words) {
            arguments.push_back(word.c_str());
        }
        CapturedOutput captured;
        const int status = runProgram(static_cast<int>(arguments.size()), arguments.data());
        out = captured.out();
        err = captured.err();
        return status;
    }

    [[nodiscard]] bool outHas(const std::string& text) const { return out.find(text) != std::string::npos; }
    [[nodiscard]] bool errHas(const std::string& text) const { return err.find(text) != std::string::npos; }

    FakeCard card;
    std::string out;
    std::string err;
};
