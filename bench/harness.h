#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"

namespace orvane::bench {

enum class Unit { microseconds, bytes, count };

/// What a figure is to reach. Without any bound it is for information.
struct Reach {
    std::optional<double> ratio = std::nullopt;  ///< ours by raw at most
    std::optional<double> ours = std::nullopt;   ///< ours at most, in the figure's unit
    bool equal = false;                          ///< ours exactly as raw
};

struct Figure {
    std::string name;
    Unit unit = Unit::microseconds;
    std::optional<double> raw;
    double ours = 0;
    Reach reach;

    std::optional<double> ratio() const;
    /// None when there is nothing to reach.
    std::optional<bool> holds() const;
};

struct Options {
    std::uint64_t recordings = 1'000'000;
    std::size_t rounds = 7;  ///< of what takes long; at least 5
    bool large = false;      ///< also ten times as many recordings
    std::string only;        ///< part of the names of the figures wanted; empty: all
};

/// Gathers the figures of a run.
class Harness {
  public:
    explicit Harness(Options options) : options_(std::move(options)) {}

    const Options& options() const { return options_; }
    bool wants(std::string_view name) const { return name.find(options_.only) != std::string_view::npos; }
    bool wantsAny(std::initializer_list<std::string_view> names) const;

    /// Figures that are not wanted are left out.
    void add(Figure figure);

    void printTable() const;
    /// False when the file cannot be written.
    bool writeJson(const std::filesystem::path& file) const;

  private:
    Options options_;
    std::vector<Figure> figures_;
};

/// Measurements of one thing.
class Samples {
  public:
    void add(double value) { values_.push_back(value); }
    double median() const;

  private:
    std::vector<double> values_;
};

struct Medians {
    double raw = 0;
    double ours = 0;
};

/// Runs both in turn, which of them first changing each time, so that neither always meets the other's
/// leavings. Each returns what it measured. One round before these is not counted.
template <class Raw, class Ours>
Medians alternate(std::size_t rounds, Raw&& raw, Ours&& ours) {
    raw();
    ours();
    Samples rawSamples;
    Samples ourSamples;
    for (std::size_t round = 0; round < rounds; ++round) {
        if (round % 2 == 0) rawSamples.add(raw());
        ourSamples.add(ours());
        if (round % 2 != 0) rawSamples.add(raw());
    }
    return {rawSamples.median(), ourSamples.median()};
}

/// Time that passes while `work` runs, in microseconds, whatever else the machine does.
template <class Work>
double wallMicroseconds(Work&& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
}

/// Processor time that all threads of the process spend while `work` runs, in microseconds.
template <class Work>
double processorMicroseconds(Work&& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
    };
    const double begin = now();
    work();
    return now() - begin;
}

/// Whether `microseconds` counts processor time.
inline bool processorTimeOnly = false;

/// What most figures count: wall time, or processor time on a machine that has other work too.
template <class Work>
double microseconds(Work&& work) {
    return processorTimeOnly ? processorMicroseconds(work) : wallMicroseconds(work);
}

/// Memory of the process that belongs to no file, in bytes, after free heap pages were given back.
double anonymousMemory();

}  // namespace orvane::bench
