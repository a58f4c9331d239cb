// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Program.h"
#include "support/FakeCard.h"
#include "support/SystemTest.h"

#include <cstdlib>
#include <string>
#include <vector>

// The numbers of the commands, written down independently of the client's.
enum Number : std::uint16_t {
    versions = 1,
    ipGet = 3,
    ipSet = 4,
    upload = 7,
    upgrade = 8,
    reboot = 9,
    timeGet = 16,
    timeSet = 17,
};

constexpr std::uint8_t refused = 2;
inline const FakeCard::Answer done{};

inline FakeCard::Answer says(std::string text)
{
    return {.text = std::move(text)};
}

inline std::string versionsXml(const std::string& kernel)
{
    return "<Versions>\n\t<Component Id=\"kernel\" Version=\"" + kernel + "\"/>\n</Versions>";
}

inline std::string interfaceXml(const std::string& name, const std::string& address)
{
    return "<Interface Name=\"" + name + "\" Mode=\"Static\" Address=\"" + address + "\" Netmask=\"255.0.0.0\"/>";
}

// The answer of card1, with whatever VemkEth1 has. It comes from 127.0.0.1.
inline std::string ipXmlWith(const std::string& interface)
{
    return R"(<IpConfiguration From="card1" To="tarvelctl">)" + interface + interfaceXml("VemkEth2", "10.0.1.11") +
           "</IpConfiguration>";
}

inline std::string ipXml(const std::string& address)
{
    return ipXmlWith(interfaceXml("VemkEth1", address));
}

inline std::string timeXml(const std::string& mode, const std::string& server, const std::string& time)
{
    return "<TimeReferenceConfiguration Mode=\"" + mode + "\" NtpServer=\"" + server + "\" DateTime=\"" + time + "\"/>";
}

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
