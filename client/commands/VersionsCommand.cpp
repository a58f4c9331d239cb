// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/cli/Context.h"
#include "client/cli/LocalFile.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"
#include "client/commands/VersionsReport.h"
#include "client/output/Console.h"
#include "client/plan/VersionsDiff.h"

#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <map>

namespace
{

Failure differs(std::string phase, std::string hint)
{
    return {ExitCode::differs, Category::differs, std::move(phase), std::move(hint)};
}

class VersionsCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "versions"; }
    [[nodiscard]] std::vector<Column> columns() const override
    {
        std::vector<Column> all = {{"component"}, {"version"}};
        if (expectFile) {
            all.emplace_back("expected");
        }
        return all;
    }

    void declareOwn(OptionSet& options) override
    {
        options.flag("--diff", diff, "show only the components that differ between the cards");
        options.value("--expect", &expectFile, "FILE", "compare with this file: a component and its version a line");
    }

    void prepare(Context& /*context*/, const std::vector<Target>& targets) override
    {
        if (diff && targets.size() < 2) {
            throw usageFailure("--diff compares cards: give at least two");
        }
        if (expectFile) {
            expected = parseExpectedVersions(readLocalFile(*expectFile), *expectFile);
        }
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        const Endpoint endpoint = co_await locate(context.network, target);
        const Versions versions = co_await queryVersions(context.network, endpoint);
        report(versions, result);
        // Kept apart from what is printed, which a comparison cuts down.
        seen[target.label] = versions.components;
        if (expectFile) {
            compareWithExpected(versions, result);
        }
    }

    [[nodiscard]] bool comparesTargets() const override { return diff; }

    void finish(Context& context, std::vector<Result>& results) override
    {
        if (diff) {
            showDifferences(context, results);
        }
    }

private:
    void compareWithExpected(const Versions& versions, Result& result) const
    {
        const std::vector<Component> unmet = unmetExpectations(versions.components, expected);
        result.list.clear();
        std::vector<std::string> ids;
        for (const Component& component : unmet) {
            const std::optional<std::string> version = versionOf(versions.components, component.id);
            result.list.push_back({{"component", component.id},
                                   {"version", version ? Cell(*version) : Cell()},
                                   {"expected", component.version}});
            ids.push_back(component.id);
        }
        // Thrown last: the list of what differs belongs to the failure.
        if (!unmet.empty()) {
            throw differs("comparing with the expected versions",
                          fmt::format("not as expected: {}", fmt::join(ids, ", ")));
        }
    }

    void showDifferences(Context& context, std::vector<Result>& results) const
    {
        std::vector<std::vector<Component>> cards;
        cards.reserve(seen.size());
        for (const auto& [label, components] : seen) {
            cards.push_back(components);
        }
        const std::vector<std::string> differing = differingComponents(cards);
        for (Result& result : results) {
            // Who did not answer differs in nothing that is known.
            if (seen.contains(result.target)) {
                keepDiffering(seen.at(result.target), differing, result);
            }
        }
        if (differing.empty()) {
            context.console.note(fmt::format("{} cards have the same versions", cards.size()));
        }
    }

    static void keepDiffering(const std::vector<Component>& components, const std::vector<std::string>& differing,
                              Result& result)
    {
        result.list.clear();
        for (const std::string& id : differing) {
            const std::optional<std::string> version = versionOf(components, id);
            result.list.push_back({{"component", id}, {"version", version ? Cell(*version) : Cell()}});
        }
        // A card that failed in another way keeps that failure.
        if (result.ok() && !differing.empty()) {
            result.fail(
                differs("comparing the cards", fmt::format("the cards differ in {}", fmt::join(differing, ", "))));
        }
    }

    bool diff = false;
    std::optional<std::string> expectFile;
    std::vector<Component> expected;
    std::map<std::string, std::vector<Component>> seen; // by target
};

} // namespace

std::unique_ptr<Command> makeVersions()
{
    return std::make_unique<VersionsCommand>();
}
