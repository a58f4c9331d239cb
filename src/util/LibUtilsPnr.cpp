// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "util/File.h"
#include "util/Report.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

#include <dirent.h>

namespace
{

constexpr const char* pnrDirectory = "/etc/pnr/";
constexpr const char* baseSystemFile = "/etc/pnr/squashfs";

// Reads the start of the flash in one block; false, after telling why, when it is not there in full.
bool readBlock(std::FILE* flash, std::span<char> block)
{
    if (std::fread(block.data(), block.size(), 1, flash) == 1) {
        return true;
    }
    if (std::ferror(flash) != 0) {
        reportErrno("fread() failed: ");
    }
    if (std::feof(flash) != 0) {
        reportFailure("End of file unexpectedly reached");
    }
    return false;
}

// Makes `value` the text between the first "PNR=" of the block and the next NUL.
int cutPartNumber(std::string_view block, std::string& value)
{
    constexpr std::string_view mark = "PNR=";
    const std::size_t start = block.find(mark);
    if (start == std::string_view::npos) {
        reportFailure("Bootloader PNR doesn't exist");
        return 0;
    }
    block.remove_prefix(start + mark.size());

    const std::size_t end = block.find('\0');
    if (end == std::string_view::npos) {
        reportFailure("Bootloader PNR string is not bounded");
        return -1;
    }
    value = block.substr(0, end);
    return 1;
}

int readVersionFile(const std::string& path, std::string& value)
{
    if (LibUtils::fileExists(path) == 0) {
        return 0;
    }
    return LibUtils::readFirstLine(value, path) == 0 ? 1 : -1;
}

struct Free {
    void operator()(void* memory) const { std::free(memory); } // NOLINT(cppcoreguidelines-no-malloc)
};

} // namespace

int LibUtils::readBootloaderPnr(std::string& value)
{
    File flash("/dev/mtd0ro", "rb");
    if (!flash) {
        reportErrno("fopen() FAILED: ");
        return -1;
    }
    flash.useBuffer({}); // one block is read, and nothing after it

    int result = -1;
    std::array<char, 1024> block;
    if (readBlock(flash.get(), block)) {
        result = cutPartNumber({block.data(), block.size()}, value);
    }

    if (flash.close() != 0) {
        reportErrno("fclose() FAILED: ");
    }
    if (result != 1) {
        value.clear();
    }
    return result;
}

int LibUtils::readBaseSystemVersion(std::string& value)
{
    return readVersionFile(baseSystemFile, value);
}

int LibUtils::readPnrFile(std::string& name, std::string& value)
{
    name.insert(0, pnrDirectory);
    return readVersionFile(name, value);
}

int LibUtils::listPnrFiles(std::vector<std::string>& names)
{
    dirent** list = nullptr;
    const int count = scandir(pnrDirectory, &list, &LibUtils::directoryEntryFilter, alphasort);
    const std::unique_ptr<dirent*, Free> owner(list);
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<dirent, Free> entry(list[i]);
        names.emplace_back(entry->d_name);
    }
    return count;
}
