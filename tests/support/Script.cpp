// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/Script.h"

#include <deque>
#include <map>
#include <optional>

namespace
{

struct Script {
    std::deque<Step> next;
    std::optional<Step> always;
    bool alwaysUsed = false;
};

using Scripts = std::map<std::string, Script, std::less<>>;

Scripts& scripts()
{
    static Scripts all;
    return all;
}

void append(std::string_view call, Step step)
{
    scripts()[std::string(call)].next.push_back(step);
}

} // namespace

void failNext(std::string_view call, int error)
{
    append(call, {Step::Kind::fail, error});
}

void failAlways(std::string_view call, int error)
{
    scripts()[std::string(call)].always = Step{Step::Kind::fail, error};
}

void returnNext(std::string_view call, long result)
{
    append(call, {Step::Kind::result, result});
}

void limitNext(std::string_view call, std::size_t bytes)
{
    append(call, {Step::Kind::limit, static_cast<long>(bytes)});
}

void passNext(std::string_view call, int times)
{
    for (int i = 0; i < times; ++i) {
        append(call, {});
    }
}

void forgetScripts()
{
    scripts().clear();
}

std::vector<std::string> unusedScripts()
{
    std::vector<std::string> unused;
    for (const auto& [call, script] : scripts()) {
        if (!script.next.empty() || (script.always && !script.alwaysUsed)) {
            unused.push_back(call);
        }
    }
    return unused;
}

Step nextStep(std::string_view call)
{
    const auto found = scripts().find(call);
    if (found == scripts().end()) {
        return {};
    }
    Script& script = found->second;
    if (script.next.empty()) {
        script.alwaysUsed = true;
        return script.always.value_or(Step{});
    }
    const Step step = script.next.front();
    script.next.pop_front();
    return step;
}
