#include "platform/linux/entry_matching.h"

#include <glib.h>

#include <algorithm>
#include <memory>
#include <tuple>

namespace orvane {

namespace {

/// How well an entry's own arguments are found on a program's command line.
struct ArgumentFit {
    std::size_t missing = 0;
    std::size_t found = 0;
    /// A word that is no option says what is run, such as the command inside a terminal.
    bool lacksWord = false;
};

ArgumentFit argumentFit(const Program& entry, const Program& program) {
    ArgumentFit fit;
    for (const auto& argument : entry.arguments) {
        if (std::find(program.arguments.begin(), program.arguments.end(), argument) !=
            program.arguments.end()) {
            ++fit.found;
        } else {
            ++fit.missing;
            if (!argument.starts_with('-')) fit.lacksWord = true;
        }
    }
    return fit;
}

bool isSamePath(const DesktopEntry& entry, const Program& program) {
    return program.path.is_absolute() &&
           (entry.program.path == program.path || entry.service.path == program.path);
}

/// For programs that a start script of the same name runs.
bool isSameName(const DesktopEntry& entry, const Program& program) {
    const auto isSame = [&](const Program& known) {
        return !known.name.empty() && (known.name == program.name || known.name == program.path.filename());
    };
    return isSame(entry.program) || isSame(entry.service);
}

/// The last part of an id in reverse domain order, such as "nautilus".
std::string_view lastPart(std::string_view identifier) {
    return std::count(identifier.begin(), identifier.end(), '.') < 2
               ? std::string_view()
               : identifier.substr(identifier.rfind('.') + 1);
}

}  // namespace

std::string lowerCase(std::string_view text) {
    const std::unique_ptr<char, decltype(&g_free)> lower(
        g_utf8_strdown(text.data(), static_cast<gssize>(text.size())), g_free);
    return lower.get();
}

EntryMatcher::EntryMatcher(const std::vector<DesktopEntry>& entries, const DesktopWindow& window,
                           const ProcessInfo* process)
    : window_(window), process_(process) {
    for (const auto& entry : entries) {
        // A sandboxed application and one that the system brought have entries of their own.
        if (!process || (entry.flatpak == process->flatpak && entry.snap == process->snap))
            candidates_.push_back(&entry);
    }
}

const DesktopEntry* EntryMatcher::best(const std::function<bool(const DesktopEntry&)>& fits,
                                       const Program& program) const {
    const DesktopEntry* found = nullptr;
    using Rank = std::tuple<bool, bool, std::size_t, std::size_t, bool>;
    Rank foundRank;
    const auto windowClass = lowerCase(window_.windowClass);
    for (const DesktopEntry* entry : candidates_) {
        if (!fits(*entry)) continue;
        const ArgumentFit fit = argumentFit(entry->program, program);
        // Smaller is better; of equals the first by identifier stays.
        const Rank rank{!isSamePath(*entry, program) && !isSameName(*entry, program),
                        lowerCase(entry->identifier) != windowClass, fit.missing,
                        entry->program.arguments.size() - fit.found, entry->isHidden};
        if (!found || rank < foundRank) {
            found = entry;
            foundRank = rank;
        }
    }
    return found;
}

const DesktopEntry* EntryMatcher::byWindowClass() const {
    const Program none;
    const Program& program = process_ ? process_->program : none;
    // The instance comes first: web applications in a window of their own share their browser's class.
    std::vector<std::string> names;
    for (const auto& name : {lowerCase(window_.windowInstance), lowerCase(window_.windowClass)}) {
        if (!name.empty()) names.push_back(name);
    }
    for (const auto& name : names) {
        const auto fits = [&](const DesktopEntry& entry) { return lowerCase(entry.startupClass) == name; };
        if (const auto* entry = best(fits, program)) return entry;
    }
    for (auto name : names) {
        std::replace(name.begin(), name.end(), ' ', '-');
        const auto hasId = [&](const DesktopEntry& entry) { return lowerCase(entry.identifier) == name; };
        if (const auto* entry = best(hasId, program)) return entry;
        const auto endsInName = [&](const DesktopEntry& entry) {
            return lastPart(lowerCase(entry.identifier)) == name;
        };
        // Such names are common ones: several entries with the same need the program to decide.
        const auto count = std::count_if(candidates_.begin(), candidates_.end(),
                                         [&](const auto* entry) { return endsInName(*entry); });
        const auto* entry = best(endsInName, program);
        if (entry && (count == 1 || isSamePath(*entry, program) || isSameName(*entry, program))) return entry;
    }
    return nullptr;
}

const DesktopEntry* EntryMatcher::byProgram(const Program& program) const {
    if (program.name.empty()) return nullptr;
    for (const auto& isSame : {isSamePath, isSameName}) {
        const auto fits = [&](const DesktopEntry& entry) {
            // What runs in a terminal has no window of its own.
            return !entry.runsInTerminal && isSame(entry, program) &&
                   !argumentFit(entry.program, program).lacksWord;
        };
        if (const auto* entry = best(fits, program)) return entry;
    }
    return nullptr;
}

}  // namespace orvane
