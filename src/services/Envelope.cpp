// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/Envelope.h"

#include "services/XmlReader.h"
#include "util/Log.h"

#include <optional>
#include <string_view>
#include <utility>

namespace
{

// Moves to the root and checks that it can carry an envelope.
bool isAtEnvelope(XmlReader& reader)
{
    const int result = reader.read();
    if (result == 0) {
        logWarning("No data in XML");
    }
    if (result != 1) {
        return false;
    }
    const std::optional<std::string_view> name = reader.name();
    if (!name) {
        logWarning("Missing node name");
        return false;
    }
    // On purpose prefixes: longer names pass, and either root serves every command.
    if (!name->starts_with("IpConfiguration") && !name->starts_with("RebootCard")) {
        logWarning("Wrong node name: %s", name->data());
        return false;
    }
    if (const int type = reader.nodeType(); type != XmlReader::element) {
        logWarning("Wrong node type: %d", type);
        return false;
    }
    if (!reader.hasAttributes()) {
        logWarning("No attributes in node: %s", name->data());
        return false;
    }
    return true;
}

int readIdentity(const XmlReader& reader, const char* attribute, const char* missing, std::string& identity)
{
    std::optional<std::string> value = reader.attribute(attribute);
    if (!value) {
        logWarning("xmlTextReaderGetAttribute() failed: %s", XmlReader::lastError().c_str());
        logWarning("%s", missing);
        return -1;
    }
    identity = std::move(*value);
    return 0;
}

} // namespace

int parseEnvelope(std::string payload, std::string& from, std::string& to)
{
    XmlReader reader(std::move(payload));
    if (!reader || !isAtEnvelope(reader)) {
        return -1;
    }
    if (readIdentity(reader, "From", "Datagram sender identity is missing", from) == -1) {
        return -1;
    }
    return readIdentity(reader, "To", "Datagram target is missing", to);
}
