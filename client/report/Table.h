// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/Fleet.h"
#include "client/report/Html.h"

#include <string>
#include <string_view>
#include <vector>

// A table of a report, which the page's script can sort. It scrolls within itself where it is wider than the page.
class Table
{
public:
    Table(std::string_view newId, Html newCaption, const std::vector<std::string>& headings);

    // A second row of the head, whose cells are no names of columns.
    void addToHead(const Html& row) { head += row; }
    // The row of the card with that index, headed by its label; the cells are what follows.
    void add(const Fleet& fleet, std::size_t index, const Html& cells);
    [[nodiscard]] Html html() const;

private:
    std::string id;
    Html caption;
    Html head;
    Html body;
};

// A part of the page: its heading, and what it holds.
[[nodiscard]] Html section(std::string_view id, std::string_view heading, const Html& content);

// A sign for the eye and a word for the ear before what is marked.
[[nodiscard]] Html marked(std::string_view sign, std::string_view word, const Html& content);

// "1 card", "1000 cards"
[[nodiscard]] std::string counted(std::size_t number, std::string_view noun, std::string_view nouns = {});
