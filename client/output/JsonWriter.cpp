// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Writer.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace
{

using Json = nlohmann::ordered_json;

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

Json toJson(const Result& result)
{
    Json object = Json::object();
    object["target"] = textOrNull(result.target);
    object["ok"] = result.ok();
    object["code"] = static_cast<int>(result.code);
    object["category"] = textOrNull(result.category);
    object["phase"] = textOrNull(result.phase);
    object["hint"] = textOrNull(result.hint);
    if (result.malformed) {
        object["malformed"] = true;
    }
    addFields(object, result.fields);
    if (!result.listName.empty()) {
        Json& list = object[result.listName] = Json::array();
        for (const Row& row : result.list) {
            Json element = Json::object();
            addFields(element, row);
            list.push_back(std::move(element));
        }
    }
    return object;
}

// Bytes of a card that are no UTF-8 are replaced: the output must stay valid JSON whatever a card sends.
std::string dump(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

class JsonWriter final : public Writer
{
public:
    void begin(std::string_view newCommand, std::vector<Column> /*columns*/) override { command = newCommand; }
    void add(const Result& result) override { results.push_back(toJson(result)); }

    void end(ExitCode code) override
    {
        Json document = Json::object();
        document["schema"] = outputSchema;
        document["command"] = textOrNull(command);
        document["ok"] = code == ExitCode::ok;
        document["code"] = static_cast<int>(code);
        document["results"] = std::move(results);
        fmt::print("{}\n", dump(document, 2));
    }

    [[nodiscard]] bool streams() const override { return false; }

private:
    std::string command;
    Json results = Json::array();
};

class JsonLinesWriter final : public Writer
{
public:
    void begin(std::string_view newCommand, std::vector<Column> /*columns*/) override { command = newCommand; }

    void add(const Result& result) override
    {
        Json line = Json::object();
        line["schema"] = outputSchema;
        line["command"] = textOrNull(command);
        line.update(toJson(result));
        fmt::print("{}\n", dump(line, -1));
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
