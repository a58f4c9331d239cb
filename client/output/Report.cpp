// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Report.h"

#include "client/output/Console.h"
#include "client/output/Lines.h"
#include "client/output/Printable.h"

#include <algorithm>
#include <fmt/core.h>
#include <utility>

namespace
{

// Of any terminal, and not of this one, so that a log reads the same.
constexpr std::size_t widestLine = 80 - std::string_view("error: ").size();

bool fits(const std::string& line)
{
    return columnsOf(line) <= widestLine;
}

// What is known of this target alone: " (10.0.0.11, 2 min ago)".
std::string ownWords(const Result& failed)
{
    std::string words;
    for (const Field& field : failed.fields) {
        const std::string text = field.isOwn ? printable(textOf(field.value)) : "";
        words += text.empty() ? "" : fmt::format("{}{}", words.empty() ? " (" : ", ", text);
    }
    return words.empty() ? words : words + ")";
}

// Targets that were put together may be many; then they have a line of their own, since none of them may be missing.
std::string headOf(const Result& failed)
{
    const std::string what = fmt::format("{} while {}", wordOf(failed.category), failed.phase);
    if (failed.target.empty()) {
        return cutTo(what, widestLine);
    }
    const std::string target = printable(failed.target);
    const std::string line = fmt::format("{}: {}", target, what);
    const bool isWide = columnsOf(target) > widestLine / 2;
    return isWide && !fits(line) ? fmt::format("{}\n  {}", cutTo(what, widestLine), target) : cutTo(line, widestLine);
}

std::string headWithOwn(const Result& failed)
{
    const std::string head = headOf(failed);
    const std::string own = ownWords(failed);
    if (own.empty() || fits(head + own)) {
        return head + own;
    }
    // Rather without the phase than without what is known of this target alone.
    const std::string brief = fmt::format("{}: {}{}", printable(failed.target), wordOf(failed.category), own);
    return fits(brief) ? brief : fmt::format("{}\n {}", head, own);
}

std::string wordsOf(Category category)
{
    std::string words(wordOf(category));
    std::replace(words.begin(), words.end(), '-', ' ');
    return words.empty() ? "ok" : words;
}

} // namespace

bool Report::isNews(const Result& failed)
{
    return hints.insert(fmt::format("{} {}", wordOf(failed.category), failed.hintAbout(anyName))).second;
}

void Report::tell(const Result& result)
{
    if (result.malformed) {
        console.warning(fmt::format("{}: the card's answer is no valid XML; it was read by its form", result.target));
    }
    if (result.ok()) {
        if (!result.hint.empty()) {
            console.note(fmt::format("{}: {}", result.target, result.hint));
        }
        return;
    }
    const std::string head = headWithOwn(result);
    const std::string whole = fmt::format("{}: {}", head, printable(result.hint));
    if (fits(whole)) {
        console.error(whole);
    } else {
        console.error(isNews(result) ? fmt::format("{}\n  {}", head, printable(result.hint)) : head);
    }
}

void Report::tellAll(const Result& failed, const std::vector<std::string>& sentences) const
{
    std::string text = headOf(failed);
    for (const std::string& sentence : sentences) {
        text += fmt::format("\n  {}", printable(sentence));
    }
    console.error(text);
}

void Report::count(const std::vector<Result>& results) const
{
    std::vector<std::pair<Category, std::size_t>> counts{{Category::none, 0}}; // in the order in which they came
    for (const Result& result : results) {
        const auto known = std::find_if(counts.begin(), counts.end(),
                                        [&](const auto& count) { return count.first == result.category; });
        if (known == counts.end()) {
            counts.emplace_back(result.category, 1);
        } else {
            ++known->second;
        }
    }
    if (results.size() < 2 || counts.size() == 1) {
        return;
    }
    std::string line;
    for (const auto& [category, number] : counts) {
        line += fmt::format("{}{} {}", line.empty() ? "" : ", ", number, wordsOf(category));
    }
    console.note(line);
}
