#include "platform/linux/application_directory.h"

#include <gio/gio.h>

#include <algorithm>
#include <memory>

#include "platform/linux/entry_matching.h"

namespace orvane {

namespace {

/// File names may be any bytes; names of applications are valid UTF-8.
std::string validText(const std::string& text) {
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    return valid.get();
}

}  // namespace

ApplicationDirectory::ApplicationDirectory(std::filesystem::path procFolder)
    : processes_(std::move(procFolder)) {}

ApplicationDirectory::~ApplicationDirectory() {
    if (!monitor_) return;
    g_signal_handlers_disconnect_by_data(monitor_, this);
    g_object_unref(monitor_);
}

void ApplicationDirectory::forget() {
    entries_.reset();
    identities_.clear();
}

const std::vector<DesktopEntry>& ApplicationDirectory::entries() {
    if (!monitor_) {
        monitor_ = g_app_info_monitor_get();
        const auto changed =
            +[](GAppInfoMonitor*, gpointer self) { static_cast<ApplicationDirectory*>(self)->forget(); };
        g_signal_connect(monitor_, "changed", G_CALLBACK(changed), this);
    }
    if (!entries_) entries_ = installedDesktopEntries();
    return *entries_;
}

std::optional<DesktopEntry> ApplicationDirectory::entry(std::string_view identifier) {
    const auto& known = entries();
    const auto found = std::lower_bound(
        known.begin(), known.end(), identifier,
        [](const DesktopEntry& entry, std::string_view sought) { return entry.identifier < sought; });
    if (found != known.end() && found->identifier == identifier) return *found;
    return desktopEntry(identifier);
}

std::optional<std::filesystem::path> ApplicationDirectory::entryPath(std::string_view identifier) {
    const auto found = entry(identifier);
    return found && !found->file.empty() ? std::optional(found->file) : std::nullopt;
}

std::optional<std::string> ApplicationDirectory::identify(const DesktopWindow& window) {
    return identityOf(window).identifier;
}

std::optional<std::string> ApplicationDirectory::ownerName(const DesktopWindow& window) {
    return identityOf(window).name;
}

const ApplicationDirectory::Identity& ApplicationDirectory::identityOf(const DesktopWindow& window) {
    std::string key = std::to_string(window.processIdentifier);
    // A later process may have the same number.
    key += '@' + std::to_string(processes_.startTime(window.processIdentifier).value_or(0));
    for (const auto& name : {window.gtkApplicationId, window.windowClass, window.windowInstance})
        (key += '\n') += name;
    if (const auto known = identities_.find(key); known != identities_.end()) return known->second;

    // Processes come and go; what they were called is not worth keeping for long.
    constexpr std::size_t mostIdentities = 256;
    if (identities_.size() >= mostIdentities) identities_.clear();
    return identities_.emplace(std::move(key), identifyAfresh(window)).first->second;
}

ApplicationDirectory::Identity ApplicationDirectory::identifyAfresh(const DesktopWindow& window) {
    const auto process =
        window.processIdentifier > 0 ? processes_.read(window.processIdentifier) : std::nullopt;
    const EntryMatcher matcher(entries(), window, process ? &*process : nullptr);
    const auto known = [](const DesktopEntry& entry) { return Identity{entry.identifier, entry.name}; };
    const auto isCandidate = [&](const std::string& identifier) {
        return std::any_of(matcher.candidates().begin(), matcher.candidates().end(),
                           [&](const auto* entry) { return entry->identifier == identifier; });
    };
    const bool isSandboxed = process && (!process->flatpak.empty() || !process->snap.empty());

    if (!window.gtkApplicationId.empty() && (!isSandboxed || isCandidate(window.gtkApplicationId))) {
        if (const auto found = entry(window.gtkApplicationId)) return known(*found);
    }
    if (const auto* found = matcher.byWindowClass()) return known(*found);
    if (isSandboxed) {
        const std::string identifier =
            !process->flatpak.empty() ? process->flatpak : process->snap + '_' + process->snapApplication;
        if (const auto found = entry(identifier)) return known(*found);
        if (matcher.candidates().size() == 1) return known(*matcher.candidates().front());
        return {validText(identifier), validText(process->program.name)};
    }
    if (!process) {
        // Some programs give their own name where the application's identifier belongs.
        for (const auto& name : {window.windowClass, window.windowInstance}) {
            Program program;
            program.path = program.name = name;
            if (const auto* found = matcher.byProgram(program)) return known(*found);
        }
    }
    if (process) {
        if (const auto* found = matcher.byProgram(process->program)) return known(*found);
        // A start script that waits for the program: both are one job, hence in one process group.
        constexpr int mostAncestors = 8;
        auto ancestor = processes_.read(process->parent);
        for (int i = 0; i < mostAncestors && ancestor && ancestor->processGroup == process->processGroup;
             ++i) {
            const auto* found = ancestor->program.isScript ? matcher.byProgram(ancestor->program) : nullptr;
            if (found) return known(*found);
            ancestor = processes_.read(ancestor->parent);
        }
        // What is started inside a terminal window lies in the unit of the terminal's application.
        if (!process->hasTerminal) {
            for (const auto& name : process->launchedAs) {
                // Nor is it the terminal when it has let go of its window.
                if (const auto found = entry(name); found && !found->isTerminal) return known(*found);
            }
        }
    }

    Identity identity;
    std::string program;
    if (process) {
        const auto& run = process->program;
        program = validText(run.isScript ? run.name : run.path.filename().string());
    }
    const auto commandName = process ? validText(process->commandName) : std::string();
    for (const auto& text : {window.gtkApplicationId, lowerCase(window.windowClass),
                             lowerCase(window.windowInstance), lowerCase(program), lowerCase(commandName)}) {
        if (!identity.identifier && !text.empty()) identity.identifier = text;
    }
    for (const auto& text : {program, commandName, window.windowClass, window.windowInstance}) {
        if (!identity.name && !text.empty()) identity.name = text;
    }
    return identity;
}

}  // namespace orvane
