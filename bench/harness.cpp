#include "bench/harness.h"

#include <malloc.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace orvane::bench {

namespace {

std::string formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string amount(std::optional<double> value, Unit unit) {
    if (!value) return "";
    switch (unit) {
        case Unit::microseconds:
            return formatted(*value < 1000 ? "%.1f us" : "%.0f us", *value);
        case Unit::bytes:
            return formatted(*value < 1000 ? "%.1f B" : "%.0f B", *value);
        case Unit::count:
            return formatted("%.0f", *value);
    }
    return "";
}

std::string reachText(const Figure& figure) {
    std::string text;
    if (figure.reach.equal) text = "equal";
    if (figure.reach.ratio) text += formatted("<= %.2f x", *figure.reach.ratio);
    if (figure.reach.ours) text += (text.empty() ? "<= " : ", ") + amount(figure.reach.ours, figure.unit);
    return text;
}

std::string holdsText(const Figure& figure) {
    const std::optional<bool> holds = figure.holds();
    if (!holds) return "";
    return *holds ? "yes" : "NO";
}

}  // namespace

std::optional<double> Figure::ratio() const {
    if (!raw || *raw == 0) return std::nullopt;
    return ours / *raw;
}

std::optional<bool> Figure::holds() const {
    if (!reach.ratio && !reach.ours && !reach.equal) return std::nullopt;
    if (reach.equal && raw != ours) return false;
    if (reach.ratio && ratio().value_or(0) > *reach.ratio) return false;
    return !reach.ours || ours <= *reach.ours;
}

bool Harness::wantsAny(std::initializer_list<std::string_view> names) const {
    return std::any_of(names.begin(), names.end(), [this](std::string_view name) { return wants(name); });
}

void Harness::add(Figure figure) {
    if (!wants(figure.name)) return;
    std::fprintf(stderr, "  %s\n", figure.name.c_str());
    figures_.push_back(std::move(figure));
}

void Harness::printTable() const {
    std::vector<std::array<std::string, 6>> rows{{"work", "raw", "ours", "ratio", "reach", "holds"}};
    for (const Figure& figure : figures_)
        rows.push_back({figure.name, amount(figure.raw, figure.unit), amount(figure.ours, figure.unit),
                        figure.ratio() ? formatted("%.2f", *figure.ratio()) : "", reachText(figure),
                        holdsText(figure)});
    std::array<std::size_t, 6> widths{};
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    for (const auto& row : rows) {
        // Numbers stand flush right.
        for (std::size_t i = 0; i < row.size(); ++i) {
            std::printf(i >= 1 && i <= 3 ? "%*s  " : "%-*s  ", static_cast<int>(widths[i]), row[i].c_str());
        }
        std::printf("\n");
    }
}

bool Harness::writeJson(const std::filesystem::path& file) const {
    const auto number = [](std::optional<double> value) {
        return value ? nlohmann::ordered_json(*value) : nullptr;
    };
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const Figure& figure : figures_) {
        nlohmann::ordered_json row;
        row["name"] = figure.name;
        if (figure.unit == Unit::microseconds) {
            row["rawMicroseconds"] = number(figure.raw);
            row["ourMicroseconds"] = figure.ours;
        } else {
            row["unit"] = figure.unit == Unit::bytes ? "bytes" : "count";
            row["raw"] = number(figure.raw);
            row["ours"] = figure.ours;
        }
        row["ratio"] = number(figure.ratio());
        row["reach"] = reachText(figure);
        const std::optional<bool> holds = figure.holds();
        row["holds"] = holds ? nlohmann::ordered_json(*holds) : nullptr;
        rows.push_back(std::move(row));
    }
    std::ofstream out(file);
    out << rows.dump(2) << '\n';
    return static_cast<bool>(out.flush());
}

double Samples::median() const {
    if (values_.empty()) throw std::logic_error("nothing was measured");
    std::vector<double> sorted = values_;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    return sorted.size() % 2 != 0 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

double anonymousMemory() {
    malloc_trim(0);
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word != "RssAnon:") continue;
        double kibibytes = 0;
        status >> kibibytes;
        return kibibytes * 1024;
    }
    throw std::runtime_error("/proc/self/status does not tell the memory in use");
}

}  // namespace orvane::bench
