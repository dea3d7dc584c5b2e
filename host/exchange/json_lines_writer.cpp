#include "host/exchange/json_lines_writer.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/exchange/exchange_text.h"

namespace orvane::host {

namespace {

using Json = nlohmann::ordered_json;

template <class Text>
void add(Json& line, const char* key, const std::optional<Text>& text) {
    if (text) line[key] = exchangeText(*text);
}

void add(Json& line, const char* key, const std::optional<bool>& flag) {
    if (flag) line[key] = *flag;
}

/// JSON has no infinite numbers.
void add(Json& line, const char* key, const std::optional<double>& number) {
    if (number) line[key] = std::isfinite(*number) ? Json(*number) : Json(numberText(*number));
}

void write(OutputFile& output, const Json& line) { output.write(line.dump() + '\n'); }

}  // namespace

void JsonLinesWriter::begin() { write(output_, {{"type", "export"}, {"version", exchangeVersion}}); }

void JsonLinesWriter::group(const GroupItem& group) {
    Json line{{"type", "group"}, {"number", ++groups_}};
    add(line, "identifier", group.identifier);
    add(line, "name", group.name);
    add(line, "category", group.category);
    add(line, "color", group.color);
    add(line, "disabled", group.disabled);
    write(output_, line);
}

void JsonLinesWriter::application(const ApplicationItem& application) {
    Json line{{"type", "application"}, {"number", ++applications_}};
    add(line, "identifier", application.identifier);
    add(line, "name", application.name);
    add(line, "color", application.color);
    add(line, "disabled", application.disabled);
    if (application.group) line["group"] = *application.group + 1;
    write(output_, line);
}

void JsonLinesWriter::recording(const RecordingItem& recording) {
    Json line{{"type", "recording"}};
    add(line, "start", recording.start);
    add(line, "end", recording.end);
    add(line, "idle", recording.idle);
    add(line, "window", recording.window);
    if (recording.application) line["application"] = *recording.application + 1;
    write(output_, line);
}

}  // namespace orvane::host
