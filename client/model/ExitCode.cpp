// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/ExitCode.h"

#include <array>

namespace
{

constexpr std::array statuses = {
    ExitStatus{ExitCode::ok, "all well, or nothing to do"},
    ExitStatus{ExitCode::internal, "internal error"},
    ExitStatus{ExitCode::usage, "wrong command line, or a change that needs --yes or --force"},
    ExitStatus{ExitCode::refusedByCard, "refused by the card (status 2); the card's log has the reason"},
    ExitStatus{ExitCode::protocol, "protocol: status 3 to 6, or an answer that makes no sense"},
    ExitStatus{ExitCode::noAnswer, "connected or sent, but no answer in time"},
    ExitStatus{ExitCode::unreachable, "connection refused, no route, or no connection in time"},
    ExitStatus{ExitCode::verification,
               "verification failed: the card answered well, but is not what it was told to be"},
    ExitStatus{ExitCode::mixed, "several targets with different outcomes; if all ended alike, their common status"},
    ExitStatus{ExitCode::differs, "a difference was found"},
    ExitStatus{ExitCode::badFile, "a local file is missing or bad"},
    ExitStatus{ExitCode::ambiguous, "ambiguous: another card could be meant; nothing was sent"},
    ExitStatus{ExitCode::interrupted, "interrupted"},
};

} // namespace

std::span<const ExitStatus> exitStatuses()
{
    return statuses;
}
