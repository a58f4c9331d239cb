// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Target.h"
#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"
#include "client/wire/Network.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Who answers as a name, and where.

// The phase of the question.
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

// Where a card that was heard from this address is reached over TCP; throws if that is no address.
[[nodiscard]] Endpoint endpointOf(const std::string& card, const std::string& address);

// The address of a target for TCP: the one that is known, or the source of the card's IP configuration reply, be it a
// refusal, which is asked for if it has not been heard yet. Throws if that is no address.
Task<Endpoint> locate(Network& network, const Target& target);
