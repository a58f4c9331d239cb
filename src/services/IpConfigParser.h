// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

class XmlReader;

// The steps through an IpConfiguration document. Each looks at the reader's current node; names and modes are
// compared as prefixes on purpose. Whatever is refused is logged.

// Stages the changes of an Interface element. Returns 1 when they are staged, 0 when the node is no start of an
// Interface element, -1 on failure.
int configureInterface(const XmlReader& reader);

// Whether the node is the start or the end of an element IpConfiguration: 1 or 0, -1 when it has no name.
int isConfigurationStart(const XmlReader& reader);
int isConfigurationEnd(const XmlReader& reader);
