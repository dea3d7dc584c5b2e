#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace orvane::host {

enum class ExchangeFormat {
    jsonLines,
    csv,
    buckets,  ///< the bucket export of another tracker; can be read only
};

/// By the name that the command line gives it: "jsonl", "csv" or "buckets".
std::optional<ExchangeFormat> exchangeFormatNamed(std::string_view name);
/// By a file's extension, in either case: ".jsonl" and ".ndjson", ".csv", ".json".
std::optional<ExchangeFormat> exchangeFormatOf(const std::filesystem::path& file);

}  // namespace orvane::host
