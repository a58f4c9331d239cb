// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>

// The only way to the card's persistent settings: each operation composes one command line for the `uci` tool and
// runs it through the shell. Keys are in the tool's dotted notation, for example "system.ntp.server". Keys and
// values reach the shell as they stand, unquoted on purpose; callers pass plain names and addresses.
//
// All operations return 0 for success and -1 for failure. Set and Delete only stage a change, Commit writes staged
// changes, Revert drops them. An empty configuration name means all configurations.
class Uci
{
public:
    Uci() = default;
    virtual ~Uci();

    // 0: the tool is told to be quiet and failures are silent (the daemon stays here);
    // 1: failing commands are reported on standard error; 2: commands are also echoed on standard output.
    static int verbosity;

    static int Execute(const std::string& args);

    // Stores the first line of the setting in `value`, staged changes included. When the tool fails, as for a
    // missing key, `value` is left unchanged. Goes through "/tmp/uci.tmp", which is left behind.
    static int Get(const std::string& key, std::string& value);

    static int Set(const std::string& key, const std::string& value);
    static int Delete(const std::string& key);

    // Lists staged changes on standard output.
    static int Changes(const std::string& name);
    static int Commit(const std::string& name);
    static int Revert(const std::string& name);

    // Not implemented: they say so on standard error and return -1.
    static int Export();
    static int Import();
    static int Show();
    static int Rename();
};
