// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/model/Failure.h"
#include "client/wire/Network.h"

#include <optional>
#include <string>

// Reboots one card and, if that is wanted, sees it go down and come back. Lives as long as its task.
class Reboot
{
public:
    Reboot(Network& newNetwork, std::string newName) : network(newNetwork), name(std::move(newName)) {}

    // With a time: ends when the card is back, which must be by then. Throws a Failure; an interruption becomes one
    // that says whether the card reboots all the same. If the card does not confirm, it is watched for as long again.
    Task<void> run(std::optional<Seconds> waitTime);

    // How far it got.
    [[nodiscard]] bool isSent() const { return sent.has_value(); }
    [[nodiscard]] bool isConfirmed() const { return confirmed; }
    [[nodiscard]] std::optional<Seconds> downAfter() const { return down; }
    [[nodiscard]] std::optional<Seconds> backAfter() const { return back; }

private:
    Task<std::optional<Endpoint>> openPortOf(const CardReply& card);
    Task<bool> send(std::string interface);
    Task<void> readBack(const CardReply& card, std::optional<Endpoint> openPort, std::optional<Seconds> waitTime);
    Task<void> seeThrough(std::optional<Endpoint> openPort, Seconds waitTime);
    Task<bool> seeItGoDown(std::optional<Endpoint> openPort, TimePoint end);
    Task<void> seeItComeBack(TimePoint end);
    Task<bool> answers(std::optional<Endpoint> openPort);
    Task<bool> answersByName(RetryPolicy policy);

    Network& network;
    std::string name;
    std::string phase = "asking for the reboot";
    bool confirmed = false;
    std::optional<TimePoint> sent;
    std::optional<Seconds> down;
    std::optional<Seconds> back;
    std::optional<Failure> hindrance; // why this machine could not look at the card for a while
};
