// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/RealShell.h"

#include "support/FakeSystem.h"

#include <cstdio>
#include <cstdlib>

RealShell::RealShell()
{
    FakeSystem::current().runForReal(FakeSystem::Shell{&std::system, &::popen, &::pclose});
}

RealShell::~RealShell()
{
    FakeSystem::current().runForReal(std::nullopt);
}
