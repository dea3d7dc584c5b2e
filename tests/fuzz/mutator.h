#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace orvane::test {

/// Makes inputs out of others, the same ones for the same seed.
class Mutator {
  public:
    /// The inputs to begin with; at least one.
    Mutator(std::vector<std::string> corpus, std::uint32_t seed)
        : corpus_(std::move(corpus)), random_(seed) {}

    std::string next();

  private:
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(random_()) % count; }
    const std::string& any() { return corpus_[below(corpus_.size())]; }
    void change(std::string& input);

    std::vector<std::string> corpus_;
    std::mt19937 random_;
};

}  // namespace orvane::test
