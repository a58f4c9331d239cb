// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Fold.h"

#include "client/targets/Ranges.h"

#include <algorithm>
#include <string>

namespace
{

bool sameAnswer(const Result& one, const Result& other)
{
    return one.code == other.code && one.category == other.category && one.phase == other.phase &&
           one.hint == other.hint && one.fields == other.fields && one.list == other.list;
}

struct Group {
    Result answer;
    std::vector<std::string> targets;
};

} // namespace

std::vector<Result> fold(std::vector<Result> results)
{
    std::vector<Group> groups;
    for (Result& result : results) {
        const auto found = std::find_if(groups.begin(), groups.end(),
                                        [&](const Group& group) { return sameAnswer(group.answer, result); });
        Group& group = found == groups.end() ? groups.emplace_back(Group{result, {}}) : *found;
        group.targets.push_back(result.target);
    }
    std::vector<Result> folded;
    for (Group& group : groups) {
        group.answer.target = foldRanges(group.targets);
        folded.push_back(std::move(group.answer));
    }
    return folded;
}
