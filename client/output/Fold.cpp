// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Fold.h"

#include "client/model/Ranges.h"

#include <algorithm>
#include <string>

namespace
{

bool isMeasured(const Field& field)
{
    return std::holds_alternative<double>(field.value); // what was counted is no measure, but an answer
}

bool isAside(const Field& field)
{
    return isMeasured(field) || field.isOwn;
}

// What was measured differs always and does not make another answer.
bool sameFields(const Row& one, const Row& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const Field& left, const Field& right) {
        return left == right || (left.name == right.name && isAside(left) && isAside(right));
    });
}

bool sameHint(const Result& one, const Result& other)
{
    return one.hint == other.hint || one.hintAbout(anyName) == other.hintAbout(anyName);
}

bool sameAnswer(const Result& one, const Result& other)
{
    return one.code == other.code && one.category == other.category && one.phase == other.phase &&
           sameHint(one, other) && one.changed == other.changed && sameFields(one.fields, other.fields) &&
           one.list == other.list && !one.longList && !other.longList;
}

void removeAside(Row& fields)
{
    for (Field& field : fields) {
        if (isAside(field)) {
            field.value = Cell();
        }
    }
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
        // Not only neighbours: what the same cards say must not depend on the order in which they were given.
        const auto found = std::find_if(groups.begin(), groups.end(),
                                        [&](const Group& group) { return sameAnswer(group.answer, result); });
        Group& group = found == groups.end() ? groups.emplace_back(Group{result, {}}) : *found;
        // Hints that differ in the name alone become one, which names nobody.
        if (group.answer.hint != result.hint) {
            group.answer.hint = result.hintAbout(anyName);
        }
        group.targets.push_back(result.target);
    }
    std::vector<Result> folded;
    folded.reserve(groups.size());
    for (Group& group : groups) {
        group.answer.target = foldRanges(group.targets);
        if (group.targets.size() > 1) {
            removeAside(group.answer.fields);
        }
        folded.push_back(std::move(group.answer));
    }
    return folded;
}
