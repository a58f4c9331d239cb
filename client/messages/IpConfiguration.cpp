// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/IpConfiguration.h"

#include "client/messages/ReplyXml.h"
#include "client/model/Failure.h"
#include "client/model/Ipv4.h"
#include "client/xml/TolerantScanner.h"
#include "client/xml/XmlText.h"

#include <algorithm>
#include <array>
#include <fmt/ranges.h>
#include <sstream>

namespace
{

constexpr std::string_view ourName = "tarvelctl"; // `From` of what we send, `To` of what comes back
constexpr std::array<std::string_view, 2> rootAttributes = {"From", "To"};
constexpr ElementForm rootForm = {"IpConfiguration", rootAttributes, ">"};
constexpr std::array<std::string_view, 5> interfaceAttributes = {"Name", "Mode", "Address", "Netmask", "Gateway"};
constexpr ElementForm interfaceForm = {"Interface", interfaceAttributes, "/>"};
constexpr std::string_view closing = "</IpConfiguration>";

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

std::optional<Ipv4> maskOf(std::string_view prefix)
{
    const std::optional<int> length = prefixLengthIn(prefix);
    return length ? maskOfPrefix(*length) : std::nullopt;
}

// OpenWrt also writes an address with its prefix and no netmask, and several in a list.
InterfaceConfig withNetmask(InterfaceConfig interface)
{
    const std::vector<std::string> words = wordsOf(interface.address.value_or(""));
    if (words.size() > 1) {
        interface.address = fmt::format("{}", fmt::join(words, ", "));
    }
    const std::size_t slash = words.size() == 1 ? words.front().find('/') : std::string::npos;
    const std::optional<Ipv4> mask =
        slash != std::string::npos ? maskOf(std::string_view(words.front()).substr(slash + 1)) : std::nullopt;
    if (mask && !interface.netmask) {
        interface.address = words.front().substr(0, slash);
        interface.netmask = formatIpv4(*mask);
    }
    return interface;
}

std::optional<InterfaceConfig> interfaceOf(const XmlElement& element)
{
    const std::optional<std::string> name = element.attribute("Name");
    const std::optional<IpMode> mode = ipModeOf(element.attribute("Mode").value_or(""));
    if (element.name != "Interface" || !name || !mode) {
        return std::nullopt;
    }
    return withNetmask(
        {*name, *mode, element.attribute("Address"), element.attribute("Netmask"), element.attribute("Gateway")});
}

// A card tells of both, in this order; anything less was cut, or is of another program.
bool isComplete(const IpConfiguration& configuration)
{
    return configuration.interfaces.size() == 2 && configuration.interfaces[0].name == "VemkEth1" &&
           configuration.interfaces[1].name == "VemkEth2";
}

std::optional<IpConfiguration> configurationOf(const XmlElement& root)
{
    const std::optional<std::string> from = root.attribute("From");
    const std::optional<std::string> to = root.attribute("To");
    if (root.name != "IpConfiguration" || !from || !to) {
        return std::nullopt;
    }
    IpConfiguration configuration{*from, *to, {}, false};
    for (const XmlElement& child : root.children) {
        std::optional<InterfaceConfig> interface = interfaceOf(child);
        if (!interface) {
            return std::nullopt;
        }
        configuration.interfaces.push_back(std::move(*interface));
    }
    return isComplete(configuration) ? std::optional(configuration) : std::nullopt;
}

std::optional<XmlElement> scanDocument(std::string_view rest)
{
    std::optional<XmlElement> root = scanElement(rest, rootForm);
    while (root && rest != closing) {
        std::optional<XmlElement> child = scanElement(rest, interfaceForm);
        if (!child) {
            return std::nullopt;
        }
        root->children.push_back(std::move(*child));
    }
    return root;
}

std::string envelope(std::string_view root, std::string_view card)
{
    std::string xml = "<" + std::string(root);
    appendAttribute(xml, "From", ourName);
    appendAttribute(xml, "To", card);
    return xml;
}

void appendInterface(std::string& xml, const InterfaceConfig& interface)
{
    xml += "<Interface";
    appendAttribute(xml, "Name", interface.name);
    appendAttribute(xml, "Mode", wordOf(interface.mode));
    const std::array values = {&interface.address, &interface.netmask, &interface.gateway};
    for (std::size_t index = 0; index < values.size(); ++index) {
        if (*values[index]) {
            appendAttribute(xml, interfaceAttributes[index + 2], **values[index]);
        }
    }
    xml += "/>";
}

} // namespace

std::optional<IpMode> ipModeOf(std::string_view word)
{
    for (const IpMode mode : {IpMode::fixed, IpMode::dhcp, IpMode::disabled}) {
        if (word == wordOf(mode)) {
            return mode;
        }
    }
    return std::nullopt;
}

std::string_view wordOf(IpMode mode)
{
    switch (mode) {
    case IpMode::fixed:
        return "Static";
    case IpMode::dhcp:
        return "Dhcp";
    case IpMode::disabled:
        break;
    }
    return "Disabled";
}

std::vector<std::string> addressesOf(const InterfaceConfig& interface)
{
    std::string text = interface.address.value_or("");
    // Several are joined with commas when they are read.
    std::replace(text.begin(), text.end(), ',', ' ');
    std::vector<std::string> addresses = wordsOf(text);
    for (std::string& address : addresses) {
        address.erase(std::min(address.find('/'), address.size()));
    }
    return addresses;
}

const InterfaceConfig* IpConfiguration::find(std::string_view name) const
{
    const auto found =
        std::find_if(interfaces.begin(), interfaces.end(), [&](const auto& one) { return one.name == name; });
    return found == interfaces.end() ? nullptr : &*found;
}

IpConfiguration parseIpConfiguration(const std::string& text)
{
    if (const std::optional<XmlElement> root = parseReplyXml(text)) {
        if (std::optional<IpConfiguration> configuration = configurationOf(*root)) {
            return std::move(*configuration);
        }
    }
    const std::optional<XmlElement> root = scanDocument(text);
    std::optional<IpConfiguration> configuration = root ? configurationOf(*root) : std::nullopt;
    if (!configuration) {
        throw garbage("the answer is no IP configuration of two interfaces");
    }
    // People are told: another reader of this card would find nothing in its answer.
    configuration->malformed = true;
    return std::move(*configuration);
}

std::string ipConfigGetXml(std::string_view card)
{
    return envelope("IpConfiguration", card) + "/>";
}

std::string ipConfigSetXml(std::string_view card, const std::vector<InterfaceConfig>& interfaces)
{
    std::string xml = envelope("IpConfiguration", card) + ">";
    for (const InterfaceConfig& interface : interfaces) {
        appendInterface(xml, interface);
    }
    return xml + std::string(closing);
}

std::string rebootXml(std::string_view card)
{
    return envelope("RebootCard", card) + "/>";
}
