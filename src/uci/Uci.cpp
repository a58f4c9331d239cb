// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "uci/Uci.h"

#include "util/LibUtils.h"
#include "util/Report.h"
#include "util/Shell.h"

namespace
{

constexpr const char* outputFile = "/tmp/uci.tmp";

int refuse(const char* operation)
{
    reportFailure(std::string(operation) + "() not implemented yet");
    return -1;
}

} // namespace

int Uci::verbosity = 0;

Uci::~Uci() = default;

int Uci::Execute(const std::string& args)
{
    const std::string command = (verbosity == 0 ? "uci -q " : "uci ") + args;
    if (verbosity > 1) {
        reportProgress("Executing: " + command);
    }

    // Nothing but the whole status 0 is success: a tool that a signal killed has changed nothing for certain.
    const int status = runShell(command);
    if (status == -1) {
        reportErrno("system() FAILED: ");
        return -1;
    }
    if (status != 0) {
        if (verbosity > 0) {
            reportFailure(command + " FAILED");
        }
        return -1;
    }
    return 0;
}

int Uci::Get(const std::string& key, std::string& value)
{
    // Through a file: the shell gives nothing back but a status.
    if (Execute("get " + key + " > " + outputFile) == -1) {
        return -1;
    }
    return LibUtils::readFirstLine(value, outputFile);
}

int Uci::Set(const std::string& key, const std::string& value)
{
    return Execute("set " + key + "=" + value);
}

int Uci::Delete(const std::string& key)
{
    return Execute("delete " + key);
}

int Uci::Changes(const std::string& name)
{
    return Execute("changes " + name);
}

int Uci::Commit(const std::string& name)
{
    return Execute("commit " + name);
}

int Uci::Revert(const std::string& name)
{
    return Execute("revert " + name);
}

int Uci::Export()
{
    return refuse("Export");
}

int Uci::Import()
{
    return refuse("Import");
}

int Uci::Show()
{
    return refuse("Show");
}

int Uci::Rename()
{
    return refuse("Rename");
}
