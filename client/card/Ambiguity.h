// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Network.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Are the answers to a name, by IP configuration get, those of one card? They are if all say the same and each
// interface here heard one of them for each request. Where an interface heard more, from one sender they are two cards:
// twins differ in nothing but the count. From several they are one card with both ports in one network if its
// configuration has these addresses. Otherwise the result says why not, and names the senders.
[[nodiscard]] std::optional<std::string> ambiguityOf(const std::vector<CardReply>& answers);

// Do two answers say the same, word for word?
[[nodiscard]] bool saysTheSame(const CardReply& one, const CardReply& other);

// "10.0.0.11 on lan0 and 10.0.0.12 on lan0"
[[nodiscard]] std::string sendersOf(const std::vector<CardReply>& answers);

// The addresses that a card states in its answer; none in a refusal, or what makes no sense.
[[nodiscard]] std::vector<std::string> statedAddresses(const CardReply& answer);

// What is thrown instead of changing a card that may not be the one that is meant.
[[nodiscard]] Failure ambiguous(const std::string& hint);
