// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedArchive.h"
#include "fuzz/Replay.h"

TEST(ArchiveReplayTest, EveryArchiveOfTheCorpusIsSurvived)
{
    replay<FuzzedArchive>("archive", [](FuzzedArchive& client, auto bytes) { return client.feedArchive(bytes); });
}
