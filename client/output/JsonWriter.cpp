// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Streams.h"
#include "client/output/Writer.h"

#include <cstdio>
#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace
{

using Json = nlohmann::ordered_json; // people read it, too: the outcome first, then what the command has

Json toJson(const Cell& cell)
{
    struct {
        Json operator()(std::monostate /*none*/) const { return nullptr; }
        Json operator()(bool value) const { return value; }
        Json operator()(std::int64_t value) const { return value; }
        Json operator()(double value) const { return value; }
        Json operator()(const std::string& value) const { return value; }
    } convert;
    return std::visit(convert, cell);
}

void addFields(Json& object, const Row& row)
{
    for (const Field& field : row) {
        object[field.name] = toJson(field.value);
    }
}

Json textOrNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

// All but the list.
Json toJson(const Result& result)
{
    Json object = Json::object();
    object["target"] = textOrNull(result.target);
    object["ok"] = result.ok();
    object["code"] = static_cast<int>(result.code);
    object["category"] = textOrNull(std::string(wordOf(result.category)));
    object["phase"] = textOrNull(result.phase);
    object["hint"] = textOrNull(result.hint);
    object["changed"] = result.changed ? Json(*result.changed) : Json(nullptr);
    if (result.malformed) {
        object["malformed"] = true;
    }
    addFields(object, result.fields);
    return object;
}

// An object within others, printed as if all of it were dumped at once.
struct Layout {
    int indent; // of each level, or negative: all in one line
    int level = 0;

    [[nodiscard]] Layout within(int levels) const { return {indent, level + levels}; }
    [[nodiscard]] std::string lineBreak() const
    {
        return indent < 0 ? "" : "\n" + std::string(static_cast<std::size_t>(indent * level), ' ');
    }
    [[nodiscard]] std::string text(const Json& json) const;
};

// Bytes of a card that are no UTF-8 are replaced: the output must stay valid JSON whatever a card sends. All beyond
// ASCII is escaped, so that it does nothing to a terminal either, and no line breaks but between elements.
std::string Layout::text(const Json& json) const
{
    std::string text = json.dump(indent, ' ', true, Json::error_handler_t::replace);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
        text.replace(at, 1, lineBreak());
    }
    return text;
}

// An object whose last member is a list, written element by element: it may be too long to be kept.
class ObjectWithList
{
public:
    ObjectWithList(const Json& head, const std::string& listName, Layout newLayout) : layout(newLayout)
    {
        std::string text = layout.text(head);
        text.resize(text.size() - layout.lineBreak().size() - 1); // without its end
        writeData(fmt::format("{},{}{}:{}[", text, layout.within(1).lineBreak(), layout.text(listName),
                              layout.indent < 0 ? "" : " "));
    }
    // What is written next is an element, in the layout that is returned.
    Layout startElement()
    {
        const Layout element = layout.within(2);
        writeData((isEmpty ? "" : ",") + element.lineBreak());
        isEmpty = false;
        return element;
    }
    void end() const { writeData((isEmpty ? "" : layout.within(1).lineBreak()) + "]" + layout.lineBreak() + "}"); }

private:
    Layout layout;
    bool isEmpty = true;
};

void writeResult(const Json& head, const Result& result, Layout layout)
{
    if (result.listName.empty()) {
        writeData(layout.text(head));
        return;
    }
    ObjectWithList object(head, result.listName, layout);
    result.eachRow([&](const Row& row) {
        Json element = Json::object();
        addFields(element, row);
        writeData(object.startElement().text(element));
    });
    object.end();
}

class JsonWriter final : public Writer
{
public:
    void begin(std::string_view newCommand, std::vector<Column> /*own*/) override { command = newCommand; }
    // Kept, because what the document begins with, `ok` and `code`, is known last.
    void add(const Result& result) override { results.push_back(result); }

    void end(ExitCode code) override
    {
        Json document = Json::object();
        document["schema"] = outputSchema;
        document["command"] = textOrNull(command);
        document["ok"] = code == ExitCode::ok;
        document["code"] = static_cast<int>(code);
        ObjectWithList object(document, "results", {2});
        for (const Result& result : results) {
            writeResult(toJson(result), result, object.startElement());
        }
        object.end();
        writeData("\n");
    }

    [[nodiscard]] bool streams() const override { return false; }

private:
    std::string command;
    std::vector<Result> results;
};

class JsonLinesWriter final : public Writer
{
public:
    void begin(std::string_view newCommand, std::vector<Column> /*own*/) override { command = newCommand; }

    void add(const Result& result) override
    {
        Json line = Json::object();
        line["schema"] = outputSchema;
        line["command"] = textOrNull(command);
        line.update(toJson(result));
        writeResult(line, result, {-1});
        writeData("\n");
        // For who reads line by line, while other targets are still at work.
        std::fflush(stdout);
    }

    void end(ExitCode /*code*/) override {}
    [[nodiscard]] bool streams() const override { return true; }

private:
    std::string command;
};

} // namespace

std::unique_ptr<Writer> makeJsonWriter()
{
    return std::make_unique<JsonWriter>();
}

std::unique_ptr<Writer> makeJsonLinesWriter()
{
    return std::make_unique<JsonLinesWriter>();
}
