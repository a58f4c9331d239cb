// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/FleetPage.h"

#include "client/firmware/Sha256.h"
#include "client/messages/TimeReference.h"
#include "client/report/Base64.h"
#include "client/report/PageFiles.h"
#include "client/report/Sections.h"
#include "client/report/Table.h"

#include <algorithm>
#include <span>

namespace
{

// What the policy of the document names its own style and script by.
std::string sourceOf(std::string_view text)
{
    Sha256 sha;
    sha.add(std::as_bytes(std::span(text)));
    std::string bytes;
    for (const std::uint32_t word : sha.finish()) {
        for (const unsigned shift : {24U, 16U, 8U, 0U}) {
            bytes += static_cast<char>(word >> shift & 0xFFU);
        }
    }
    return "'sha256-" + inBase64(std::as_bytes(std::span(bytes))) + "'";
}

} // namespace

std::string filledIn(std::string_view pageTemplate, const std::vector<Blank>& blanks)
{
    std::string page;
    for (std::size_t open = pageTemplate.find("{{"); open != std::string_view::npos; open = pageTemplate.find("{{")) {
        const std::size_t close = pageTemplate.find("}}", open);
        const std::string_view name = pageTemplate.substr(open + 2, close - open - 2);
        page += pageTemplate.substr(0, open);
        page += std::find_if(blanks.begin(), blanks.end(), [&](const Blank& one) { return one.name == name; })->text;
        pageTemplate.remove_prefix(close + 2);
    }
    return page += pageTemplate;
}

std::string fleetPage(const Look& look, const Fleet& fleet)
{
    const std::string began = formatTime(look.began) + "Z";
    const std::string seconds =
        counted(static_cast<std::size_t>(std::max<std::int64_t>(look.ended - look.began, 0)), "second");
    std::string shown = formatTime(look.began) + " UTC";
    shown.replace(shown.find('T'), 1, " ");
    const std::string cards = counted(fleet.cards().size(), "card");
    const Html body = failuresSection(fleet) + versionsSection(fleet) + clocksSection(fleet) + addressesSection(fleet);
    return filledIn(pageHtml, {{"styleSource", sourceOf(pageStyle)},
                               {"scriptSource", sourceOf(pageScript)},
                               {"style", std::string(pageStyle)},
                               {"script", std::string(pageScript)},
                               {"client", Html(look.client).text()},
                               {"began", began},
                               {"time", shown},
                               {"duration", seconds},
                               {"cards", cards},
                               {"summary", summarySection(fleet).text()},
                               {"body", body.text()}});
}
