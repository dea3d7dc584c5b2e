#include "host/replay/trace_time.h"

#include <array>
#include <filesystem>
#include <fstream>

namespace orvane::host {

namespace {

/// Takes a text apart from the front. Once something did not fit, it has failed for good.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    bool accept(char character) {
        if (rest_.empty() || rest_.front() != character) return false;
        rest_.remove_prefix(1);
        return true;
    }
    void expect(char character) {
        if (!accept(character)) failed_ = true;
    }
    /// Exactly that many digits.
    int digits(int count) {
        int result = 0;
        for (; count > 0; --count) {
            const std::optional<int> next = digit();
            if (!next) failed_ = true;
            result = result * 10 + next.value_or(0);
        }
        return result;
    }
    std::optional<int> digit() {
        if (rest_.empty() || rest_.front() < '0' || rest_.front() > '9') return std::nullopt;
        const int result = rest_.front() - '0';
        rest_.remove_prefix(1);
        return result;
    }
    void fail() { failed_ = true; }
    bool succeeded() const { return !failed_ && rest_.empty(); }

  private:
    std::string_view rest_;
    bool failed_ = false;
};

/// Digits after the point, in microseconds; the seventh decides the rounding.
std::int64_t fraction(Scanner& scanner) {
    std::int64_t result = 0;
    int count = 0;
    for (std::optional<int> digit = scanner.digit(); digit; digit = scanner.digit(), ++count) {
        if (count < 6) result = result * 10 + *digit;
        if (count == 6 && *digit >= 5) ++result;
    }
    if (count == 0) scanner.fail();
    for (; count < 6; ++count) result *= 10;
    return result;
}

}  // namespace

std::optional<TraceTime> parseEpoch(std::string_view text) {
    Scanner scanner(text);
    const int year = scanner.digits(4);
    scanner.expect('-');
    const int month = scanner.digits(2);
    scanner.expect('-');
    const int day = scanner.digits(2);
    scanner.expect('T');
    const int hour = scanner.digits(2);
    scanner.expect(':');
    const int minute = scanner.digits(2);
    scanner.expect(':');
    const int second = scanner.digits(2);
    const std::int64_t microseconds = scanner.accept('.') ? fraction(scanner) : 0;
    int offset = 0;  // minutes east of UTC
    if (!scanner.accept('Z')) {
        const bool west = scanner.accept('-');
        if (!west) scanner.expect('+');
        const int hours = scanner.digits(2);
        scanner.expect(':');
        const int minutes = scanner.digits(2);
        if (hours > 23 || minutes > 59) scanner.fail();
        offset = (hours * 60 + minutes) * (west ? -1 : 1);
    }
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!scanner.succeeded() || !date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(hour) +
           std::chrono::minutes(minute - offset) + std::chrono::seconds(second) + TraceTime(microseconds);
}

bool isKnownTimeZone(const std::string& name) {
    if (name == "UTC") return true;
    const std::filesystem::path path(name);
    if (name.empty() || path.is_absolute() || name.find('\0') != std::string::npos) return false;
    for (const std::filesystem::path& part : path)
        if (part == ".." || part == "." || part.empty()) return false;
    const std::filesystem::path file = std::filesystem::path("/usr/share/zoneinfo") / path;
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return false;
    // RFC 8536: a zone's file begins with these four bytes; the folder holds other files too.
    std::array<char, 4> magic{};
    std::ifstream(file, std::ios::binary).read(magic.data(), magic.size());
    return std::string_view(magic.data(), magic.size()) == "TZif";
}

}  // namespace orvane::host
