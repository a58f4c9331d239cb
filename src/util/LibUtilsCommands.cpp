// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "util/Report.h"
#include "util/Shell.h"

#include <array>
#include <cstdio>

#include <fcntl.h>

namespace
{

constexpr const char* commandFailed = "system() FAILED: ";

void appendAll(std::FILE* pipe, std::string& output)
{
    std::array<char, 1024> piece;
    while (std::fgets(piece.data(), static_cast<int>(piece.size()), pipe) != nullptr) {
        output += piece.data();
    }
}

} // namespace

int LibUtils::executeCommand(const std::string& command)
{
    const int status = runShell(command);
    if (status == -1) {
        reportErrno(commandFailed);
        return -1;
    }
    // On purpose: how the command ended is not asked, so one killed by a signal counts as a success.
    return exitCode(status);
}

int LibUtils::executeCommandOutput(const std::string& command, std::string& output)
{
    std::FILE* pipe = popen(shellText(command).c_str(), "r"); // NOLINT(cert-env33-c)
    if (pipe == nullptr) {
        reportErrno("popen() FAILED: ");
        return -1;
    }
    fcntl(fileno(pipe), F_SETFD, FD_CLOEXEC);
    appendAll(pipe, output);

    const int status = pclose(pipe);
    if (status == -1) {
        reportErrno(commandFailed);
        return -1;
    }
    return exitCode(status);
}

int LibUtils::executeCommandToFile(std::string& command, const std::string& file)
{
    command += " > " + file + " 2>&1";
    return executeCommand(command);
}

int LibUtils::executeCommandAppendToFile(std::string& command, const std::string& file)
{
    command += " >> " + file + " 2>&1";
    return executeCommand(command);
}

int LibUtils::extractArchive(const char* archive, const char* directory)
{
    const std::string from = archive;
    const std::string to = directory;
    reportProgress("Extracting files from " + from + " to " + to);
    if (runShell("tar -xzvf " + from + " -C " + to) != 0) {
        reportFailure("Extracting files from archive failed");
        return -1;
    }
    return 0;
}
