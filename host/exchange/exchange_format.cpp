#include "host/exchange/exchange_format.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace orvane::host {

std::optional<ExchangeFormat> exchangeFormatNamed(std::string_view name) {
    if (name == "jsonl") return ExchangeFormat::jsonLines;
    if (name == "csv") return ExchangeFormat::csv;
    if (name == "buckets") return ExchangeFormat::buckets;
    return std::nullopt;
}

std::optional<ExchangeFormat> exchangeFormatOf(const std::filesystem::path& file) {
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".jsonl" || extension == ".ndjson") return ExchangeFormat::jsonLines;
    if (extension == ".csv") return ExchangeFormat::csv;
    if (extension == ".json") return ExchangeFormat::buckets;
    return std::nullopt;
}

}  // namespace orvane::host
