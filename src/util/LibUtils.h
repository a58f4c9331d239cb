// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct dirent;

// The small file, shell, address and part-number operations of the services. Class-level operations without state.
// They report failures on standard error and progress on standard output, one flushed line each, never to syslog.
// Results are 0 for success and -1 for failure unless said otherwise. Texts passed as pointers must not be null.
class LibUtils
{
public:
    LibUtils() = default;
    virtual ~LibUtils() = default;

    // --- Bytes: reverse the bytes of each of `count` consecutive elements in place; data may be unaligned.

    static void swapBytes64(void* data, std::size_t count);
    static void swapBytes32(void* data, std::size_t count);
    static void swapBytes16(void* data, std::size_t count);

    // --- Files

    // Replaces `value` by the first line of the file, without its newline, cut after 1023 bytes. A file without a
    // single byte is a failure. A failing close is reported and changes nothing.
    static int readFirstLine(std::string& value, const std::string& path);

    // 1 if anything of that name exists, directories and devices included, else 0.
    static int fileExists(const std::string& path);

    // Stores the size in bytes; `size` is untouched on failure.
    static int getFileSize(const std::string& path, std::int64_t& size);

    // The selection for scandir(): 0 for ".", ".." and "squashfs", 1 for every other name.
    static int directoryEntryFilter(const dirent* entry);

    // --- Commands: run through the shell as they stand, nothing is quoted.

    // Returns the exit status 0 to 255, or -1 when no shell could be run. On purpose, a command that a signal
    // killed counts as exit status 0.
    static int executeCommand(const std::string& command);

    // The same, with the command's standard output appended to `output`.
    static int executeCommandOutput(const std::string& command, std::string& output);

    // The same, with standard output and standard error in `file`, created or continued. The redirection is
    // appended to the caller's `command` and stays there.
    static int executeCommandToFile(std::string& command, const std::string& file);
    static int executeCommandAppendToFile(std::string& command, const std::string& file);

    // Unpacks a gzip-compressed tar archive into an existing directory.
    static int extractArchive(const char* archive, const char* directory);

    // --- Host

    // 1 if inet_aton() takes the text, short, octal and hexadecimal forms included, else 0.
    static int isValidIpAddress(const char* text);

    // The card's name from its persistent settings; the result is that of Uci::Get.
    static int getHostName(std::string& name);

    // Detaches the process; returns only in the child, which leads a new session. Exits with 1 on failure.
    static void daemonize();

    // --- Part numbers and versions: 1 value found, 0 source absent, -1 source unreadable or malformed.

    // The text behind the first "PNR=" in the first 1024 bytes of the boot flash. `value` is emptied unless the
    // result is 1, but left alone when the device cannot be opened.
    static int readBootloaderPnr(std::string& value);

    static int readBaseSystemVersion(std::string& value);

    // The first line of a file in the part-number directory. The directory is put in front of `name` in place.
    static int readPnrFile(std::string& name, std::string& value);

    // Appends the names in the part-number directory, sorted, to `names` and returns their count, or -1 when the
    // directory cannot be read.
    static int listPnrFiles(std::vector<std::string>& names);
};
