// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// A file that says, as long as the object lives, that network settings are staged and neither committed nor reverted.
// Only a daemon that was killed leaves it behind; a reboot loses the file and the staged settings alike. For the
// hardened build.
class StagingMarker
{
public:
    StagingMarker();
    ~StagingMarker();
    StagingMarker(const StagingMarker&) = delete;
    StagingMarker& operator=(const StagingMarker&) = delete;
};

// At the start: reverts what the daemon before has left staged, with a warning, and nothing if there is no marker.
void revertLeftSettings();
