#include "host/exchange/json_lines_reader.h"

#include "host/exchange/exchange_text.h"
#include "host/exchange/json_lines_writer.h"

namespace orvane::host {

namespace {

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

void JsonLinesReader::read() {
    input_.skipByteOrderMark();
    std::string text;
    for (std::size_t number = input_.line(); input_.readLine(text); number = input_.line()) {
        if (isBlank(text)) continue;
        line_.parse(text, number);
        if (hasHeader_)
            readLine();
        else
            readHeader();
        line_.finish();
    }
    if (!hasHeader_) throw InputProblem(input_.line(), "the file is empty");
}

void JsonLinesReader::readHeader() {
    if (line_.takeText("type") != "export")
        line_.fail("the file does not begin with the line of an export, which has \"type\": \"export\"");
    const auto version = line_.takeCount("version");
    if (!version) line_.fail("\"version\" is missing");
    if (*version > exchangeVersion) line_.fail("the file was written by a newer program than this one");
    hasHeader_ = true;
}

void JsonLinesReader::readLine() {
    const auto type = line_.takeText("type");
    if (type == "recording")
        readRecording();
    else if (type == "application")
        readApplication();
    else if (type == "group")
        readGroup();
    else
        line_.fail(R"("type" is neither "group" nor "application" nor "recording")");
}

void JsonLinesReader::readGroup() {
    const auto number = line_.takeCount("number");
    GroupItem item;
    item.identifier = takeText("identifier");
    item.name = takeText("name");
    item.category = takeText("category");
    item.color = takeText("color");
    item.disabled = line_.takeFlag("disabled");
    define(groups_, number, batch_.addGroup(std::move(item)));
}

void JsonLinesReader::readApplication() {
    const auto number = line_.takeCount("number");
    ApplicationItem item;
    item.identifier = takeText("identifier");
    item.name = takeText("name");
    item.color = takeText("color");
    item.disabled = line_.takeFlag("disabled");
    item.group = takeReference("group", groups_);
    define(applications_, number, batch_.addApplication(std::move(item)));
}

void JsonLinesReader::readRecording() {
    RecordingItem item;
    item.start = line_.takeNumber("start");
    item.end = line_.takeNumber("end");
    item.idle = line_.takeFlag("idle");
    const std::optional<std::string> window = takeText("window");
    item.window = window;
    item.application = takeReference("application", applications_);
    batch_.addRecording(item);
}

std::optional<std::string> JsonLinesReader::takeText(std::string_view key) {
    const auto written = line_.takeText(key);
    if (!written) return std::nullopt;
    auto text = textFromExchange(*written);
    if (!text) line_.fail("\"" + std::string(key) + "\" promises base64, and no base64 follows");
    return text;
}

std::optional<std::size_t> JsonLinesReader::takeReference(std::string_view key, const Numbers& known) {
    const auto number = line_.takeCount(key);
    if (!number) return std::nullopt;
    const auto found = known.find(*number);
    if (found == known.end())
        line_.fail("\"" + std::string(key) + "\" names a number that no line before gave");
    return found->second;
}

void JsonLinesReader::define(Numbers& known, std::optional<std::uint32_t> number, std::size_t index) {
    if (!number) line_.fail("\"number\" is missing");
    if (!known.emplace(*number, index).second) line_.fail("\"number\" was given by a line before");
}

}  // namespace orvane::host
