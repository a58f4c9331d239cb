// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Wait statuses as system() and pclose() return them.
[[nodiscard]] constexpr int exitStatus(int code)
{
    return code << 8;
}

[[nodiscard]] constexpr int killedBy(int signal)
{
    return signal;
}

// Stands for the shell: notes each command given to system() and popen() down and runs none of them.
//
// An answer is a wait status and what the command prints. A trailing "> FILE" or ">> FILE" (also with "2>&1" behind)
// sends that text to FILE in the sandbox, as the shell would; popen() gives it to the reader. Answers for a certain
// command come first, then those given with answerNext(), then status 0 and no text.
class FakeSystem
{
public:
    struct Answer {
        int status = 0; // of which -1 means that the shell itself could not be started, with this errno
        std::string output;
        int error = 0;
    };
    using Responder = std::function<std::optional<Answer>(std::string_view command)>;

    FakeSystem();
    ~FakeSystem();
    FakeSystem(const FakeSystem&) = delete;
    FakeSystem& operator=(const FakeSystem&) = delete;

    void answer(const std::string& command, int status, std::string output = {});
    void answerNext(int status, std::string output = {});
    void failToStart(int error); // the next command that has no answer of its own: -1 and errno
    void respondWith(Responder other);

    // Every command so far, in order, exactly as it was given to the shell.
    [[nodiscard]] static std::vector<std::string> commands();

    // For the fakes only.
    struct Shell {
        int (*system)(const char*);
        FILE* (*popen)(const char*, const char*);
        int (*pclose)(FILE*);
    };
    static FakeSystem& current();
    [[nodiscard]] Answer answerTo(const std::string& command);
    void runForReal(std::optional<Shell> shell) { real = shell; }
    [[nodiscard]] const std::optional<Shell>& realShell() const { return real; }

private:
    std::map<std::string, Answer, std::less<>> certain;
    std::deque<Answer> next;
    Responder responder;
    std::optional<Shell> real;
};
