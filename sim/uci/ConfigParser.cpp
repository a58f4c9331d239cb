// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/ConfigParser.h"

#include "sim/uci/Lexer.h"
#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

#include <cstddef>
#include <vector>

namespace
{

class Parser
{
public:
    explicit Parser(std::string name) { package.name = std::move(name); }

    // What is wrong with the statement; null when nothing is.
    const char* take(const std::vector<std::string>& words)
    {
        const std::string& keyword = words.front();
        if (keyword == "config" || keyword == "c") {
            return takeSection(words);
        }
        if (keyword == "option" || keyword == "o") {
            return takeValue(words, false);
        }
        if (keyword == "list" || keyword == "l") {
            return takeValue(words, true);
        }
        if (keyword == "package" || keyword == "p") {
            return words.size() == 2 ? nullptr : "insufficient arguments";
        }
        return "invalid command";
    }

    Package finish() { return std::move(package); }

private:
    const char* takeSection(const std::vector<std::string>& words)
    {
        if (const char* problem = countProblem(words)) {
            return problem;
        }
        if (!isTypeName(words[1])) {
            return "invalid character in type field";
        }
        const std::string name = words.size() < 3 ? "" : words[2];
        if (!name.empty() && !isName(name)) {
            return "invalid character in name field";
        }
        const Section* existing = name.empty() ? nullptr : package.find(name);
        if (existing == nullptr) {
            package.add(words[1], name);
        }
        current = existing == nullptr ? package.sections.size() - 1
                                      : static_cast<std::size_t>(existing - package.sections.data());
        return package.sections[current].type == words[1]
                   ? nullptr
                   : "section of different type overwrites prior section with same name";
    }

    const char* takeValue(const std::vector<std::string>& words, bool isItem)
    {
        if (package.sections.empty()) {
            return "option/list command found before the first section";
        }
        if (const char* problem = countProblem(words)) {
            return problem;
        }
        if (!isName(words[1])) {
            return "invalid character in name field";
        }
        const std::string value = words.size() < 3 ? "" : words[2];
        Section& section = package.sections[current];
        if (isItem) {
            section.append(words[1], value);
        } else if (!value.empty()) { // an empty value says nothing, not even that an earlier one is gone
            section.set(words[1], value);
        }
        return nullptr;
    }

    // Keyword, type or name, and a name or value that may be missing.
    static const char* countProblem(const std::vector<std::string>& words)
    {
        if (words.size() < 2 || words[1].empty()) {
            return "insufficient arguments";
        }
        return words.size() > 3 ? "too many arguments" : nullptr;
    }

    Package package;
    std::size_t current = 0;
};

} // namespace

Package parseConfig(std::string name, std::string_view text)
{
    Parser parser(std::move(name));
    Lexer lexer(text);
    std::vector<std::string> words;
    while (lexer.next(words)) {
        if (const char* problem = parser.take(words)) {
            throw UciError("Parse error (" + std::string(problem) + ") at line " + std::to_string(lexer.line()));
        }
    }
    return parser.finish();
}
