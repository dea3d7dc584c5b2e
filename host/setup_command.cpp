#include "host/command.h"

#include <filesystem>
#include <iostream>
#include <system_error>

#include "host/answer.h"
#include "platform/linux/gnome/gnome_extension.h"
#include "platform/linux/gnome/gnome_shell.h"
#include "platform/linux/kwin/kwin_permission.h"

namespace orvane::host {

namespace {

using ExtensionState = GnomeShell::ExtensionState;

constexpr const char* kExtension = GnomeExtension::identifier;

int fail(const std::string& problem) { return host::fail(problem + ".", exitFailure); }

/// What is left for the user, now that the files are in place and the extension is switched on.
int tellWhatRemains(GnomeShell& shell, bool filesChanged) {
    if (shell.areExtensionsOff()) {
        std::cout << "All extensions are switched off in the settings. To allow them:\n"
                     "  gsettings set org.gnome.shell disable-user-extensions false\n";
    }
    const auto state = shell.state(kExtension);
    if (state == ExtensionState::failed && !filesChanged) {
        return fail("GNOME Shell could not run the extension: " + shell.failure(kExtension));
    }
    if (state == ExtensionState::running && !filesChanged) {
        std::cout << "The extension is running.\n";
    } else {
        std::cout << "Now log out and in again: GNOME Shell reads extensions only when it starts.\n";
    }
    std::cout << "To undo all this: orvane setup gnome --remove\n";
    return exitSuccess;
}

int installForGnome() {
    GnomeShell shell;
    if (!shell.version()) {
        return fail("GNOME Shell does not answer on the session bus: run this within your GNOME session");
    }
    const GnomeExtension extension;
    const auto files = extension.install(*shell.version());
    if (!files.problem.empty()) return fail(files.problem);
    std::cout << (files.isChanged ? "Wrote" : "In place already:") << " the extension for GNOME Shell "
              << *shell.version() << (files.isChanged ? " to " : ", ") << extension.folder().string() << '\n';

    // A shell that knows the extension already can do it at once; one that does not reads the settings.
    shell.switchExtension(kExtension, true);
    bool isEntered = false;
    const auto problem = shell.setInSettings(kExtension, true, isEntered);
    if (!problem.empty()) return fail("the extension cannot be switched on: " + problem);
    std::cout << "Switched on in the settings of GNOME Shell (enabled-extensions): " << kExtension
              << "\nIt tells title, class and process of your windows to the programs on your session bus.\n";
    return tellWhatRemains(shell, files.isChanged);
}

int removeFromGnome() {
    GnomeShell shell;
    // A shell remembers until its end an extension that was removed.
    const bool wasRunning = shell.state(kExtension) == GnomeShell::ExtensionState::running;
    shell.switchExtension(kExtension, false);
    bool wasEntered = false;
    const auto problem = shell.setInSettings(kExtension, false, wasEntered);
    if (!problem.empty() && shell.version()) return fail("the extension cannot be switched off: " + problem);
    const GnomeExtension extension;
    const auto files = extension.remove();
    if (!files.problem.empty()) return fail(files.problem);
    if (!files.isChanged && !wasEntered && !wasRunning) {
        std::cout << "There is no extension of Orvane's to remove.\n";
        return exitSuccess;
    }
    if (wasRunning || wasEntered) std::cout << "Switched the extension off: " << kExtension << '\n';
    if (files.isChanged) std::cout << "Removed " << extension.folder().string() << '\n';
    return exitSuccess;
}

int permitOnKwin() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return fail("this program's own file cannot be found: " + error.message());
    const KwinPermission permission;
    const auto outcome = permission.grant(program);
    if (!outcome.problem.empty()) return fail(outcome.problem);
    std::cout << (outcome.isChanged ? "Wrote " : "In place already: ") << permission.file().string()
              << "\nIt lets KWin tell " << program.string()
              << " its windows: title, application and process.\n"
                 "Start the tracker again to use it. To undo this: orvane setup kwin --remove\n";
    return exitSuccess;
}

int forbidOnKwin() {
    const KwinPermission permission;
    const auto outcome = permission.withdraw();
    if (!outcome.problem.empty()) return fail(outcome.problem);
    if (outcome.isChanged)
        std::cout << "Removed " << permission.file().string() << '\n';
    else
        std::cout << "There is no permission of Orvane's to remove.\n";
    return exitSuccess;
}

}  // namespace

int runSetupKwin(bool remove) { return remove ? forbidOnKwin() : permitOnKwin(); }

int runSetupGnome(bool remove) { return remove ? removeFromGnome() : installForGnome(); }

}  // namespace orvane::host
