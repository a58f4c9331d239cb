// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Reboot.h"
#include "client/cli/Context.h"
#include "client/commands/Commands.h"
#include "client/commands/TargetCommand.h"

#include <optional>

namespace
{

class RebootCommand final : public TargetCommand
{
protected:
    [[nodiscard]] std::string_view name() const override { return "reboot"; }
    [[nodiscard]] std::vector<Column> columns() const override { return {{"state"}, {"down_after"}, {"back_after"}}; }
    [[nodiscard]] Takes takes() const override { return Takes::namesOnly; }
    [[nodiscard]] bool changesCards() const override { return true; }

    void declareOwn(OptionSet& options) override
    {
        options.flag("--wait", wait, "until the card has gone down and come back");
        options.value("--wait-time", &waitTime, "SECONDS", "how long that may take (120)");
    }

    Task<void> work(Context& context, const Target& target, Result& result) override
    {
        Reboot reboot(context.network, target.name);
        const std::optional<Seconds> returnTime = wait ? std::optional(Seconds(waitTime)) : std::nullopt;
        result.changed = std::nullopt; // until the card confirms
        try {
            co_await reboot.run(returnTime);
            // However it ends, what was seen of the card until then is told.
        } catch (...) {
            report(reboot, result);
            result.changed = whatChanged(reboot);
            throw;
        }
        report(reboot, result);
    }

private:
    // Nothing if nobody knows: a card that was told may have stayed up.
    static std::optional<bool> whatChanged(const Reboot& reboot)
    {
        if (reboot.downAfter()) {
            return true;
        }
        return reboot.isSent() ? std::nullopt : std::optional(false);
    }

    static void report(const Reboot& reboot, Result& result)
    {
        if (reboot.isConfirmed() || reboot.backAfter()) {
            result.changed = true;
            result.add("state", reboot.backAfter() ? "back" : "rebooting");
        }
        if (!reboot.isConfirmed() && reboot.backAfter()) {
            result.hint = "the card did not confirm the reboot, but went down and came back";
        }
        if (reboot.downAfter()) {
            result.add("down_after", reboot.downAfter()->count());
        }
        if (reboot.backAfter()) {
            result.add("back_after", reboot.backAfter()->count());
        }
    }

    bool wait = false;
    double waitTime = 120;
};

} // namespace

std::unique_ptr<Command> makeReboot()
{
    return std::make_unique<RebootCommand>();
}
