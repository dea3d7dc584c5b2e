#include "host/exchange/json_line.h"

#include <cmath>

#include "host/exchange/exchange_text.h"
#include "host/exchange/input_file.h"

namespace orvane::host {

namespace {

constexpr double largestCount = 1e9;

}  // namespace

void JsonLine::parse(std::string_view text, std::size_t number) {
    number_ = number;
    count_ = 0;
    isOpen_ = false;
    nlohmann::json::sax_parse(text.begin(), text.end(), this);
}

std::optional<std::string_view> JsonLine::takeText(std::string_view key) {
    const Member* member = take(key);
    if (!member) return std::nullopt;
    if (member->kind != Kind::text) failMember(key, "is not a text");
    return member->text;
}

std::optional<bool> JsonLine::takeFlag(std::string_view key) {
    const Member* member = take(key);
    if (!member) return std::nullopt;
    if (member->kind != Kind::flag) failMember(key, "is not true or false");
    return member->flag;
}

std::optional<double> JsonLine::takeNumber(std::string_view key) {
    const Member* member = take(key);
    if (!member) return std::nullopt;
    if (member->kind == Kind::number) return member->number;
    const auto infinite = member->kind == Kind::text ? numberFromText(member->text) : std::nullopt;
    if (!infinite || std::isfinite(*infinite)) failMember(key, "is not a number");
    return infinite;
}

std::optional<std::uint32_t> JsonLine::takeCount(std::string_view key) {
    const Member* member = take(key);
    if (!member) return std::nullopt;
    if (member->kind != Kind::number || std::trunc(member->number) != member->number || member->number < 1 ||
        member->number > largestCount)
        failMember(key, "is not a whole number from 1 on");
    return static_cast<std::uint32_t>(member->number);
}

void JsonLine::finish() const {
    for (std::size_t i = 0; i < count_; ++i)
        if (!members_[i].isTaken) failMember(members_[i].key, "is unknown here");
}

void JsonLine::fail(const std::string& problem) const { throw InputProblem(number_, problem); }

void JsonLine::failMember(std::string_view key, const char* problem) const {
    fail("\"" + std::string(key) + "\" " + problem);
}

bool JsonLine::boolean(bool value) {
    add(Kind::flag);
    last().flag = value;
    return true;
}

bool JsonLine::number_float(double value, const std::string&) {
    add(Kind::number);
    last().number = value;
    return true;
}

bool JsonLine::string(std::string& value) {
    add(Kind::text);
    last().text = value;
    return true;
}

bool JsonLine::start_object(std::size_t) {
    if (isOpen_) failMember(last().key, "is an object");
    isOpen_ = true;
    return true;
}

bool JsonLine::start_array(std::size_t) {
    if (isOpen_) failMember(last().key, "is a list");
    fail("the line is not an object");
}

bool JsonLine::key(std::string& value) {
    for (std::size_t i = 0; i < count_; ++i)
        if (members_[i].key == value) failMember(value, "stands twice");
    if (count_ == members_.size()) members_.emplace_back();
    ++count_;
    last().key = value;
    last().isTaken = false;
    return true;
}

bool JsonLine::add(Kind kind) {
    if (!isOpen_) fail("the line is not an object");
    last().kind = kind;
    return true;
}

bool JsonLine::parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: …": the line is told with the file.
    std::string problem = error.what();
    if (const auto place = problem.find("column "); place != std::string::npos) problem.erase(0, place);
    fail("no JSON: " + problem);
}

const JsonLine::Member* JsonLine::take(std::string_view key) {
    for (std::size_t i = 0; i < count_; ++i) {
        if (members_[i].key != key) continue;
        members_[i].isTaken = true;
        return members_[i].kind == Kind::null ? nullptr : &members_[i];
    }
    return nullptr;
}

}  // namespace orvane::host
