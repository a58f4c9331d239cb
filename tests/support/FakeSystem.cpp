// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/FakeSystem.h"

#include "support/Journal.h"
#include "support/Replaced.h"
#include "support/Sandbox.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

namespace
{

// The hardened build has its own words in front of every command; tests see the rest.
#ifdef TARVELD_HARDENED
constexpr std::string_view prefix = "set -f; ";
#else
constexpr std::string_view prefix;
#endif

const char* withoutPrefix(const char* command)
{
    EXPECT_TRUE(std::string_view(command).starts_with(prefix)) << "a command without \"" << prefix << "\": " << command;
    return std::string_view(command).starts_with(prefix) ? command + prefix.size() : command;
}

FakeSystem* activeShell = nullptr;
std::map<FILE*, int> pipes; // what popen() returned -> status for pclose()

struct Redirection {
    std::string file;
    bool append = false;
};

// The file a shell command sends its output to, if it ends in a redirection.
std::optional<Redirection> redirectionOf(std::string_view command)
{
    constexpr std::string_view both = " 2>&1";
    if (command.ends_with(both)) {
        command.remove_suffix(both.size());
    }
    const auto mark = command.rfind('>');
    if (mark == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view behind = command.substr(mark + 1);
    const auto start = behind.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    const bool append = mark > 0 && command[mark - 1] == '>';
    return Redirection{std::string(behind.substr(start)), append};
}

// What a peer writes into a setting is part of a command, too, and may name any file: nothing is written to that.
void deliver(const FakeSystem::Answer& answer, const std::string& command)
{
    const auto target = redirectionOf(command);
    if (target && isSandboxed(target->file.c_str())) {
        const auto mode = target->append ? std::ios::app : std::ios::trunc;
        std::ofstream(sandboxed(target->file.c_str()), std::ios::out | mode) << answer.output;
    }
}

FakeSystem::Answer run(const char* call, const char* command)
{
    recordCall(call, command);
    FakeSystem::Answer answer = FakeSystem::current().answerTo(command);
    if (answer.status == -1) {
        errno = answer.error;
    } else {
        deliver(answer, command);
    }
    return answer;
}

FILE* pipeWith(const FakeSystem::Answer& answer)
{
    FILE* pipe = std::tmpfile();
    std::fwrite(answer.output.data(), 1, answer.output.size(), pipe);
    std::rewind(pipe);
    pipes[pipe] = answer.status;
    return pipe;
}

} // namespace

FakeSystem::FakeSystem()
{
    activeShell = this;
}

FakeSystem::~FakeSystem()
{
    activeShell = nullptr;
}

FakeSystem& FakeSystem::current()
{
    if (activeShell == nullptr) {
        std::fputs("a shell command would be run on this machine: the test has no FakeSystem (use SystemTest)\n",
                   stderr);
        std::abort();
    }
    return *activeShell;
}

void FakeSystem::answer(const std::string& command, int status, std::string output)
{
    certain[command] = {status, std::move(output)};
}

void FakeSystem::answerNext(int status, std::string output)
{
    next.push_back({status, std::move(output)});
}

void FakeSystem::failToStart(int error)
{
    next.push_back({-1, {}, error});
}

void FakeSystem::respondWith(Responder other)
{
    responder = std::move(other);
}

std::vector<std::string> FakeSystem::commands()
{
    std::vector<std::string> all;
    for (const std::string& line : orderOf({"system", "popen"})) {
        all.push_back(line.substr(line.find(": ") + 2));
    }
    return all;
}

FakeSystem::Answer FakeSystem::answerTo(const std::string& command)
{
    if (const auto found = certain.find(command); found != certain.end()) {
        return found->second;
    }
    if (responder) {
        if (auto answer = responder(command)) {
            return *answer;
        }
    }
    if (next.empty()) {
        return {};
    }
    Answer answer = std::move(next.front());
    next.pop_front();
    return answer;
}

extern "C" int fake_system(const char* command)
{
    if (const auto& shell = FakeSystem::current().realShell()) {
        recordCall("system", withoutPrefix(command));
        return shell->system(command);
    }
    return run("system", withoutPrefix(command)).status;
}

extern "C" FILE* fake_popen(const char* command, const char* mode)
{
    if (const auto& shell = FakeSystem::current().realShell()) {
        recordCall("popen", withoutPrefix(command));
        return shell->popen(command, mode);
    }
    const FakeSystem::Answer answer = run("popen", withoutPrefix(command));
    return answer.status == -1 ? nullptr : pipeWith(answer);
}

extern "C" int fake_pclose(FILE* pipe)
{
    if (const auto& shell = FakeSystem::current().realShell()) {
        return shell->pclose(pipe);
    }
    const int status = pipes.at(pipe);
    pipes.erase(pipe);
    std::fclose(pipe);
    return replaced("pclose", {}, -1, [&] { return status; });
}
