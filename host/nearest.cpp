#include "host/nearest.h"

#include <algorithm>
#include <numeric>

#include "foundation/predicate_node.h"

namespace orvane::host {

namespace {

/// Levenshtein distance: letters to insert, drop or replace.
std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t replaced = diagonal + (left[i] == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/// Distance to the word itself or to the nearest of its parts: of "org.example.Editor" people remember
/// "editor".
std::size_t distanceToParts(std::string_view word, std::string_view candidate) {
    std::size_t best = distance(word, candidate);
    for (std::size_t start = 0; start < candidate.size();) {
        const std::size_t end = std::min(candidate.find_first_of(".-_ ", start), candidate.size());
        best = std::min(best, distance(word, candidate.substr(start, end - start)));
        start = end + 1;
    }
    return best;
}

}  // namespace

std::string nearestHint(std::string_view word, const std::vector<std::string>& known) {
    const std::string folded = foldedText(word, true, true);
    std::string_view best;
    std::size_t bestDistance = std::max<std::size_t>(2, word.size() / 2) + 1;
    for (const std::string& candidate : known) {
        const std::string other = foldedText(candidate, true, true);
        const std::size_t apart =
            !folded.empty() && other.find(folded) != std::string::npos ? 1 : distanceToParts(folded, other);
        if (apart >= bestDistance) continue;
        bestDistance = apart;
        best = candidate;
    }
    return best.empty() ? std::string() : " Did you mean \"" + std::string(best) + "\"?";
}

}  // namespace orvane::host
