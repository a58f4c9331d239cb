// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/SystemTest.h"

SystemTest::SystemTest()
{
    forgetCalls();
    forgetScripts();
}

SystemTest::~SystemTest()
{
    for (const std::string& call : unusedScripts()) {
        ADD_FAILURE() << "the test told " << call << "() what to do, and it was not called";
    }
    forgetScripts();
}
