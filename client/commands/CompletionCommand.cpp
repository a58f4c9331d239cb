// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Command.h"
#include "client/commands/Commands.h"
#include "client/completion/Scripts.h"
#include "client/output/Streams.h"

namespace
{

// Prints a script, which is the same in every output format.
class CompletionCommand final : public Command
{
public:
    void declare(OptionSet& options) override
    {
        options.argument("SHELL", &shell, "bash, zsh or fish").choices = {"bash", "zsh", "fish"};
    }

    ExitCode run(Context& /*context*/) override
    {
        const ProgramShape shape = shapeOfProgram();
        if (shell == "bash") {
            writeData(bashCompletion(shape));
        } else if (shell == "zsh") {
            writeData(zshCompletion(shape));
        } else {
            writeData(fishCompletion(shape));
        }
        return ExitCode::ok;
    }

private:
    std::string shell;
};

} // namespace

std::unique_ptr<Command> makeCompletion()
{
    return std::make_unique<CompletionCommand>();
}
