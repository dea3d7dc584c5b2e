#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "foundation/value.h"
#include "host/replay/trace_line.h"

namespace orvane::host {

using Json = nlohmann::ordered_json;

/// What is wrong with a line, in words for people. Used between the reader's own functions only.
class TraceProblem : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads a JSON text in UTF-8. A key that stands twice in one object is refused at any depth, and so is
/// nesting beyond 200 levels. Throws TraceProblem.
Json parseJson(std::string_view text);

/// A value, and where it stands: the keys that lead to it, for messages.
class Member {
  public:
    Member(const Json& json, std::string place) : json_(&json), place_(std::move(place)) {}

    const Json& json() const { return *json_; }
    const std::string& place() const { return place_; }
    bool isNull() const { return json_->is_null(); }

    [[noreturn]] void fail(std::string_view problem) const;

    // Each throws TraceProblem for a value of another type.
    bool boolean() const;
    const std::string& text() const;
    double number() const;
    /// A whole number, however it is written, within the bounds.
    std::int64_t integer(std::int64_t least, std::int64_t most) const;
    /// Seconds, to the nearest microsecond (halves away from zero). At most 10^12 seconds either way, so that
    /// sums of a few stay within the type.
    TraceTime time() const;
    std::optional<bool> optionalBoolean() const;
    std::optional<std::string> optionalText() const;
    /// Fails unless the value is an object or array.
    void requireObject() const;
    void requireArray() const;
    Member element(std::size_t index) const;
    /// Whatever it is as a value of the library: null as none; whole numbers beyond 64 bits in double
    /// precision.
    Value value() const;
    Dictionary dictionary() const;

  private:
    const Json* json_;
    std::string place_;
};

/// An object whose members are taken one by one; what is left over at the end is unknown.
class ObjectReader {
  public:
    /// Throws TraceProblem when the value is no object.
    explicit ObjectReader(Member object);

    bool has(std::string_view key) const { return object_.json().contains(key); }
    /// The member, or none when it is missing.
    std::optional<Member> take(std::string_view key);
    /// The member; fails when it is missing.
    Member require(std::string_view key);
    /// Fails when a member was not taken.
    void finish() const;

    const Member& object() const { return object_; }

  private:
    Member object_;
    std::set<std::string, std::less<>> taken_;
};

}  // namespace orvane::host
