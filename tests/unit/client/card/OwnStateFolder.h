// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fmt/core.h>
#include <gtest/gtest.h>
#include <unistd.h>

// The fixture of what the client writes down: as on a machine where it has written nothing yet.
class OwnStateFolder : public testing::Test
{
protected:
    OwnStateFolder()
    {
        std::filesystem::remove_all(folder);
        ::setenv("XDG_STATE_HOME", folder.c_str(), 1);
    }
    ~OwnStateFolder() override
    {
        ::unsetenv("XDG_STATE_HOME");
        std::filesystem::remove_all(folder);
    }

    // Of this process alone: tests run side by side.
    const std::filesystem::path folder = testing::TempDir() + fmt::format("tarvelctl-state-{}", ::getpid());
};
