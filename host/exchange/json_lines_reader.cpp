#include "host/exchange/json_lines_reader.h"

#include "host/exchange/exchange_text.h"
#include "host/exchange/json_lines_writer.h"

namespace orvane::host {

namespace {

constexpr std::int64_t largestNumber = 1'000'000'000;

std::optional<std::string> takeText(ObjectReader& line, std::string_view key) {
    const auto member = line.take(key);
    if (!member || member->isNull()) return std::nullopt;
    auto text = textFromExchange(member->text());
    if (!text) member->fail("promises base64, and no base64 follows");
    return text;
}

std::optional<bool> takeFlag(ObjectReader& line, std::string_view key) {
    const auto member = line.take(key);
    return member ? member->optionalBoolean() : std::nullopt;
}

std::optional<double> takeNumber(ObjectReader& line, std::string_view key) {
    const auto member = line.take(key);
    if (!member || member->isNull()) return std::nullopt;
    if (!member->json().is_string()) return member->number();
    const auto number = numberFromText(member->text());
    if (!number) member->fail("is not a number");
    return number;
}

/// The index of what an earlier line gave this number.
std::optional<std::size_t> takeReference(ObjectReader& line, std::string_view key,
                                         const std::unordered_map<std::int64_t, std::size_t>& known) {
    const auto member = line.take(key);
    if (!member || member->isNull()) return std::nullopt;
    const auto found = known.find(member->integer(1, largestNumber));
    if (found == known.end()) member->fail("names a number that no line before gave");
    return found->second;
}

void define(std::unordered_map<std::int64_t, std::size_t>& known, const Member& number, std::size_t index) {
    if (!known.emplace(number.integer(1, largestNumber), index).second)
        number.fail("was given by a line before");
}

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

void JsonLinesReader::read() {
    input_.skipByteOrderMark();
    std::string text;
    while (true) {
        const std::size_t number = input_.line();
        if (!input_.readLine(text)) break;
        if (isBlank(text)) continue;
        try {
            const Json json = parseJson(text);
            ObjectReader line(Member(json, ""));
            if (hasHeader_)
                readLine(line);
            else
                readHeader(line);
            line.finish();
        } catch (const TraceProblem& problem) {
            throw InputProblem(number, problem.what());
        }
    }
    if (!hasHeader_) throw InputProblem(input_.line(), "the file is empty");
}

void JsonLinesReader::readHeader(ObjectReader& line) {
    const auto type = line.take("type");
    if (!type || type->json() != "export")
        line.object().fail("is not the first line of an export, which has \"type\": \"export\"");
    const Member version = line.require("version");
    if (version.integer(1, largestNumber) > exchangeVersion)
        version.fail("is that of a newer program than this one");
    hasHeader_ = true;
}

void JsonLinesReader::readLine(ObjectReader& line) {
    const Member type = line.require("type");
    if (type.text() == "group")
        readGroup(line);
    else if (type.text() == "application")
        readApplication(line);
    else if (type.text() == "recording")
        readRecording(line);
    else
        type.fail("is neither \"group\" nor \"application\" nor \"recording\"");
}

void JsonLinesReader::readGroup(ObjectReader& line) {
    const Member number = line.require("number");
    GroupItem item;
    item.identifier = takeText(line, "identifier");
    item.name = takeText(line, "name");
    item.category = takeText(line, "category");
    item.color = takeText(line, "color");
    item.disabled = takeFlag(line, "disabled");
    define(groups_, number, batch_.addGroup(std::move(item)));
}

void JsonLinesReader::readApplication(ObjectReader& line) {
    const Member number = line.require("number");
    ApplicationItem item;
    item.identifier = takeText(line, "identifier");
    item.name = takeText(line, "name");
    item.color = takeText(line, "color");
    item.disabled = takeFlag(line, "disabled");
    item.group = takeReference(line, "group", groups_);
    define(applications_, number, batch_.addApplication(std::move(item)));
}

void JsonLinesReader::readRecording(ObjectReader& line) {
    RecordingItem item;
    item.start = takeNumber(line, "start");
    item.end = takeNumber(line, "end");
    item.idle = takeFlag(line, "idle");
    const std::optional<std::string> window = takeText(line, "window");
    item.window = window;
    item.application = takeReference(line, "application", applications_);
    batch_.addRecording(item);
}

}  // namespace orvane::host
