// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/Contents.h"

#include <string>
#include <string_view>

inline std::string digestOfText(std::string_view text)
{
    Sha256 digest;
    digest.add(std::as_bytes(std::span(text)));
    return inHexadecimal(digest.finish());
}

// As if an archive had this file next.
inline void putFile(Contents& contents, const std::string& path, std::string_view text)
{
    contents.begin({path, MemberKind::file, static_cast<std::int64_t>(text.size()), "", false});
    contents.add(0, std::as_bytes(std::span(text)));
    contents.end();
}
