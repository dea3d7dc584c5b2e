#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::host {

/// One line of JSON Lines whose object has no objects or lists within. Its members are taken one by one, and
/// what is left over at the end is unknown. Everything throws InputProblem for a line that is not so.
class JsonLine {
  public:
    /// Reads the text, which stands on that line of its file. A member that stands twice is refused.
    void parse(std::string_view text, std::size_t number);

    // Each takes the member; none when it is missing or null.
    std::optional<std::string_view> takeText(std::string_view key);
    std::optional<bool> takeFlag(std::string_view key);
    /// "Infinity" and "-Infinity" stand as texts, since JSON has no such numbers.
    std::optional<double> takeNumber(std::string_view key);
    /// A whole number from 1 on.
    std::optional<std::uint32_t> takeCount(std::string_view key);

    /// Fails when a member was not taken.
    void finish() const;
    [[noreturn]] void fail(const std::string& problem) const;

    // Called by the JSON parser with what it meets.

    bool null() { return add(Kind::null); }
    bool boolean(bool value);
    bool number_integer(std::int64_t value) { return number_float(static_cast<double>(value), {}); }
    bool number_unsigned(std::uint64_t value) { return number_float(static_cast<double>(value), {}); }
    bool number_float(double value, const std::string&);
    bool string(std::string& value);
    bool binary(nlohmann::json::binary_t&) { return add(Kind::null); }
    bool start_object(std::size_t);
    bool key(std::string& value);
    bool end_object() { return true; }
    bool start_array(std::size_t);
    bool end_array() { return true; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error);

  private:
    enum class Kind : std::uint8_t { null, flag, number, text };
    struct Member {
        std::string key;
        Kind kind = Kind::null;
        bool isTaken = false;
        bool flag = false;
        double number = 0;
        std::string text;
    };

    bool add(Kind kind);
    Member& last() { return members_[count_ - 1]; }
    /// None for a member that is missing or null.
    const Member* take(std::string_view key);
    [[noreturn]] void failMember(std::string_view key, const char* problem) const;

    std::size_t number_ = 0;
    std::vector<Member> members_;  // kept from line to line, so that their texts need no new room
    std::size_t count_ = 0;
    bool isOpen_ = false;
};

}  // namespace orvane::host
