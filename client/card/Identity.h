// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Target.h"
#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"
#include "client/wire/HostInterfaces.h"
#include "client/wire/Network.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Who answers as a name, and where.

// The phases of finding a card, and of the question.
inline constexpr const char* lookingForCard = "looking for the card";
inline constexpr const char* waitingForIp = "waiting for the IP configuration";

// Where a card without an address answers from.
inline constexpr std::string_view noAddress = "0.0.0.0";

// Any answer to an IP configuration get, also a refusal: where the card is, whatever it tells. Throws if nobody
// answers. Without a policy it is the user's.
Task<CardReply> queryCard(Network& network, std::string card, std::optional<RetryPolicy> policy = {});

// The same, for the first answer with a configuration that satisfies the condition.
Task<CardReply> queryCardUntil(Network& network, std::string card, std::function<bool(const CardReply&)> isWanted,
                               std::optional<RetryPolicy> policy);

// Does the reply tell the card's own configuration? One whose text cannot be read is taken for it; reading it again
// then tells what is wrong.
[[nodiscard]] bool isFrom(const Reply& reply, const std::string& card);

// What is in such an answer; throws if it is a refusal, or makes no sense.
[[nodiscard]] IpConfiguration ipConfigurationIn(const CardReply& answer);

// Where a card that gave this answer is reached over TCP: on the interface that it was heard on, if its address is in a
// network of it. Nothing otherwise; the other one throws. Who asks for many answers hands over one look at the
// interfaces; each call has one of its own otherwise.
[[nodiscard]] std::optional<Endpoint> wayTo(const CardReply& answer, const HostInterfaces& here = {});
[[nodiscard]] Endpoint endpointOf(const std::string& card, const CardReply& answer, const HostInterfaces& here = {});

// The same for all answers to a target's name, of which there are some: a noted address that is among them keeps its
// port.
[[nodiscard]] Endpoint settledEndpoint(const Target& target, const std::vector<CardReply>& answers,
                                       const HostInterfaces& here);

// Puts those that a way leads to first: a card may also answer from an address that does not fit its network here.
void preferReachable(std::vector<CardReply>& answers, const HostInterfaces& here);

// The first answer, or another of that card that a way leads to. Fails only if this machine cannot ask.
Task<CardReply> reachableAnswer(Network& network, std::string card, CardReply first);

// The address of a target for TCP: the one that is known, or the source of the card's IP configuration reply, be it a
// refusal, which is asked for if it has not been heard yet. Throws if no way leads there.
Task<Endpoint> locate(Network& network, const Target& target);
