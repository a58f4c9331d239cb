// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Leases.h"
#include "client/card/Queries.h"
#include "client/messages/IpConfiguration.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

// What a card's answers prove of a configuration: nothing, that its settings say so, or that its network does.
enum class Proof { none, stored, applied };

// A card serves what waits on its interfaces in turns, so an answer over one that was asked two questions earlier must
// have come by now. One more bears a lost datagram.
inline constexpr int enoughQuestions = 3;

// What is known of an interface before it is changed.
struct IpBefore {
    std::optional<InterfaceConfig> now; // unknown if the card refused to tell, or was not heard
    bool audible = false;               // this machine heard the card over it, or will if it is as wanted
    std::set<std::string> senders = {}; // from where the card was heard, over all of its interfaces
    Leases leases = {};

    void hear(int question, const CardIp& answer);
};

// Weighs what a card answers while a change of one of its interfaces takes effect. The settings alone prove nothing:
// they are what the card was told, whether its network followed or not. Silence counts by what the card did meanwhile,
// never by time: one that has answered several later questions over its other interface had its turn to answer the
// earlier ones over this. A card answers over the interface that it was asked on, from that one's address; which of
// several DHCP interfaces that is, only their number and what was heard before can tell.
class IpEvidence
{
public:
    IpEvidence(InterfaceConfig newWanted, IpBefore newBefore);

    // Questions are numbered in the order in which they were asked, on all interfaces at once.
    void hear(int question, const CardIp& answer);
    // The card refused to tell its settings.
    void hearRefusal() { firstSilent.reset(); }

    [[nodiscard]] Proof proof() const;   // if nothing more came
    [[nodiscard]] bool isEnough() const; // nothing more can come that would say more
    [[nodiscard]] const std::optional<InterfaceConfig>& lastSeen() const { return seen; }

private:
    [[nodiscard]] std::vector<std::string> formerAddresses() const;
    [[nodiscard]] bool isFromFormer(const CardIp& answer) const;
    [[nodiscard]] bool isContrary(int question, const CardIp& answer) const;
    [[nodiscard]] bool isProof(int question, const CardIp& answer) const;
    [[nodiscard]] bool isOfAnother(const CardIp& answer) const;
    [[nodiscard]] bool isNewLease(const CardIp& answer) const;
    [[nodiscard]] bool isSilent() const;

    InterfaceConfig wanted;
    IpBefore before;
    Leases leases;
    std::optional<InterfaceConfig> seen;
    std::optional<int> firstSilent; // the first question in a row that only the other interface answered
    int lastSilent = 0;
    bool applied = false;
};
