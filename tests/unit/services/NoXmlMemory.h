// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>

#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

// While this object lives, libxml2 gets no memory.
class NoXmlMemory
{
public:
    NoXmlMemory()
    {
        xmlInitParser(); // what it keeps for the process is not to be missing later
        xmlMemGet(&release, &acquire, &resize, &duplicate);
        xmlMemSetup(
            release, [](size_t) -> void* { return nullptr; }, [](void*, size_t) -> void* { return nullptr; },
            duplicate);
    }
    ~NoXmlMemory() { xmlMemSetup(release, acquire, resize, duplicate); }
    NoXmlMemory(const NoXmlMemory&) = delete;
    NoXmlMemory& operator=(const NoXmlMemory&) = delete;

private:
    xmlFreeFunc release = nullptr;
    xmlMallocFunc acquire = nullptr;
    xmlReallocFunc resize = nullptr;
    xmlStrdupFunc duplicate = nullptr;
};
