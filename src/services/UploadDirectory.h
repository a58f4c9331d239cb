// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// Makes the working directory anew, empty and for root alone, so that nothing of an earlier upload, a link least of
// all, waits for the next one. For the hardened build. Returns 0, or -1 after a warning.
int renewUploadDirectory();
