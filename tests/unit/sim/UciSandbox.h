// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/CommandLine.h"
#include "sim/uci/Files.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

// The tool with directories of its own, which are gone after the test.
class UciSandbox : public testing::Test
{
protected:
    UciSandbox()
    {
        std::string pattern = testing::TempDir() + "uci.XXXXXX";
        root = ::mkdtemp(pattern.data());
        makeDirectory(configs());
    }

    ~UciSandbox() override
    {
        for (const std::string& directory : {configs(), staged()}) {
            for (const std::string& name : listFiles(directory)) {
                ::unlink((directory + "/" + name).c_str());
            }
            ::rmdir(directory.c_str());
        }
        ::rmdir(root.c_str());
    }

    std::string configs() const { return root + "/config"; }
    std::string staged() const { return root + "/staged"; }

    void writeConfig(const std::string& name, const std::string& text)
    {
        std::ofstream(configs() + "/" + name) << text;
    }
    std::string config(const std::string& name) const { return readFile(configs() + "/" + name).value_or("(none)"); }

    ToolResult uci(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"-c", configs(), "-t", staged()});
        return runTool(arguments);
    }

    std::string output(const std::vector<std::string>& arguments) const
    {
        const ToolResult result = uci(arguments);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.status, 0);
        return result.output;
    }

private:
    std::string root;
};
