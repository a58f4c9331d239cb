// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "ProgramFixture.h"

#include <string>
#include <string_view>

// A gzip-compressed tar archive of one file, pnr/kernel, with the line "KERN-7.0.0".
inline constexpr std::string_view archiveHex =
    "1f8b0800000000000203edcd310ac2401404d0ad3d851748fc218b7b022bc1c21b58a45282ac7a7f973482bd82f85e33c334"
    "739debe63cd579baa48f89669bf392cd7b460ce3ab2f7b297948eb485ff0b8dd4fb55da6ffb4df1d0f5de9a38f5502000000"
    "0000000000e0773c0129cf890000280000";

inline std::string archiveBytes()
{
    std::string bytes;
    for (std::size_t index = 0; index < archiveHex.size(); index += 2) {
        bytes += static_cast<char>(std::stoi(std::string(archiveHex.substr(index, 2)), nullptr, 16));
    }
    return bytes;
}

// Beside the card, an archive that brings it a newer kernel.
class FirmwareFixture : public ProgramFixture
{
protected:
    FirmwareFixture()
    {
        sandbox.write("/tmp/firmware.tar.gz", archiveBytes());
        card.answer(upload, done);
        card.behave(upgrade, [this](const FakeCard::Request&) {
            card.answer(versions, says(versionsXml("KERN-7.0.0")));
            return done;
        });
    }

    // The card has the archive, does with it what it would, and is not heard of it.
    void upgradeUnconfirmed(const FakeCard::Answer& instead, const FakeCard::Answer& afterwards)
    {
        card.behave(upgrade, [this, instead, afterwards](const FakeCard::Request&) {
            card.answer(versions, afterwards);
            return instead;
        });
    }

    int upgradeExpecting(const std::string& expected)
    {
        sandbox.write("/tmp/expected", expected);
        return run(
            {"-o", "json", "firmware", "upgrade", "--expect", sandbox.path("/tmp/expected"), archive, "127.0.0.1"});
    }

    const FakeCard::Answer old = says(versionsXml("KERN-6.1.0"));
    const FakeCard::Answer upgraded = says(versionsXml("KERN-7.0.0"));
    const FakeCard::Answer silence{.keepsSilent = true};
    std::string archive = sandbox.path("/tmp/firmware.tar.gz");
};
