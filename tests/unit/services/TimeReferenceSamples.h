// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <ctime>
#include <string>

// One moment, as the clock has it and as the messages write it.
inline constexpr std::time_t sampleMoment = 1614834367;
inline const std::string sampleDateTime = "2021-03-04T05:06:07";

inline std::string timeReference(const std::string& mode, const std::string& server)
{
    return "<TimeReferenceConfiguration Mode=\"" + mode + "\" NtpServer=\"" + server + "\" DateTime=\"" +
           sampleDateTime + "\"/>";
}
