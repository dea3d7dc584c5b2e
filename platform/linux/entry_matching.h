#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"
#include "platform/linux/desktop_entries.h"
#include "platform/linux/process_info.h"

namespace orvane {

/// Text in lower case, as identifiers and classes are compared.
std::string lowerCase(std::string_view text);

/// Finds the desktop entry that a window belongs to among those that may stand for its process.
class EntryMatcher {
  public:
    /// The process is none when it is unknown. Everything must outlive the matcher.
    EntryMatcher(const std::vector<DesktopEntry>& entries, const DesktopWindow& window,
                 const ProcessInfo* process);

    /// The entry whose StartupWMClass or id is the window's instance or class; null when none is.
    const DesktopEntry* byWindowClass() const;
    /// The entry that starts this program; null when none does.
    const DesktopEntry* byProgram(const Program& program) const;
    /// The entries that may stand for the process.
    const std::vector<const DesktopEntry*>& candidates() const { return candidates_; }

  private:
    const DesktopEntry* best(const std::function<bool(const DesktopEntry&)>& fits,
                             const Program& program) const;

    const DesktopWindow& window_;
    const ProcessInfo* process_;
    std::vector<const DesktopEntry*> candidates_;
};

}  // namespace orvane
