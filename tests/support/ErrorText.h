// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstring>
#include <string>

// `text` and this C library's words for `error`: they differ between libraries, so no test spells them out.
inline std::string errorText(const std::string& text, int error)
{
    return text + std::strerror(error);
}
