// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/PrivateFolder.h"

#include <cstdint>
#include <span>
#include <string>

// The client's check of archives, which is fed with anything at all. What has gone wrong is returned, as in FuzzedCard.
class FuzzedArchive
{
public:
    // A file as it is if the first byte is even, else an archive that is compressed first, and whose headers get right
    // checksums. What it is looked through without a complaint holds nothing that must not be on a card.
    std::string feedArchive(std::span<const std::uint8_t> bytes);

private:
    PrivateFolder folder;
};
