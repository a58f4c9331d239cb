// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Command.h"

#include <memory>

// One maker per command, each defined at the end of the command's own file; the table of commands is their only user.
std::unique_ptr<Command> makeCompletion();
std::unique_ptr<Command> makeDecode();
std::unique_ptr<Command> makeDiscover();
std::unique_ptr<Command> makeFirmwareCheck();
std::unique_ptr<Command> makeFirmwareUpgrade();
std::unique_ptr<Command> makeFirmwareUpload();
std::unique_ptr<Command> makeIpGet();
std::unique_ptr<Command> makeIpRescue();
std::unique_ptr<Command> makeIpSet();
std::unique_ptr<Command> makeRaw();
std::unique_ptr<Command> makeReboot();
std::unique_ptr<Command> makeStatus();
std::unique_ptr<Command> makeTimeGet();
std::unique_ptr<Command> makeTimeSet();
std::unique_ptr<Command> makeVersions();
