// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Context.h"
#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"
#include "client/messages/TimeReference.h"
#include "client/messages/Versions.h"
#include "client/targets/Targets.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Network.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

// The exchanges that more than one command needs.

// Where a card without an address answers from.
inline constexpr std::string_view noAddress = "0.0.0.0";

// A card's IP configuration, and from where the card sent it.
struct CardIp {
    IpConfiguration configuration;
    std::string address;
    std::string interface;
};

// Any answer to a get, also a refusal: where the card is, whatever it tells. Throws if nobody answers.
Task<CardReply> hearCard(Context& context, std::string card, std::optional<Patience> patience = {});

// The same, for the first answer with a configuration that satisfies the condition.
Task<CardReply> hearCardThat(Context& context, std::string card, std::function<bool(const CardReply&)> isWanted,
                             std::optional<Patience> patience);

// What is in such an answer; throws if it is a refusal, or makes no sense.
[[nodiscard]] IpConfiguration ipConfigurationIn(const CardReply& answer);

Task<CardIp> getIpConfiguration(Context& context, std::string card, std::optional<Patience> patience = {});

// The address of a target for TCP: the one that is known, or the source of the card's IP configuration reply, be it a
// refusal. Throws if that is no address.
Task<Endpoint> locate(Context& context, const Target& target);

Task<Versions> getVersions(Context& context, Endpoint endpoint);
Task<TimeReference> getTimeReference(Context& context, Endpoint endpoint);
