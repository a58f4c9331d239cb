// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/HearingOut.h"
#include "client/card/LastHeard.h"
#include "client/card/SilentAddress.h"
#include "client/engine/Signal.h"
#include "client/engine/Task.h"
#include "client/wire/HostInterfaces.h"
#include "client/wire/Network.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Looks up many names at once: all share one socket on each interface and one time-out, so that names that are nobody's
// delay no others. A card keeps only what its socket's buffer holds while it works, so the requests leave in small
// bursts, and only names that were not heard are asked again. Changes nothing.
class Lookup
{
public:
    // Without a policy it is the user's.
    Lookup(Network& newNetwork, const std::vector<std::string>& names, std::optional<RetryPolicy> newPolicy = {});

    // Asks, and ends when all have answered, or as many as are enough, or the time is over. Throws nothing: whoever
    // waits for a name hears of it.
    Task<void> run(std::size_t enough = SIZE_MAX);

    // The same until all have answered, and then until each has been listened to for a moment after its first answer,
    // or as long again as that took, but no longer than one more time-out or that moment: who may be meant? Each
    // repetition has a sequence number of its own, so that a card that answers two of them is not taken for two cards.
    Task<void> hearOut();

    // All answers to that name, when the asking is over. Throws what ended it early.
    const std::vector<CardReply>& answersTo(const std::string& name);

    // Did one of them come so late that a card which works like that may answer a probe when nobody listens any more?
    [[nodiscard]] bool isSlow(const std::string& name) { return entryOf(name).isSlow; }

    // What the card of that name answered to an IP configuration get, be it a refusal; nothing if nobody did in time.
    // Throws what ended the asking early. The name must be one of those that were given.
    Task<std::optional<CardReply>> answerOf(std::string name);

    // The same of a name that was answered, if a way leads there, else a later answer: see reachableAnswer.
    Task<CardReply> reachableAnswerOf(std::string name);

    // Why silence until now tells nothing of a card that may be, or once was heard, on an interface of this machine:
    // nobody was asked there. Nothing if all were.
    [[nodiscard]] std::optional<Failure> unasked(const std::string& interface) const;

    // Why there was none, for people: also where the name was last heard, and what is there now. For all that are
    // looked at one time-out is shared.
    Task<Silence> explainSilence(std::string name);

    // This machine's interfaces as they were at the latest round of questions: one look for all who answer it.
    [[nodiscard]] const HostInterfaces& interfaces() const { return latestLook; }

    // Names that another card answered, too, until now, each as a sentence that names the senders. Waits for nothing.
    std::vector<std::string> secondAnswers();

private:
    struct Question {
        Request request;
        TimePoint asked;
    };

    struct Asked {
        std::string name;
        std::vector<Question> questions; // each with a sequence number of its own
        std::vector<CardReply> answers;
        Signal isOver;
        bool hasWay = false; // to where it was last heard, as remembered
        bool isSlow = false;
    };

    void add(const std::string& name);
    Task<void> askAll();
    void ask(Asked& one);
    Task<void> askUnheard();
    Task<void> listen(TimePoint deadline);
    Task<void> listenOut();
    void take(const Datagram& datagram);
    void note(Asked& one, TimePoint since, CardReply answer);
    void remember(Asked& one, const CardReply& answer);
    void save();
    [[nodiscard]] std::string interfaceOf(const LastHeard::Hearing& hearing) const;
    [[nodiscard]] bool isDone() const { return heard >= wanted; }
    [[nodiscard]] Asked& entryOf(const std::string& name);

    Network& network;
    RetryPolicy policy;
    std::vector<BroadcastSocket> sockets; // take what comes as long as the names are worked on
    std::deque<Asked> asked;              // stay where they are
    std::map<std::uint32_t, Asked*> bySequence;
    std::size_t heard = 0;
    std::size_t wanted = 0;
    bool hearsOut = false;
    HearingOut listening{policy.timeout};
    std::optional<TimePoint> explained; // until when it is looked what is where silent names were heard
    std::exception_ptr error;
    std::optional<Failure> notAsked; // why somebody was not
    HostInterfaces latestLook;
    LastHeard lastHeard;
    bool isNews = false; // not saved yet
};
