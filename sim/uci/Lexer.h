// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Splits configuration text into statements of words: blanks separate words, a line end or ';' ends a statement,
// '#' starts a comment, quotes of both kinds and backslashes protect. Adjacent pieces make one word: a='b c' is "a=b
// c".
class Lexer
{
public:
    // The source must outlive the lexer.
    explicit Lexer(std::string_view source) : text(source) {}

    // Reads the next statement that has words; false at the end of the text. Throws UciError for an open quote.
    bool next(std::vector<std::string>& words);

    // Line on which the last statement began, from 1: for error messages.
    std::size_t line() const { return statementLine; }

private:
    bool atEnd() const { return position >= text.size(); }
    char take();
    void skipComment();
    void takeEscaped(std::string& word);
    void takeSingleQuoted(std::string& word);
    void takeDoubleQuoted(std::string& word);
    std::string takeWord();
    bool takeStatement(std::vector<std::string>& words);

    std::string_view text;
    std::size_t position = 0;
    std::size_t currentLine = 1;
    std::size_t statementLine = 1;
};
