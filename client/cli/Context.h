// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

class Console;
class EventLoop;
class Inventory;
class Network;
class Writer;
struct GlobalOptions;

// What a command works with.
struct Context {
    const GlobalOptions& options;
    EventLoop& loop;
    Console& console;           // people: progress, warnings, failures; on stderr
    Writer& writer;             // data; on stdout
    Network& network;           // requests and their answers
    const Inventory& inventory; // names, addresses and groups the user wrote down
};
