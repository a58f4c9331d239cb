// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/IpConfigGet.h"

#include "services/Envelope.h"
#include "services/IpInterfaces.h"
#include "services/TarvelServiceUdp.h"
#include "uci/Uci.h"
#include "util/Log.h"

namespace
{

const IpInterface* findInterface(std::string_view identifier)
{
    for (const IpInterface& interface : ipInterfaces) {
        if (identifier == interface.identifier) {
            return &interface;
        }
    }
    return nullptr;
}

void appendAttribute(std::string& document, std::string_view name, std::string_view value)
{
    document += ' ';
    document += name;
    document += "=\"";
    document += value;
    document += '"';
}

int appendMode(std::string& document, const std::string& proto)
{
    for (const IpMode& mode : {staticMode, dhcpMode, disabledMode}) {
        if (proto == mode.proto) {
            appendAttribute(document, "Mode", mode.xmlName);
            return 0;
        }
    }
    logWarning("Unsupported mode: %s", proto.c_str());
    return -1;
}

void appendIfDefined(std::string& document, std::string_view name, const std::string& key, const char* absent,
                     const IpInterface& interface)
{
    std::string value;
    if (Uci::Get(key, value) == -1) {
        logInfo("No %s defined for %s interface", absent, interface.identifier.data());
        return;
    }
    appendAttribute(document, name, value);
}

int appendAddresses(std::string& document, const IpInterface& interface)
{
    const std::string section(interface.uciSection);
    std::string address;
    if (Uci::Get(section + ".ipaddr", address) == -1) {
        logWarning("Retrieving IP address for static mode failed");
        return -1;
    }
    appendAttribute(document, "Address", address);
    appendIfDefined(document, "Netmask", section + ".netmask", "netmask", interface);
    appendIfDefined(document, "Gateway", section + ".gateway", "Gateway", interface);
    return 0;
}

} // namespace

int appendInterfaceConfig(std::string_view identifier, std::string& document)
{
    const IpInterface* interface = findInterface(identifier);
    if (interface == nullptr) {
        logWarning("Unsupported interface: %s", std::string(identifier).c_str());
        return -1;
    }

    document += "<Interface";
    appendAttribute(document, "Name", interface->xmlName);
    std::string proto;
    if (Uci::Get(std::string(interface->uciSection) + ".proto", proto) == -1) {
        return -1;
    }
    if (appendMode(document, proto) == -1) {
        return -1;
    }
    if (proto == staticMode.proto && appendAddresses(document, *interface) == -1) {
        return -1;
    }
    document += "/>";
    return 0;
}

int TarvelServiceUdp::getIpConfig(const Envelope& envelope)
{
    logInfo("Retrieving current IP configuration");
    std::string document = "<IpConfiguration";
    appendAttribute(document, "From", envelope.to);
    appendAttribute(document, "To", envelope.from);
    document += '>';
    if (appendInterfaceConfig("vemEth1", document) == -1) {
        logInfo("Error VEM Interface 1 Config"); // the levels of these two differ on purpose
        return refuse();
    }
    if (appendInterfaceConfig("vemEth2", document) == -1) {
        logWarning("Error VEM Interface 2 Config");
        return refuse();
    }
    document += "</IpConfiguration>";

    logInfo("copy to payload:");
    logInfo("%s", document.c_str());
    return broadcastText(document);
}
