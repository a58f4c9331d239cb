// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "sim/uci/CommandLine.h"
#include "sim/uci/Files.h"

// The tool with directories of its own, which are gone after the test.
class UciSandbox : public testing::Test
{
protected:
    UciSandbox()
    {
        std::string pattern = testing::TempDir() + "uci.XXXXXX";
        root = ::mkdtemp(pattern.data());
        sim::makeDirectory(configs());
    }

    ~UciSandbox() override
    {
        for (const std::string& directory : {configs(), staged()}) {
            for (const std::string& name : sim::listFiles(directory))
                sim::removeFile(directory + "/" + name);
            ::rmdir(directory.c_str());
        }
        ::rmdir(root.c_str());
    }

    std::string configs() const { return root + "/config"; }
    std::string staged() const { return root + "/staged"; }

    void writeConfig(const std::string& name, const std::string& text)
    {
        sim::replaceFile(configs() + "/" + name, text);
    }
    std::string config(const std::string& name) const
    {
        return sim::readFile(configs() + "/" + name).value_or("(none)");
    }

    sim::ToolResult uci(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"-c", configs(), "-t", staged()});
        return sim::runTool(arguments);
    }

    std::string output(const std::vector<std::string>& arguments) const
    {
        const sim::ToolResult result = uci(arguments);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(result.status, 0);
        return result.output;
    }

private:
    std::string root;
};
