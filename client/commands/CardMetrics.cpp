// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/CardMetrics.h"

#include "client/output/Gauge.h"

namespace
{

struct CardGauges {
    Gauge up{"tarvel_up", "Whether the card told its versions when it was asked last."};
    Gauge failure{"tarvel_failure_info", "Why asking the card failed, and at which address."};
    Gauge info{"tarvel_card_info", "Where the card was reached."};
    Gauge component{"tarvel_component_info", "Which version of the component the card reports."};
    Gauge skew{"tarvel_clock_skew_seconds",
               "How far the clock of the card is ahead of the one that it is compared to."};
    Gauge skewError{"tarvel_clock_skew_error_seconds", "How much more or less the skew may be."};
    Gauge reference{"tarvel_time_reference_info", "From where the card has its time."};
    Gauge duration{"tarvel_scrape_duration_seconds", "How long the answers of the card took."};

    void add(const CardMetrics& card);
    void addTime(const CardMetrics& card, const TimeReading& reading);
};

void CardGauges::add(const CardMetrics& card)
{
    const Labels labels = {{"card", card.card}};
    up.add(labels, card.versions ? 1 : 0);
    if (!card.failure.empty()) {
        failure.add({{"card", card.card}, {"address", card.address}, {"category", card.failure}}, 1);
    }
    if (!card.versions) {
        return;
    }
    info.add({{"card", card.card}, {"address", card.address}}, 1);
    for (const Component& one : card.versions->components) {
        component.add({{"card", card.card}, {"component", one.id}, {"version", one.version}}, 1);
    }
    if (card.reading) {
        addTime(card, *card.reading);
    }
    duration.add(labels, card.seconds);
}

void CardGauges::addTime(const CardMetrics& card, const TimeReading& reading)
{
    const Labels labels = {{"card", card.card}};
    skew.add(labels, reading.skew);
    skewError.add(labels, reading.skewError);
    const std::string mode(wordOf(reading.reference.mode));
    reference.add({{"card", card.card}, {"mode", mode}, {"server", reading.reference.server}}, 1);
}

} // namespace

std::string metricsText(const std::vector<CardMetrics>& cards, const Poll& poll)
{
    CardGauges gauges;
    for (const CardMetrics& card : cards) {
        gauges.add(card);
    }
    Gauge duration("tarvel_poll_duration_seconds", "How long it took to ask all cards.");
    duration.add({}, poll.seconds);
    Gauge end("tarvel_poll_last_success_timestamp_seconds", "When all cards had been asked last, whoever answered.");
    end.add({}, poll.end);
    std::string text;
    for (const Gauge* gauge : {&gauges.up, &gauges.failure, &gauges.info, &gauges.component, &gauges.skew,
                               &gauges.skewError, &gauges.reference, &gauges.duration, &duration, &end}) {
        text += gauge->text();
    }
    return text;
}
