// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Census.h"
#include "client/card/Lookup.h"
#include "client/card/Target.h"
#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

// What the user takes upon himself before a change.
struct Caution {
    bool force = false;       // go on although another card could be meant
    bool trustGroups = false; // take a name's noted address although the name is not heard
    bool probe = true;        // ask whether two cards share an address
};

// How a change reaches a card. One that may be lost need not be heard: a broadcast reaches it all the same.
enum class Way { byName, overTcp, byNameUnheard };

// What is known of a target before it is changed.
struct Identified {
    Target given;                       // as the user wrote it
    Target target;                      // over TCP with its endpoint
    TimePoint asOf;                     // when its name was listened to; the time of the probe is not counted
    std::vector<std::string> heardFrom; // addresses that it answered from
    std::set<Sender> heardAt;           // the same with the interfaces
    std::vector<std::string> stated;    // addresses in its settings
    std::optional<Failure> refusal;     // why nothing may be sent to it
    Row silence;                        // what is known of a name that was not heard
    std::optional<std::size_t> sameAs;  // the earlier target that is the same card
    std::vector<std::string> warnings;  // what --force went over
    bool isSlow = false;                // it may answer the probe when nobody listens any more
    bool checked = false;               // its address was seen to be that of one card only
    std::vector<Identified> again;      // later targets that are the same card
};

// Finds out, before anything is changed, whom each target means: asks for names and listens for a second card, asks
// over TCP who shares an address, and compares the targets with each other.
class Identification
{
public:
    Identification(Network& newNetwork, Way newWay, Caution newCaution);

    // Each of them once.
    [[nodiscard]] std::vector<std::string> namesToAsk(const std::vector<Target>& targets) const;

    // Answers in the order of the targets; fails for none of them. All names share one time-out.
    Task<std::vector<Identified>> run(std::vector<Target> targets);

    // Two names that lead to one address are refused, and so is the address; one card given twice is marked, unless it
    // is refused.
    void compare(std::vector<Identified>& cards) const;
    // The answers to the name of a card, of which there are some.
    void hear(Identified& card, std::vector<CardReply> answers, const HostInterfaces& here) const;
    // An address that may be that of two cards is refused, and any other is reached where it answered.
    void check(std::vector<Identified>& cards, const Census& census) const;
    // What slow cards, who were asked again behind the probe, answered beside the first time: whoever did is slow no
    // more.
    void hearAgain(std::vector<Identified>& cards, Lookup& first, Lookup& behindProbe) const;

private:
    [[nodiscard]] bool asksFor(const Target& target) const;
    Task<void> identify(Identified& card, Lookup& lookup, const HostInterfaces& here) const;
    Task<void> takeSilence(Identified& card, Lookup& lookup) const;
    static void refuse(Identified& card, const Failure& why);
    void takeAnswers(Identified& card, const std::vector<CardReply>& answers, const HostInterfaces& here) const;
    [[nodiscard]] bool isNotedElsewhere(const Target& noted, const Identified& card) const;
    Task<void> confirm(Identified& card, Target noted) const;
    void compareNames(std::vector<Identified>& cards, Identified& one, Identified& other) const;
    void object(Identified& card, std::string why) const;
    Task<void> probe(std::vector<Identified>& cards, Lookup& lookup) const;
    void takeDeafness(std::vector<Identified>& cards, const Failure& why) const;
    static void takeLoss(std::vector<Identified>& cards);

    Network& network;
    Way way;
    Caution caution;
};
