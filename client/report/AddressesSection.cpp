// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"
#include "client/report/Table.h"

#include <algorithm>
#include <array>
#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

constexpr std::array<std::string_view, 2> interfaces = {"VemkEth1", "VemkEth2"};

// Doubled in a whole fleet, the rest would bury what it is about.
constexpr std::size_t mostNamed = 3;

std::string holdersOf(std::vector<std::string> others)
{
    if (others.empty()) {
        return "on both interfaces";
    }
    const std::size_t more = others.size() - std::min(others.size(), mostNamed);
    others.resize(others.size() - more);
    return fmt::format("also {}{}", fmt::join(others, ", "), more == 0 ? "" : fmt::format(" and {} more", more));
}

Html addressHtml(const Fleet& fleet, const FleetCard& card, const std::string& address)
{
    if (!fleet.addresses().isDoubled(address)) {
        return Html(address);
    }
    const std::string others = holdersOf(fleet.addresses().othersWith(address, card.label));
    return marked("=", "doubled", Html(address)) + element("small", Html(" " + others));
}

Html detailsOf(const InterfaceConfig& interface)
{
    std::string text = interface.netmask.value_or("");
    if (interface.gateway && !interface.gateway->empty()) {
        text += fmt::format("{}gateway {}", text.empty() ? "" : ", ", *interface.gateway);
    }
    return text.empty() ? Html() : element("small", Html(" " + text));
}

Html interfaceCell(const Fleet& fleet, const FleetCard& card, std::string_view name)
{
    const InterfaceConfig* const interface = card.settings->find(name);
    if (interface == nullptr) {
        return element("td", Html());
    }
    if (interface->mode != IpMode::fixed) {
        return element("td", {{"class", "quiet"}}, Html(wordOf(interface->mode)));
    }
    Html text;
    bool isDoubled = false;
    for (const std::string& address : addressesOf(*interface)) {
        text += (text.empty() ? Html() : Html(", ")) + addressHtml(fleet, card, address);
        isDoubled = isDoubled || fleet.addresses().isDoubled(address);
    }
    return element("td", {{isDoubled ? "class" : "", "odd"}}, text + detailsOf(*interface));
}

std::string whyUnknown(const FleetCard& card)
{
    return card.isAskedByName ? "did not tell its settings" : "not asked: only a name can be asked for settings";
}

Html settingsCells(const Fleet& fleet, const FleetCard& card)
{
    if (!card.settings) {
        return element("td", {{"class", "quiet"}, {"colspan", std::to_string(interfaces.size())}},
                       Html(whyUnknown(card)));
    }
    Html cells;
    for (const std::string_view name : interfaces) {
        cells += interfaceCell(fleet, card, name);
    }
    return cells;
}

// The card that has the name need not be the one that was asked at the address.
Html elsewhere(const FleetCard& card)
{
    const bool isThere =
        card.heardFrom.empty() || card.heardFrom == card.address || DoubledAddresses::of(card).contains(card.address);
    return isThere ? Html()
                   : marked("\u26a0", "elsewhere", element("small", Html("its name answers from " + card.heardFrom)));
}

Html askedCell(const Fleet& fleet, const FleetCard& card)
{
    const std::string& known = card.address.empty() ? card.heardFrom : card.address;
    const bool isDoubled = fleet.addresses().isDoubled(known);
    const Html remark = elsewhere(card);
    return element("td", {{isDoubled || !remark.empty() ? "class" : "", "odd"}},
                   (isDoubled ? addressHtml(fleet, card, known) : Html(known)) +
                       (remark.empty() ? Html() : Html(" ") + remark));
}

Html captionOf(const Fleet& fleet)
{
    const std::size_t doubled = fleet.addresses().count();
    if (doubled == 0) {
        return Html("No address is on two cards.");
    }
    return Html("Marked = and bold: on two cards, or twice on one; " + counted(doubled, "address", "addresses") + ".");
}

} // namespace

Html addressesSection(const Fleet& fleet)
{
    Table table("addresses", captionOf(fleet), {"Card", "Answers at", "VemkEth1", "VemkEth2"});
    bool isEmpty = true;
    for (std::size_t index = 0; index < fleet.cards().size(); ++index) {
        const FleetCard& card = fleet.cards()[index];
        if (card.answered()) {
            isEmpty = false;
            table.add(fleet, index, askedCell(fleet, card) + settingsCells(fleet, card));
        }
    }
    return section("addresses", "Addresses", isEmpty ? element("p", Html("No card answered.")) : table.html());
}
