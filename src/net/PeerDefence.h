// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// What the hardened build does about a client that keeps the card busy without asking for anything.

// Lets a receive on this connection fail with EAGAIN after 30 s without a byte. Silent, and as good as the system
// allows.
void limitStalls(int connection);

// For a receive that has failed so: logs a warning and ends the connection in both directions. Nothing more can be
// sent, and the next receive finds the end of the stream, whatever the client still sends.
void giveUpStalled(int connection);

// Reads an urgent byte away, which select() would tell of in each pass until ordinary data is read.
void dropUrgentByte(int connection);
