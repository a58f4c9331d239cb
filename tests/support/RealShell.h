// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// While this object lives, system() and popen() of the production code run their commands for real. Only for tests of
// what a real shell does, with commands that touch nothing; their programs are named in tests/CMakeLists.txt.
class RealShell
{
public:
    RealShell();
    ~RealShell();
    RealShell(const RealShell&) = delete;
    RealShell& operator=(const RealShell&) = delete;
};
