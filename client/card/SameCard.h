// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Identification.h"
#include "client/model/Contains.h"

#include <optional>

// How two targets compare, as far as is known of them.

// Is it known by its name, rather than by an address alone?
[[nodiscard]] bool isName(const Identified& card);

// Names that differ are never one card, nor is one to which nothing may be sent: it must be told why.
[[nodiscard]] bool isOneCard(const Identified& one, const Identified& other);

// Where both names lead. Cards without an address share none, and a noted address counts if it is believed and used.
[[nodiscard]] std::optional<Endpoint> sharedEndpoint(const Identified& one, const Identified& other, Way way);
