// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Program.h"

int main(int argc, char** argv)
{
    return runProgram(argc, argv);
}
