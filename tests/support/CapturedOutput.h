// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdio>
#include <string>

// Everything that the process writes to standard output or standard error while this object lives, by whatever means.
class CapturedOutput
{
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    [[nodiscard]] std::string out() { return output.content(); }
    [[nodiscard]] std::string err() { return error.content(); }

private:
    class Stream
    {
    public:
        explicit Stream(int descriptor);
        ~Stream();
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;

        [[nodiscard]] std::string content();

    private:
        int descriptor;
        int original;
        FILE* file;
    };

    Stream output;
    Stream error;
};
