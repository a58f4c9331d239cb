// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Command.h"
#include "client/engine/Task.h"
#include "client/model/Result.h"
#include "client/targets/Targets.h"

#include <string>
#include <vector>

// The frame of every command that does the same job on each of its targets: expands the targets, runs the jobs at
// once, turns what they throw into the target's outcome, folds and prints the results, tells failures to people, and
// computes the exit code.
class TargetCommand : public Command
{
public:
    void declare(OptionSet& options) final;
    ExitCode run(Context& context) final;

protected:
    // What kind of target the command can work with.
    enum class Takes { namesOrAddresses, namesOnly };

    [[nodiscard]] virtual std::string_view name() const = 0; // as in the table of commands; stands in JSON
    [[nodiscard]] virtual Takes takes() const { return Takes::namesOrAddresses; }
    // A dry run of a command that changes cards still reads what it needs; of any other command it sends nothing.
    [[nodiscard]] virtual bool changesCards() const { return false; }
    virtual void declareOwn(OptionSet& /*options*/) {}

    // Before anything is sent: checks the options, reads local files. Throws usage and badFile Failures.
    virtual void prepare(Context& /*context*/, const std::vector<Target>& /*targets*/) {}

    // The job for one target. It fills the result as it learns things; what it throws (Failure, Interrupted) becomes
    // the outcome, and what it had filled in is printed all the same. `target` and `result` outlive the task.
    virtual Task<void> work(Context& context, const Target& target, Result& result) = 0;

    // After all targets: compares them, or changes what is printed. The results are in the order of the targets.
    virtual void finish(Context& /*context*/, std::vector<Result>& /*results*/) {}
    // True if finish() does something, so that no result is printed before it.
    [[nodiscard]] virtual bool comparesTargets() const { return false; }

private:
    Task<void> workOnAll(Context& context, const std::vector<Target>& targets, std::vector<Result>& results);
    Task<void> workOnOne(Context& context, const Target& target, Result& result);
    [[nodiscard]] bool printsAtOnce(const Context& context) const;
    void print(Context& context, const Result& result) const;

    std::vector<std::string> words;
};
