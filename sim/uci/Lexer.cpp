// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Lexer.h"

#include "sim/uci/UciError.h"

namespace
{

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool endsStatement(char c)
{
    return c == '\n' || c == ';';
}

// A comment needs no blank before it.
bool endsWord(char c)
{
    return isBlank(c) || endsStatement(c) || c == '#';
}

UciError openQuote(char quote, std::size_t line)
{
    return UciError(std::string("Parse error (EOF with unterminated ") + quote + ") at line " + std::to_string(line));
}

} // namespace

char Lexer::take()
{
    const char c = text[position++];
    if (c == '\n') {
        ++currentLine;
    }
    return c;
}

void Lexer::skipComment()
{
    while (!atEnd() && text[position] != '\n') {
        ++position;
    }
}

void Lexer::takeEscaped(std::string& word)
{
    if (atEnd()) {
        return;
    }
    const char c = take();
    if (c != '\n') { // an escaped line end joins two lines
        word += c;
    }
}

void Lexer::takeSingleQuoted(std::string& word)
{
    while (!atEnd()) {
        const char c = take();
        if (c == '\'') {
            return;
        }
        word += c;
    }
    throw openQuote('\'', statementLine);
}

void Lexer::takeDoubleQuoted(std::string& word)
{
    while (!atEnd()) {
        const char c = take();
        if (c == '"') {
            return;
        }
        if (c == '\\') {
            takeEscaped(word);
        } else {
            word += c;
        }
    }
    throw openQuote('"', statementLine);
}

std::string Lexer::takeWord()
{
    std::string word;
    while (!atEnd() && !endsWord(text[position])) {
        const char c = take();
        if (c == '\'') {
            takeSingleQuoted(word);
        } else if (c == '"') {
            takeDoubleQuoted(word);
        } else if (c == '\\') {
            takeEscaped(word);
        } else {
            word += c;
        }
    }
    return word;
}

bool Lexer::takeStatement(std::vector<std::string>& words)
{
    words.clear();
    statementLine = currentLine;
    while (!atEnd()) {
        const char c = text[position];
        if (endsStatement(c)) {
            take();
            break;
        }
        if (isBlank(c)) {
            ++position;
        } else if (c == '#') {
            skipComment();
        } else {
            words.push_back(takeWord());
        }
    }
    return !words.empty();
}

bool Lexer::next(std::vector<std::string>& words)
{
    while (!atEnd()) {
        if (takeStatement(words)) {
            return true;
        }
    }
    return false;
}
