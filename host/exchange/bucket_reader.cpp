#include "host/exchange/bucket_reader.h"

#include <cmath>
#include <iterator>

#include "host/replay/trace_time.h"

namespace orvane::host {

namespace {

constexpr double longestDuration = 1e10;  // seconds: some three hundred years

/// The bytes of a file as the JSON parser wants them.
class ByteIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = char;

    ByteIterator() = default;
    explicit ByteIterator(InputFile& input) : input_(&input) {}

    char operator*() const { return static_cast<char>(input_->peek()); }
    ByteIterator& operator++() {
        input_->take();
        return *this;
    }
    ByteIterator operator++(int) {
        ByteIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const ByteIterator& left, const ByteIterator& right) {
        return left.isAtEnd() == right.isAtEnd();
    }

  private:
    bool isAtEnd() const { return !input_ || input_->peek() == InputFile::end; }

    InputFile* input_ = nullptr;
};

}  // namespace

std::vector<Bucket> BucketReader::read() {
    nlohmann::json::sax_parse(ByteIterator(input_), ByteIterator(), this);
    if (!isExport_) fail("the file has neither \"buckets\" nor \"events\"");
    return std::move(buckets_);
}

bool BucketReader::key(std::string& text) {
    key_.swap(text);
    return true;
}

bool BucketReader::start_object(std::size_t) {
    switch (place()) {
        case Place::file:
            places_.push_back(Place::root);
            bucket_ = {};
            return true;
        case Place::root:
            if (key_ == "events") fail("\"events\" is not a list");
            isExport_ |= key_ == "buckets";
            places_.push_back(key_ == "buckets" ? Place::buckets : Place::other);
            return true;
        case Place::buckets:
            places_.push_back(Place::bucket);
            bucket_ = {};
            bucket_.identifier = key_;
            return true;
        case Place::bucket:
            if (key_ == "events") fail("\"events\" is not a list");
            places_.push_back(Place::other);
            return true;
        case Place::events:
            places_.push_back(Place::event);
            event_ = {};
            event_.line = input_.line();
            return true;
        case Place::event:
            if (key_ != "data") eventMember({});
            places_.push_back(key_ == "data" ? Place::data : Place::other);
            return true;
        case Place::data:
            dataMember({});
            [[fallthrough]];
        case Place::other:
            places_.push_back(Place::other);
            return true;
    }
    return true;
}

bool BucketReader::end_object() {
    const Place ended = place();
    places_.pop_back();
    if (ended == Place::event) finishEvent();
    if (ended == Place::bucket || ended == Place::root) finishBucket();
    return true;
}

bool BucketReader::start_array(std::size_t) {
    const Place outer = place();
    if (outer == Place::file) fail("the file is a list and not an object with \"buckets\"");
    if ((outer == Place::root || outer == Place::bucket) && key_ == "events") {
        isExport_ = true;
        places_.push_back(Place::events);
        return true;
    }
    value({});
    places_.push_back(Place::other);
    return true;
}

bool BucketReader::end_array() {
    places_.pop_back();
    return true;
}

bool BucketReader::parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: …" of the library; the file's line
    // is told anyway.
    std::string problem = error.what();
    if (const auto end = problem.find(": "); end != std::string::npos) problem.erase(0, end + 2);
    fail("the file is no JSON: " + problem);
}

bool BucketReader::value(const Scalar& scalar) {
    switch (place()) {
        case Place::file:
            fail("the file is not an object with \"buckets\"");
        case Place::root:
        case Place::bucket:
            if (key_ == "buckets" && place() == Place::root) fail("\"buckets\" is not an object");
            if (key_ == "events") fail("\"events\" is not a list");
            if (key_ == "type" && scalar.text) bucket_.type = *scalar.text;
            if (key_ == "hostname" && scalar.text) bucket_.host = *scalar.text;
            if (key_ == "id" && scalar.text) bucket_.identifier = *scalar.text;
            return true;
        case Place::buckets:
            fail("the bucket \"" + key_ + "\" is not an object");
        case Place::events:
            countMalformed(input_.line(), "an event is not an object");
            return true;
        case Place::event:
            eventMember(scalar);
            return true;
        case Place::data:
            dataMember(scalar);
            return true;
        case Place::other:
            return true;
    }
    return true;
}

void BucketReader::eventMember(const Scalar& scalar) {
    if (key_ == "timestamp") {
        const auto moment = scalar.text ? parseEpoch(*scalar.text) : std::nullopt;
        if (moment)
            event_.start = moment->count();
        else
            event_.problem = "\"timestamp\" is not a date as in \"2026-03-02T08:00:00Z\"";
    } else if (key_ == "duration") {
        if (scalar.number && std::abs(*scalar.number) <= longestDuration)
            event_.duration = scalar.number;
        else
            event_.problem = "\"duration\" is not a number of seconds";
    } else if (key_ == "data") {
        event_.problem = "\"data\" is not an object";
    }
}

void BucketReader::dataMember(const Scalar& scalar) {
    if (key_ == "app" && scalar.text)
        event_.application = numberOfApplication(*scalar.text);
    else if (key_ == "title" && scalar.text)
        event_.window = batch_.numberOfWindow(*scalar.text);
    else if (key_ == "status" && scalar.text)
        event_.presence = *scalar.text == "afk"       ? BucketEvent::Presence::away
                          : *scalar.text == "not-afk" ? BucketEvent::Presence::here
                                                      : BucketEvent::Presence::unknown;
    else if (key_ == "title")
        event_.problem = "\"title\" is not a text";
}

void BucketReader::finishEvent() {
    if (bucket_.type && *bucket_.type != windowBucketType && *bucket_.type != presenceBucketType) {
        ++otherEvents_;
        return;
    }
    if (event_.problem.empty() && !event_.start) event_.problem = "\"timestamp\" is missing";
    if (event_.problem.empty() && !event_.duration) event_.problem = "\"duration\" is missing";
    if (!event_.problem.empty()) {
        countMalformed(event_.line, event_.problem);
        return;
    }
    const std::int64_t end = *event_.start + std::llround(*event_.duration * 1e6);
    bucket_.events.push_back({*event_.start, end, event_.application.value_or(0), event_.window,
                              static_cast<std::uint32_t>(event_.line), event_.presence});
}

void BucketReader::finishBucket() {
    const bool isWindows = bucket_.type == windowBucketType;
    if (!isWindows && bucket_.type != presenceBucketType) {
        const std::size_t count = otherEvents_ + bucket_.events.size();
        if (count > 0) report_.otherKinds[bucket_.type.value_or("")] += count;
    } else {
        std::erase_if(bucket_.events, [&](const BucketEvent& event) {
            if (isWindows ? event.application != 0 : event.presence != BucketEvent::Presence::unknown)
                return false;
            countMalformed(event.line, isWindows ? "\"app\" is missing, or no text"
                                                 : R"("status" is neither "afk" nor "not-afk")");
            return true;
        });
        buckets_.push_back(std::move(bucket_));
    }
    bucket_ = {};
    otherEvents_ = 0;
}

void BucketReader::countMalformed(std::size_t line, const std::string& problem) {
    if (report_.malformed++ == 0) report_.firstMalformed = "line " + std::to_string(line) + ": " + problem;
}

std::uint32_t BucketReader::numberOfApplication(const std::string& name) {
    const auto [place, isNew] = applications_.emplace(name, 0);
    if (isNew) {
        ApplicationItem item;
        item.identifier = name;
        item.name = name;
        place->second = static_cast<std::uint32_t>(batch_.addApplication(std::move(item)) + 1);
    }
    return place->second;
}

void BucketReader::fail(const std::string& problem) const { throw InputProblem(input_.line(), problem); }

}  // namespace orvane::host
