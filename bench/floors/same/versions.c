// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "../wire.h"
#include "same.h"

#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <sys/stat.h>

static char text[2048];
static size_t length;

static void append(const char* id, const char* version)
{
    const int added =
        snprintf(text + length, sizeof text - length, "\t<Component Id=\"%s\" Version=\"%s\"/>\n", id, version);
    length += (size_t)added;
}

static void appendFirstLine(const char* id, const char* path)
{
    char version[1024];
    if (readFirstLine(path, version) == 0) {
        append(id, version);
    }
}

static void appendExisting(const char* id, const char* path)
{
    struct stat record;
    if (stat(path, &record) == 0) {
        appendFirstLine(id, path);
    }
}

static void appendBootloader(void)
{
    char block[1024];
    FILE* flash = fopen("/dev/mtd0ro", "rbe");
    if (flash == NULL) {
        return;
    }
    setvbuf(flash, NULL, _IONBF, 0);
    if (fread(block, sizeof block, 1, flash) == 1) {
        const char* mark = memmem(block, sizeof block, "PNR=", 4);
        if (mark != NULL && memchr(mark, '\0', (size_t)(block + sizeof block - mark)) != NULL) {
            append("BootLoader", mark + 4);
        }
    }
    fclose(flash);
}

static int keep(const struct dirent* entry)
{
    return strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0 &&
           strcmp(entry->d_name, "squashfs") != 0;
}

void reportVersions(int peer, const uint8_t* request)
{
    length = (size_t)sprintf(text, "<Versions>\n");
    appendFirstLine("DravHardware", "/tmp/drav_pnr_assy");
    appendFirstLine("VemkHardware", "/tmp/vemk_pnr_assy");
    appendBootloader();
    appendExisting("BaseSystem", "/etc/pnr/squashfs");

    struct dirent** list;
    const int count = scandir("/etc/pnr/", &list, keep, alphasort);
    for (int i = 0; i < count; ++i) {
        char path[sizeof "/etc/pnr/" + 256];
        snprintf(path, sizeof path, "/etc/pnr/%s", list[i]->d_name);
        appendExisting(list[i]->d_name, path);
        free(list[i]);
    }
    free(list);
    strcpy(text + length, "</Versions>");
    sendText(peer, request, text);
}
