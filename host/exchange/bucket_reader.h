#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/exchange/bucket_event.h"
#include "host/exchange/import_batch.h"
#include "host/exchange/import_report.h"
#include "host/exchange/input_file.h"

namespace orvane::host {

/// Reads a bucket export, an event at a time: see docs/export-format.md. The applications and windows of its
/// events are put into the batch. Events that make no sense by themselves are counted as malformed and left
/// out; a file that is no JSON or has another structure is refused.
class BucketReader {
  public:
    /// All must outlive the reader.
    BucketReader(InputFile& input, ImportBatch& batch, ImportReport& report)
        : input_(input), batch_(batch), report_(report) {}

    /// The buckets with windows or presence; the events of others are counted by their kind. Throws
    /// InputProblem.
    std::vector<Bucket> read();

    // Called by the JSON parser with what it meets.

    bool null() { return value({}); }
    bool boolean(bool) { return value({}); }
    bool number_integer(std::int64_t number) { return value({.number = static_cast<double>(number)}); }
    bool number_unsigned(std::uint64_t number) { return value({.number = static_cast<double>(number)}); }
    bool number_float(double number, const std::string&) { return value({.number = number}); }
    bool string(std::string& text) { return value({.text = &text}); }
    bool binary(nlohmann::json::binary_t&) { return value({}); }
    bool start_object(std::size_t);
    bool key(std::string& text);
    bool end_object();
    bool start_array(std::size_t);
    bool end_array();
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error);

  private:
    /// What the parser stands in.
    enum class Place : std::uint8_t { file, root, buckets, bucket, events, event, data, other };

    struct Scalar {
        std::optional<double> number = std::nullopt;
        const std::string* text = nullptr;
    };
    /// An event while it is being read.
    struct RawEvent {
        std::optional<std::int64_t> start;
        std::optional<double> duration;
        std::optional<std::uint32_t> application;
        std::uint32_t window = 0;
        BucketEvent::Presence presence = BucketEvent::Presence::unknown;
        std::size_t line = 0;
        std::string problem;
    };

    Place place() const { return places_.empty() ? Place::file : places_.back(); }
    bool value(const Scalar& scalar);
    void eventMember(const Scalar& scalar);
    void dataMember(const Scalar& scalar);
    void finishEvent();
    void finishBucket();
    void countMalformed(std::size_t line, const std::string& problem);
    std::uint32_t numberOfApplication(const std::string& name);
    [[noreturn]] void fail(const std::string& problem) const;

    InputFile& input_;
    ImportBatch& batch_;
    ImportReport& report_;
    std::vector<Place> places_;
    std::string key_;
    Bucket bucket_;
    RawEvent event_;
    std::size_t otherEvents_ = 0;  ///< of the present bucket, known to be of no use
    std::vector<Bucket> buckets_;
    bool isExport_ = false;
    std::unordered_map<std::string, std::uint32_t> applications_;
};

}  // namespace orvane::host
