#include "bench/recording_stream.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::bench {

namespace {

constexpr std::int64_t hour = 3600;
constexpr std::size_t titlesPerApplication = 500;
constexpr std::size_t shortestTitle = 10;
constexpr std::size_t longestTitle = 120;
constexpr double idleShare = 0.12;
constexpr double busiestShare = 0.25;

constexpr std::array words{"Quarterly", "report",  "draft",   "Inbox",    "meeting", "notes",  "budget",
                           "Über",      "release", "plan",    "main.cpp", "review",  "issue",  "terminal",
                           "résumé",    "photos",  "holiday", "invoice",  "design",  "sketch", "—",
                           "server",    "logs",    "naïve",   "search",   "results", "map",    "timetable",
                           "chapter",   "日誌",    "letter",  "untitled"};

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

/// A title of exactly `length` characters, unlike that of any other number.
std::string makeTitle(Random& random, std::size_t number, std::size_t length) {
    std::string title = std::to_string(10000 + number);
    std::size_t count = title.size();
    while (true) {
        const std::string_view word = words[random.below(words.size())];
        if (count + 1 + characterCount(word) > length) break;
        title.append(" ").append(word);
        count += 1 + characterCount(word);
    }
    return title.append(length - count, '.');
}

}  // namespace

std::string applicationIdentifier(std::int64_t application) {
    return "org.example.Application" + std::to_string(application);
}

RecordingStream::RecordingStream(std::uint64_t recordings, std::uint64_t seed) : random_(seed) {
    makeTitles();
    planDays(recordings);
    double others = 0;
    for (std::int64_t rank = 1; rank < applicationCount; ++rank) others += 1.0 / static_cast<double>(rank);
    double sum = busiestShare;
    shares_.push_back(sum);
    for (std::int64_t rank = 1; rank < applicationCount; ++rank)
        shares_.push_back(sum += (1 - busiestShare) / static_cast<double>(rank) / others);
    shares_.back() = 1;
}

void RecordingStream::makeTitles() {
    for (std::size_t number = 0; number < titlesPerApplication * applicationCount; ++number) {
        const double skewed = random_.unit() * random_.unit();  // most titles are short
        const auto length =
            shortestTitle + static_cast<std::size_t>(skewed * (longestTitle - shortestTitle + 1));
        titles_.push_back(makeTitle(random_, number, length));
    }
}

void RecordingStream::planDays(std::uint64_t recordings) {
    std::vector<double> weights;
    double total = 0;
    for (std::int64_t day = 0; day < dayCount; ++day) {
        const std::int64_t weekday = (day + 4) % 7;  // the first day is a Friday; 5 and 6 are the weekend
        const std::int64_t midnight = firstDay + day * daySeconds;
        double weight = 0;
        double begin = 0;
        double end = 0;
        if (weekday < 5) {
            begin = random_.between(7.5, 10) * hour;
            end = (random_.unit() < 0.1 ? random_.between(22, 26) : random_.between(17, 20)) * hour;
            weight = end - begin;
        } else if (random_.unit() < 0.45) {
            begin = random_.between(10, 15) * hour;
            end = begin + random_.between(1, 5) * hour;
            weight = (end - begin) / 2;
        }
        days_.push_back({midnight + std::lround(begin), midnight + std::lround(end), 0});
        weights.push_back(weight);
        total += weight;
    }
    double sum = 0;
    std::uint64_t given = 0;
    for (std::size_t day = 0; day < days_.size(); ++day) {
        sum += weights[day];
        const auto until = day + 1 == days_.size()
                               ? recordings
                               : static_cast<std::uint64_t>(sum / total * static_cast<double>(recordings));
        days_[day].recordings = until - given;
        given = until;
    }
    left_ = days_.front().recordings;
    present_ = days_.front().begin;
}

std::int64_t RecordingStream::spanLength() {
    const std::int64_t room = days_[day_].end - present_;
    if (left_ == 1) return std::max<std::int64_t>(room, 1);
    const double mean = static_cast<double>(room) / static_cast<double>(left_);
    const auto wanted = std::llround(mean * 4 * random_.unit() * random_.unit());
    return std::clamp<std::int64_t>(wanted, 1,
                                    std::max<std::int64_t>(room - static_cast<std::int64_t>(left_), 1));
}

bool RecordingStream::next(RecordingRow& row) {
    while (left_ == 0) {
        if (++day_ >= days_.size()) return false;
        left_ = days_[day_].recordings;
        present_ = days_[day_].begin;
    }
    const std::int64_t length = spanLength();
    row.startDate = static_cast<double>(present_);
    row.endDate = static_cast<double>(present_ + length);
    present_ += length;
    --left_;

    const double share = random_.unit();
    const auto application =
        static_cast<std::size_t>(std::upper_bound(shares_.begin(), shares_.end(), share) - shares_.begin());
    const double skewed = random_.unit() * random_.unit();
    const auto title = static_cast<std::size_t>(skewed * titlesPerApplication);
    row.idle = random_.unit() < idleShare;
    row.windowName = titles_[application * titlesPerApplication + title];
    row.application = static_cast<std::int64_t>(application) + busiestApplication;
    return true;
}

}  // namespace orvane::bench
