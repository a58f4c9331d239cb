// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include <iostream>

int main()
{
    std::cout << "hello, world\n";
}
