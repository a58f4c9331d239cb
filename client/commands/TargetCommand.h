// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Renewal.h"
#include "client/cli/Command.h"
#include "client/engine/Task.h"
#include "client/model/Result.h"
#include "client/output/Columns.h"
#include "client/targets/Targets.h"

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

class Report;

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
    // What a table and CSV have beside the outcome: the same for all cards, whatever they say.
    [[nodiscard]] virtual std::vector<Column> columns() const = 0;
    [[nodiscard]] virtual Takes takes() const { return Takes::namesOrAddresses; }
    // How its changes reach the cards.
    [[nodiscard]] virtual Way way() const { return takes() == Takes::namesOnly ? Way::byName : Way::overTcp; }
    // May a network stand for all of its hosts? Not where a slip could change all cards that are there.
    [[nodiscard]] virtual bool takesNetworks() const { return !changesCards(); }
    virtual void declareOwn(OptionSet& /*options*/) {}

    // Does it make a difference which of an address' several names is meant?
    [[nodiscard]] virtual bool namesMatter() const { return takes() == Takes::namesOnly; }
    // The targets without those that the command would do twice.
    [[nodiscard]] virtual std::vector<Target> meant(const Context& /*context*/, std::vector<Target> targets) const
    {
        return targets;
    }

    // Before anything is sent: checks the options, reads local files. Throws usage and badFile Failures.
    virtual void prepare(Context& /*context*/, const std::vector<Target>& /*targets*/) {}

    // Is the name of a target asked for before the job, together with all others? What it told is in Target::heard. A
    // command that changes cards asks with more care, for itself.
    [[nodiscard]] virtual bool looksUpNames() const { return !changesCards(); }
    // Is that asked also of a name whose address was noted, and its silence no obstacle?
    [[nodiscard]] virtual bool asksNotedNames() const { return false; }
    // Does the result say, beside all else, what told the address that the job used?
    [[nodiscard]] virtual bool tellsWhereFrom() const { return takes() == Takes::namesOrAddresses; }
    // After nobody answered by a name: the job is not begun.
    virtual void tellNotFound(Result& /*result*/) {}
    // Jobs that mostly wait: they begin all at once.
    [[nodiscard]] virtual bool isPatient() const { return false; }

    // The job for one target. It fills the result as it learns things; what it throws (Failure, Interrupted) becomes
    // the outcome, and what it had filled in is printed all the same. A Failure without a phase is one of waiting for
    // the answer. `target` and `result` outlive the task.
    virtual Task<void> work(Context& context, const Target& target, Result& result) = 0;

    // For a job whose change may come long after its beginning, as behind a question: see Renewal. Each job is looked
    // at so before it begins.
    Task<void> lookAgain(Context& context, const Target& target);

    // What the jobs heard of names that another card answered, too, each as a sentence that names the senders.
    virtual std::set<std::string> secondAnswers() { return {}; }
    // Each such sentence, of the jobs' lookup, too; it has been told as a warning.
    virtual void takeDoubt(const std::string& /*doubt*/) {}

    // After all targets: compares them, or changes what is printed. The results are in the order of the targets.
    virtual void finish(Context& /*context*/, std::vector<Result>& /*results*/) {}
    // A change begins with so many cards, and goes on to the next only if all of them are well; 0: all at once.
    [[nodiscard]] virtual std::size_t batchSize() const { return 0; }
    // What people are shown before they agree to a change of several cards: of all, and of one of them.
    [[nodiscard]] virtual std::string planTitle(std::size_t cards) const;
    virtual Task<std::string> planOf(Context& context, Target target);

    // What told the address of a target that was given by its name; empty for one that is an address.
    [[nodiscard]] static std::string addressFrom(const Target& target);
    static void addAddressFrom(std::string from, Result& result);

    // True if finish() does something, so that no result is printed before it.
    [[nodiscard]] virtual bool comparesTargets() const { return false; }

private:
    struct Run;

    [[nodiscard]] std::vector<Target> targetsOf(const Context& context) const;
    [[nodiscard]] bool mustLookUp(const Context& context, const Target& target) const;
    [[nodiscard]] bool needsAnswer(const Target& target) const;
    [[nodiscard]] std::vector<std::string> namesToLookUp(const Context& context,
                                                         std::span<const Identified> cards) const;
    // Each card once; before a change, with what is known of it.
    [[nodiscard]] std::vector<Identified> identify(Context& context, std::vector<Target> targets);
    Task<void> planOne(Context& context, Target target, std::pair<std::string, std::string>& line);
    // On a terminal, if several cards are to be changed.
    void askForAgreement(Context& context);
    void workInBatches(Context& context, Report& report, std::vector<Result>& results);
    Task<void> workOnAll(Context& context, Report& report, std::span<Identified> batch, std::span<Result> results);
    void printEarly(Context& context, Report& report, const Result& result) const;
    Task<void> workOnOne(Run& run, Identified& card, Result& result);
    Task<void> lookUpAndWork(Run& run, Identified& card, Result& result);
    void tellHowFound(const Identified& card, Result& result) const;
    [[nodiscard]] std::vector<Column> columnsWhen(bool dryRun) const;
    [[nodiscard]] bool printsAtOnce(const Context& context) const;

    std::vector<std::string> words;
    std::vector<Identified> jobs;   // each card once
    std::optional<Renewal> renewal; // if they are to be changed
};
