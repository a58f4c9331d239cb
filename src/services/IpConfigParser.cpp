// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/IpConfigParser.h"

#include "services/IpInterfaces.h"
#include "services/XmlReader.h"
#include "uci/Uci.h"
#include "util/LibUtils.h"
#include "util/Log.h"

#include <optional>
#include <string>
#include <string_view>

namespace
{

// 1 when the node's name begins with `wantedName` and its type is `wantedType`, 0 when not, -1 without a name.
int isNode(const XmlReader& reader, std::string_view wantedName, int wantedType)
{
    const std::optional<std::string_view> name = reader.name();
    if (!name) {
        logWarning("Missing node name");
        return -1;
    }
    if (!name->starts_with(wantedName)) {
        logWarning("Wrong node name: %s", name->data());
        return 0;
    }
    if (const int type = reader.nodeType(); type != wantedType) {
        logWarning("Wrong node type: %d", type);
        return 0;
    }
    return 1;
}

int setOption(const std::string& section, const char* option, const std::string& value)
{
    return Uci::Set(section + option, value);
}

// On purpose the results are ignored: an option that does not exist need not be deleted.
void deleteOption(const std::string& section, const char* option)
{
    Uci::Delete(section + option);
}

int setAddress(const std::string& section, const char* option, const std::string& address)
{
    return LibUtils::isValidIpAddress(address.c_str()) == 1 ? setOption(section, option, address) : -1;
}

int setRequiredAddress(const XmlReader& reader, const char* attribute, const char* missing, const std::string& section,
                       const char* option)
{
    const std::optional<std::string> address = reader.attribute(attribute);
    if (!address) {
        logWarning("%s", missing);
        return -1;
    }
    return setAddress(section, option, *address);
}

int configureStatic(const XmlReader& reader, const std::string& section)
{
    if (setOption(section, ".proto", std::string(staticMode.proto)) == -1) {
        return -1;
    }
    if (setRequiredAddress(reader, "Address", "Interface address is missing", section, ".ipaddr") == -1) {
        return -1;
    }
    if (setRequiredAddress(reader, "Netmask", "Interface netmask is missing", section, ".netmask") == -1) {
        return -1;
    }
    const std::optional<std::string> gateway = reader.attribute("Gateway");
    if (!gateway) {
        deleteOption(section, ".gateway");
        return 1;
    }
    return setAddress(section, ".gateway", *gateway) == -1 ? -1 : 1;
}

int configureWithoutAddress(const std::string& section, const IpMode& mode)
{
    if (setOption(section, ".proto", std::string(mode.proto)) == -1) {
        return -1;
    }
    deleteOption(section, ".ipaddr");
    deleteOption(section, ".netmask");
    deleteOption(section, ".gateway");
    return 1;
}

int configureMode(const XmlReader& reader, const std::string& section, std::string_view mode)
{
    if (mode.starts_with(staticMode.xmlName)) {
        return configureStatic(reader, section);
    }
    if (mode.starts_with(dhcpMode.xmlName)) {
        return configureWithoutAddress(section, dhcpMode);
    }
    if (mode.starts_with(disabledMode.xmlName)) {
        return configureWithoutAddress(section, disabledMode);
    }
    logWarning("Unsupported interface mode: %s", mode.data());
    return -1;
}

const IpInterface* findInterface(std::string_view name)
{
    for (const IpInterface& interface : ipInterfaces) {
        if (name.starts_with(interface.xmlName)) {
            return &interface;
        }
    }
    return nullptr;
}

} // namespace

int isConfigurationStart(const XmlReader& reader)
{
    return isNode(reader, "IpConfiguration", XmlReader::element);
}

int isConfigurationEnd(const XmlReader& reader)
{
    return isNode(reader, "IpConfiguration", XmlReader::endElement);
}

int configureInterface(const XmlReader& reader)
{
    if (const int result = isNode(reader, "Interface", XmlReader::element); result != 1) {
        return result;
    }
    if (!reader.hasAttributes()) {
        logWarning("No attributes in node: %s", reader.name()->data());
        return -1;
    }

    const std::optional<std::string> name = reader.attribute("Name");
    if (!name) {
        logWarning("Getting attribute \"Name\" failed");
        return -1;
    }
    const IpInterface* interface = findInterface(*name);
    if (interface == nullptr) {
        logWarning("Unknown interface: %s", name->c_str());
        return -1;
    }
    const std::optional<std::string> mode = reader.attribute("Mode");
    if (!mode) {
        logWarning("Getting attribute \"Mode\" FAILED");
        return -1;
    }
    return configureMode(reader, std::string(interface->uciSection), *mode);
}
