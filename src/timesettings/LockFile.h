// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// Orders time changes against every other process that goes through the same file. The file is created when it is
// missing and stays; only the lock on it comes and goes.
//
// A step that fails throws TimeSettingsError. A descriptor that is still open at the end is closed, which drops the
// lock, too; if that fails it is logged.
class LockFile
{
public:
    LockFile() = default;
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    void open(const char* path);
    void lock(); // waits as long as another holder keeps it
    void unlock();
    void close();

private:
    int fd = -1;
};
