#include "host/replay/trace_json.h"

#include <cmath>

#include "foundation/json_value.h"

namespace orvane::host {

namespace {

constexpr std::size_t deepestLevel = 200;
constexpr double longestTime = 1e12;

/// Builds a value from what the parser tells, and refuses what the library's own builder would let pass.
class Builder : public nlohmann::json_sax<Json> {
  public:
    Json result() { return std::move(root_); }

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& key) override {
        if (open_.back()->contains(key)) throw TraceProblem("key " + Json(key).dump() + " stands twice");
        member_ = &(*open_.back())[std::move(key)];
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const Json::exception& error) override {
        // The library's own prefix ("[json.exception.parse_error.101] ") tells a user nothing.
        std::string problem = error.what();
        if (const auto end = problem.find("] "); problem.starts_with('[') && end != std::string::npos)
            problem.erase(0, end + 2);
        throw TraceProblem("no JSON: " + problem);
    }

  private:
    /// Puts the value where the next one belongs; the place stays valid while the value is open.
    Json& put(Json value) {
        if (open_.empty()) return root_ = std::move(value);
        if (open_.back()->is_object()) return *member_ = std::move(value);
        open_.back()->push_back(std::move(value));
        return open_.back()->back();
    }
    bool add(Json value) {
        put(std::move(value));
        return true;
    }
    bool open(Json value) {
        if (open_.size() == deepestLevel) throw TraceProblem("nested too deeply");
        open_.push_back(&put(std::move(value)));
        return true;
    }
    bool close() {
        open_.pop_back();
        return true;
    }

    Json root_;
    std::vector<Json*> open_;
    Json* member_ = nullptr;
};

}  // namespace

Json parseJson(std::string_view text) {
    Builder builder;
    Json::sax_parse(text, &builder);
    return builder.result();
}

void Member::fail(std::string_view problem) const {
    throw TraceProblem((place_.empty() ? "the line" : place_) + " " + std::string(problem));
}

bool Member::boolean() const {
    if (!json_->is_boolean()) fail("is not true or false");
    return json_->get<bool>();
}

const std::string& Member::text() const {
    if (!json_->is_string()) fail("is not a text");
    return json_->get_ref<const std::string&>();
}

double Member::number() const {
    if (!json_->is_number()) fail("is not a number");
    return json_->get<double>();
}

std::int64_t Member::integer(std::int64_t least, std::int64_t most) const {
    const double number = this->number();
    if (std::trunc(number) != number) fail("is not a whole number");
    // Bounds lie well within what a double counts exactly.
    if (number < static_cast<double>(least) || number > static_cast<double>(most)) fail("is out of range");
    return static_cast<std::int64_t>(number);
}

TraceTime Member::time() const {
    const double seconds = number();
    if (!(std::abs(seconds) <= longestTime)) fail("is not a time that can be counted");
    return TraceTime(std::llround(seconds * 1e6));
}

std::optional<bool> Member::optionalBoolean() const {
    return isNull() ? std::nullopt : std::optional(boolean());
}

std::optional<std::string> Member::optionalText() const {
    return isNull() ? std::nullopt : std::optional(text());
}

void Member::requireObject() const {
    if (!json_->is_object()) fail("is not an object");
}

void Member::requireArray() const {
    if (!json_->is_array()) fail("is not a list");
}

Member Member::element(std::size_t index) const {
    return {(*json_)[index], place_ + "[" + std::to_string(index) + "]"};
}

Value Member::value() const { return valueFromJson(*json_); }

Dictionary Member::dictionary() const {
    requireObject();
    Dictionary result;
    for (const auto& [key, member] : json_->items()) result.set(key, valueFromJson(member));
    return result;
}

ObjectReader::ObjectReader(Member object) : object_(std::move(object)) { object_.requireObject(); }

std::optional<Member> ObjectReader::take(std::string_view key) {
    const auto found = object_.json().find(key);
    if (found == object_.json().end()) return std::nullopt;
    taken_.emplace(key);
    std::string place = object_.place();
    if (!place.empty()) place += '.';
    return Member(*found, place.append(key));
}

Member ObjectReader::require(std::string_view key) {
    if (auto member = take(key)) return *member;
    object_.fail("lacks \"" + std::string(key) + "\"");
}

void ObjectReader::finish() const {
    for (const auto& [key, member] : object_.json().items())
        if (!taken_.contains(key)) object_.fail("has an unknown key " + Json(key).dump());
}

}  // namespace orvane::host
