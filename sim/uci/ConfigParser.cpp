// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/ConfigParser.h"

#include <vector>

#include "sim/uci/Lexer.h"
#include "sim/uci/Names.h"
#include "sim/uci/UciError.h"

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
        if (keyword == "config")
            return takeSection(words);
        if (keyword == "option" || keyword == "list")
            return takeOption(words);
        if (keyword == "package")
            return words.size() == 2 ? nullptr : "invalid package statement";
        return "invalid command";
    }

    Package finish()
    {
        package.nameAnonymousSections();
        return std::move(package);
    }

private:
    const char* takeSection(const std::vector<std::string>& words)
    {
        if (words.size() < 2 || words.size() > 3 || !isTypeName(words[1]))
            return "invalid section";
        const bool anonymous = words.size() == 2;
        if (!anonymous && !isName(words[2]))
            return "invalid character in name field";
        const Section* existing = anonymous ? nullptr : package.find(words[2]);
        if (existing != nullptr) {
            current = static_cast<std::size_t>(existing - package.sections.data());
            return existing->type == words[1] ? nullptr : "section of different type overwrites prior section";
        }
        package.sections.push_back({words[1], anonymous ? std::string() : words[2], anonymous, {}});
        current = package.sections.size() - 1;
        return nullptr;
    }

    const char* takeOption(const std::vector<std::string>& words)
    {
        if (package.sections.empty())
            return "option/list command found before the first section";
        if (words.size() != 3)
            return words.size() < 3 ? "insufficient arguments" : "too many arguments";
        if (!isName(words[1]))
            return "invalid character in name field";
        Section& section = package.sections[current];
        if (words[0] == "list")
            section.append(words[1], words[2]);
        else
            section.set(words[1], words[2]);
        return nullptr;
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
        if (const char* problem = parser.take(words))
            throw UciError("Parse error (" + std::string(problem) + ") at line " + std::to_string(lexer.line()));
    }
    return parser.finish();
}
