// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/NtpServerRule.h"

bool isPlainHost(std::string_view text)
{
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.:_-";
    return !text.empty() && !text.starts_with('-') && text.find_first_not_of(allowed) == std::string_view::npos;
}
