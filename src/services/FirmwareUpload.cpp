// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"

#include "protocol/Commands.h"
#include "services/ArchiveCheck.h"
#include "services/FirmwareSignature.h"
#include "services/UploadDirectory.h"
#include "util/File.h"
#include "util/Hardened.h"
#include "util/LibUtils.h"
#include "util/Log.h"
#include "util/Shell.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace
{

constexpr const char* archiveName = "firmware.tar.gz";
constexpr const char* unpackDirectory = "/tmp/upgrade";
constexpr const char* upgradeScript = "/lib/upgrade/fwupgrade";

void deleteArchive()
{
    if (std::remove(archiveName) != 0) {
        logErrno("Deleting %s FAILED", archiveName);
    }
}

void runUpgrade()
{
    logInfo("Starting %s", upgradeScript);
    if (runShell(upgradeScript) == 0) {
        logInfo("SUCCESS");
    } else {
        logWarning("Upgrade FAILED");
    }
}

int extract()
{
    if (LibUtils::extractArchive(archiveName, unpackDirectory) == -1) {
        return -1;
    }
    deleteArchive();
    return 0;
}

// What is not accepted does not stay where somebody could use it.
[[maybe_unused]] int extractChecked(bool isUpgrade)
{
    std::vector<std::string> files;
    const bool isAccepted =
        checkArchive(archiveName, files) == 0 && extract() == 0 && (!isUpgrade || checkSignature(files) == 0);
    if (!isAccepted) {
        static_cast<void>(renewUploadDirectory());
        return -1;
    }
    return 0;
}

int unpack(bool isUpgrade)
{
    if constexpr (hardened) {
        return extractChecked(isUpgrade);
    } else {
        static_cast<void>(isUpgrade);
        return extract();
    }
}

// False, after logging, when the stream has failed.
bool write(const File& file, std::span<const std::byte> piece)
{
    // The stream's own error flag is the judge, not the count.
    static_cast<void>(std::fwrite(piece.data(), 1, piece.size(), file.get()));
    if (std::ferror(file.get()) != 0) {
        logWarning("fwrite() failed");
        return false;
    }
    return true;
}

// Copies `remaining` bytes from the connection to the file, at least one piece, so that an empty archive fails.
bool copyToFile(TcpSocket& peer, const File& file, std::uint32_t remaining)
{
    std::array<std::byte, 4096> buffer;
    do {
        const std::size_t size = std::min<std::size_t>(remaining, buffer.size());
        const std::span<std::byte> piece = std::span(buffer).first(size);
        if (peer.receive(piece) < 1) {
            return false;
        }
        remaining -= static_cast<std::uint32_t>(size);
        if (!write(file, piece)) {
            return false;
        }
    } while (remaining > 0);
    return true;
}

} // namespace

int TarvelServiceTcp::processFwUpload(const MessageHeader& request)
{
    const bool isUpgrade = static_cast<CommandId>(request.commandId) == CommandId::firmwareUpgrade;
    if (receiveArchive(request) == -1) {
        return -1;
    }
    if (unpack(isUpgrade) == -1) {
        sendFailureReply(request);
        return -1;
    }

    if (isUpgrade) {
        logInfo("Upgrade process starting...");
        // On purpose before the upgrade, which may take the card down.
        sendStatus(request, Status::success);
        runUpgrade();
    } else {
        sendStatus(request, Status::success);
    }
    return 0;
}

int TarvelServiceTcp::receiveArchive(const MessageHeader& request)
{
    if (!hasOnlyTextSection(request, "FWUpgrade message should only contain a 8bit section!")) {
        sendFailureReply(request);
        return -1;
    }

    std::array<std::byte, sectionCountSize> countBytes;
    if (peer->receive(countBytes) < 1) {
        return -1;
    }
    const std::uint32_t count = readLittle32(countBytes);
    if (request.payloadLength != count + sectionCountSize) { // on purpose in 32 bits
        // The texts of this internal check name a line and an operation of long ago; log readers know them so.
        logDebug("%s, line %d, in %s(): oups!", "TarvelServiceTcp.cpp", 171, "ProcessFWUpload");
        sendFailureReply(request);
        return -1;
    }
    if (receiveFile(count) == -1) {
        sendFailureReply(request);
        return -1;
    }
    return 0;
}

int TarvelServiceTcp::receiveFile(std::uint32_t size)
{
    if constexpr (hardened) {
        if (renewUploadDirectory() == -1) {
            return -1;
        }
    }
    File file(archiveName, "we");
    if (!file) {
        logErrno("fopen() failed");
        return -1;
    }
    logInfo("File size = %u", size);
    const bool complete = copyToFile(*peer, file, size);
    if (file.close() != 0) {
        logWarning("fclose() failed");
    }
    return complete ? 0 : -1;
}
