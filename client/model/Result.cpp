// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Result.h"

#include <algorithm>
#include <cctype>

namespace
{

bool isOfName(char letter)
{
    return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '-' || letter == '_' || letter == '.';
}

// A name that is a part of another word is none there; a dot behind it may end a sentence.
bool isWord(const std::string& text, std::size_t at, std::size_t size)
{
    const std::size_t end = at + size;
    const bool endsThere = end == text.size() || !isOfName(text[end]) ||
                           (text[end] == '.' && (end + 1 == text.size() || !isOfName(text[end + 1])));
    return endsThere && (at == 0 || !isOfName(text[at - 1]));
}

} // namespace

std::string Result::hintAbout(std::string_view name) const
{
    std::string text = hint;
    for (std::size_t at = text.find(target); !target.empty() && at != std::string::npos; at = text.find(target, at)) {
        if (isWord(text, at, target.size())) {
            text.replace(at, target.size(), name);
            // Behind what was put in, which may contain the target again.
            at += name.size();
        } else {
            ++at;
        }
    }
    return text;
}

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
