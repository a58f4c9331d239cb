// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/LockFile.h"

#include "timesettings/TimeSettingsError.h"
#include "util/Log.h"

#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

LockFile::~LockFile()
{
    if (fd != -1 && ::close(fd) == -1) {
        logErrno("close() FAILED");
    }
}

void LockFile::open(const char* path)
{
    constexpr mode_t mode = 0644;
    fd = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, mode);
    if (fd == -1) {
        throw TimeSettingsError::fromErrno("open() FAILED: ");
    }
}

void LockFile::lock()
{
    if (flock(fd, LOCK_EX) == -1) {
        throw TimeSettingsError::fromErrno("flock() FAILED: ");
    }
}

void LockFile::unlock()
{
    if (flock(fd, LOCK_UN) == -1) {
        throw TimeSettingsError::fromErrno("flock() FAILED: ");
    }
}

void LockFile::close()
{
    // Whatever close() says, the descriptor is gone: a second attempt could hit somebody else's.
    if (::close(std::exchange(fd, -1)) == -1) {
        throw TimeSettingsError::fromErrno("close() FAILED: ");
    }
}
