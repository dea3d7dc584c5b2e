#include "trials/soak.h"

namespace orvane::trials {

Soak::Soak(const std::filesystem::path& folder, std::uint64_t seed)
    : desk_(folder, {}), use_(desk_, folder, seed) {}

bool Soak::day() {
    if (problem_) return false;
    if (!use_.day()) {
        problem_ = use_.problem();
        return false;
    }
    if (use_.days() % 7 != 0) return true;
    now_ = processFigures();
    if (use_.days() == 7) first_ = now_;
    if (now_.memory > first_.memory + memoryTolerance)
        problem_ = "memory grew from " + std::to_string(first_.memory) + " to " +
                   std::to_string(now_.memory) + " bytes in " + std::to_string(use_.days()) + " days";
    if (now_.openFiles > first_.openFiles)
        problem_ = "open files grew from " + std::to_string(first_.openFiles) + " to " +
                   std::to_string(now_.openFiles);
    return !problem_;
}

}  // namespace orvane::trials
