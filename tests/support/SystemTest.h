// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/CapturedLog.h"
#include "support/CapturedOutput.h"
#include "support/FakeClock.h"
#include "support/FakeSystem.h"
#include "support/FakeUci.h"
#include "support/Journal.h"
#include "support/Sandbox.h"
#include "support/Script.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

// What calls, commands and log lines are compared with.
using Texts = std::vector<std::string>;
using Lines = std::vector<CapturedLog::Line>;

// The fixture of every test whose code reaches the system: a card of its own, new for each test.
//
//     using TimeReferenceTest = SystemTest;
//     TEST_F(TimeReferenceTest, RemovesTheReplicationFile) { ... }
//
// A script (failNext and its like) that no call has used up fails the test: it would have tested nothing.
class SystemTest : public testing::Test
{
protected:
    SystemTest();
    ~SystemTest() override;

    Sandbox sandbox;
    FakeSystem shell;
    FakeUci uci{shell};
    FakeClock clock;
    CapturedLog log;
};
