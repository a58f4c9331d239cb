// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "same.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// `line` holds 1024 bytes. 0 when there was one.
int readFirstLine(const char* path, char* line)
{
    char buffer[1024];
    FILE* file = fopen(path, "re");
    if (file == NULL) {
        return -1;
    }
    setvbuf(file, buffer, _IOFBF, sizeof buffer);
    const char* got = fgets(line, 1024, file);
    fclose(file);
    if (got == NULL) {
        return -1;
    }
    line[strcspn(line, "\n")] = '\0';
    return 0;
}

int uciGet(const char* key, char* value)
{
    char command[256];
    snprintf(command, sizeof command, "uci -q get %s > /tmp/uci.tmp", key);
    return system(command) == 0 ? readFirstLine("/tmp/uci.tmp", value) : -1;
}
