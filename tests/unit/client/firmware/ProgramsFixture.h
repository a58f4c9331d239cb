// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/Environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// A folder of its own, in which alone programs are looked for.
class ProgramsFixture : public testing::Test
{
protected:
    ~ProgramsFixture() override { std::filesystem::remove_all(directory); }

    [[nodiscard]] std::string file(const std::string& name) const { return directory + "/" + name; }

    void install(const std::string& name, const std::string& script) const
    {
        std::ofstream(file(name)) << "#!/bin/sh\n" << script << '\n';
        std::filesystem::permissions(file(name), std::filesystem::perms::owner_all);
    }

    [[nodiscard]] std::string read(const std::string& name) const
    {
        std::ifstream stream(file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    static std::string madeDirectory()
    {
        std::string pattern = testing::TempDir() + "programs-XXXXXX";
        return ::mkdtemp(pattern.data());
    }

protected:
    const std::string directory = madeDirectory();

private:
    Environment onlyPath{"PATH", directory};
};
