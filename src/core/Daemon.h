// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// Starts the daemon and serves until the event loop fails. Returns the process's exit status, which is always 1:
// the daemon never ends normally.
int runDaemon();

// Makes writing to a connection that the peer has closed an error of that call instead of the end of the process.
// A failure is logged.
void ignoreBrokenPipe();
