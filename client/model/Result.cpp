// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Result.h"

#include <algorithm>

void Result::eachRow(const RowVisitor& visit) const
{
    std::for_each(list.begin(), list.end(), visit);
    if (longList) {
        longList(visit);
    }
}

ExitCode commonCode(const std::vector<Result>& results)
{
    if (results.empty()) {
        return ExitCode::ok;
    }
    const ExitCode first = results.front().code;
    const bool alike =
        std::all_of(results.begin(), results.end(), [&](const Result& one) { return one.code == first; });
    return alike ? first : ExitCode::mixed;
}
