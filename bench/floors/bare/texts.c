// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "bare.h"

#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

static ssize_t readFile(const char* path, char* content)
{
    const int file = open(path, O_RDONLY);
    const ssize_t size = read(file, content, 1024);
    close(file);
    return size;
}

static char* appendComponent(char* text, const char* id, const char* version, size_t length)
{
    return text + sprintf(text, "\t<Component Id=\"%s\" Version=\"%.*s\"/>\n", id, (int)length, version);
}

static char* appendLine(char* text, const char* id, const char* path)
{
    char content[1024];
    const ssize_t size = readFile(path, content);
    const char* end = size > 0 ? memchr(content, '\n', (size_t)size) : NULL;
    return end != NULL ? appendComponent(text, id, content, (size_t)(end - content)) : text;
}

static int keep(const struct dirent* entry)
{
    return entry->d_name[0] != '.' && strcmp(entry->d_name, "squashfs") != 0;
}

uint32_t versionsText(char* text)
{
    char block[1024];
    char* end = text + sprintf(text, "<Versions>\n");
    end = appendLine(end, "DravHardware", "/tmp/drav_pnr_assy");
    end = appendLine(end, "VemkHardware", "/tmp/vemk_pnr_assy");
    readFile("/dev/mtd0ro", block);
    const char* pnr = (const char*)memmem(block, sizeof block, "PNR=", 4) + 4;
    end = appendComponent(end, "BootLoader", pnr, strlen(pnr));
    end = appendLine(end, "BaseSystem", "/etc/pnr/squashfs");
    struct dirent** list;
    const int count = scandir("/etc/pnr/", &list, keep, alphasort);
    for (int i = 0; i < count; ++i) {
        char path[sizeof "/etc/pnr/" + 256];
        sprintf(path, "/etc/pnr/%s", list[i]->d_name);
        end = appendLine(end, list[i]->d_name, path);
        free(list[i]);
    }
    free(list);
    end += sprintf(end, "</Versions>");
    return (uint32_t)(end - text) + 1;
}

char* appendSetting(char* text, const char* key)
{
    int ends[2];
    pid_t child;
    char* const command[] = {"uci", "-q", "get", (char*)key, NULL};
    posix_spawn_file_actions_t actions;
    if (pipe2(ends, O_CLOEXEC) != 0) {
        abort();
    }
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawnp(&child, "uci", &actions, NULL, command, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    const ssize_t size = read(ends[0], text, 1024);
    close(ends[0]);
    waitpid(child, NULL, 0);
    return size > 0 ? text + size - 1 : text;
}

uint32_t timeText(char* text)
{
    const time_t seconds = time(NULL);
    char* end = text + sprintf(text, "<TimeReferenceConfiguration Mode=\"%s\" NtpServer=\"",
                               access("/etc/rc.d/S65ntpd", F_OK) == 0 ? "Ntp" : "Manual");
    end = appendSetting(end, "system.ntp.server");
    end += strftime(end, 64, "\" DateTime=\"%FT%T\"/>", gmtime(&seconds));
    return (uint32_t)(end - text) + 1;
}

static char* appendInterface(char* end, const char* name, const char* section)
{
    static const char* const options[] = {"ipaddr", "netmask", "gateway"};
    static const char* const names[] = {"Address", "Netmask", "Gateway"};
    char key[64];
    char proto[1024];
    sprintf(key, "%s.proto", section);
    *appendSetting(proto, key) = '\0';
    end += sprintf(end, "<Interface Name=\"%s\" Mode=\"%s\"", name, strcmp(proto, "static") == 0 ? "Static" : proto);
    for (int i = 0; i < 3; ++i) {
        char value[1024];
        sprintf(key, "%s.%s", section, options[i]);
        *appendSetting(value, key) = '\0';
        end += *value != '\0' ? sprintf(end, " %s=\"%s\"", names[i], value) : 0;
    }
    return end + sprintf(end, "/>");
}

uint32_t ipText(char* text, const char* from)
{
    char* end = text + sprintf(text, "<IpConfiguration From=\"%s\" To=\"bench\">", from);
    end = appendInterface(end, "VemkEth1", "network.lanvemt2eth1");
    end = appendInterface(end, "VemkEth2", "network.lanvemt2eth2");
    end += sprintf(end, "</IpConfiguration>");
    return (uint32_t)(end - text) + 1;
}
