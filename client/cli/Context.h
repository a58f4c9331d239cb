// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

class Console;
class EventLoop;
class Network;
class Writer;
class CardBook;
struct GlobalOptions;

// What a command works with.
struct Context {
    const GlobalOptions& options;
    EventLoop& loop;
    Console& console;     // people: progress, warnings, failures; on stderr
    Writer& writer;       // data; on stdout
    Network& network;     // requests and their answers
    const CardBook& book; // names, addresses and groups the user wrote down
};
