#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/child_process.h"
#include "tests/platform/session/private_bus.h"
#include "tests/platform/session/session_mocks.h"

namespace orvane {

/// A desktop of the test's own: a real compositor or window manager without a screen, real programs with real
/// windows on it, private buses with a login manager and a screen saver. While it lives, this process's
/// environment leads to it and to no other desktop.
///
/// Whoever adds a desktop derives a class that starts it and does what a user does to windows; what is common
/// to all has a default here. Operations return when the desktop was told, not when it has obeyed.
class TestDesktop {
  public:
    /// A program with one window.
    struct Window {
        std::unique_ptr<ChildProcess> program;
        /// As X11 knows it, or 0.
        std::uint32_t number = 0;
        /// What the platform should call the program.
        std::string identifier;
    };

    /// Makes folders and buses, and installs the programs.
    TestDesktop();
    virtual ~TestDesktop();
    TestDesktop(const TestDesktop&) = delete;
    TestDesktop& operator=(const TestDesktop&) = delete;

    /// Starts the compositor, or starts it again where it was, and returns when programs can have windows.
    virtual void start() = 0;
    /// Ends the compositor at once, and the programs with it.
    void kill();

    /// Opens a window of one of the two programs, "notes" and "mail", and returns when it is on the screen.
    Window& open(const std::string& program, const std::string& title);
    virtual void activate(Window& window) = 0;
    virtual void minimize(Window& window) { window.program->writeLine("minimize"); }
    /// Shows a desktop or workspace without windows, or the usual one again.
    virtual void showEmptyDesktop(bool show) = 0;
    void setTitle(Window& window, const std::string& title) { window.program->writeLine("title " + title); }
    void close(Window& window) { window.program->writeLine("close"); }

    /// Moves the pointer or presses a key, as a user does.
    virtual void touch() = 0;
    /// Switches the screens off or on; false when this desktop cannot do that without a screen.
    virtual bool switchScreens(bool /*on*/) { return false; }
    virtual void lock(bool isLocked);
    /// The machine is about to sleep, or has woken.
    void sleep(bool begins) { loginManager_->prepareFor("Sleep", begins); }

    // What this desktop can tell.

    /// The windows' order from the front to the back.
    virtual bool tellsOrder() const { return true; }
    /// Which windows are put aside or on another workspace.
    virtual bool tellsVisibility() const { return true; }
    virtual bool tellsProcesses() const { return true; }

  protected:
    /// Ends the processes of the compositor.
    virtual void killCompositor() = 0;

    /// A private folder of the user whom the desktop belongs to.
    const std::filesystem::path& folder() const { return folder_; }
    std::string runtimeFolder() const { return (folder_ / "run").string(); }
    /// The command as the user runs it whom the desktop belongs to: an ordinary one, since most compositors
    /// refuse the superuser.
    static std::vector<std::string> asUser(const std::vector<std::string>& command);
    /// Makes files and folders the user's whom the desktop belongs to.
    static void giveToUser(const std::filesystem::path& path);
    /// What all programs on the desktop have in their environment.
    const std::map<std::string, std::string>& environment() const { return environment_; }
    /// Sets a variable for the programs and for this process.
    void setVariable(const std::string& name, const std::string& value);
    /// Sets a variable for the programs alone.
    void setForPrograms(const std::string& name, const std::string& value) { environment_[name] = value; }
    PrivateBus& sessionBus() { return *sessionBus_; }
    PrivateBus& systemBus() { return *systemBus_; }

  private:
    std::filesystem::path folder_;
    std::map<std::string, std::string> environment_;
    std::map<std::string, std::optional<std::string>> formerEnvironment_;
    std::unique_ptr<PrivateBus> sessionBus_;
    std::unique_ptr<PrivateBus> systemBus_;
    std::unique_ptr<MockLoginManager> loginManager_;
    std::unique_ptr<MockScreenSaver> screenSaver_;
    std::vector<std::unique_ptr<Window>> windows_;
};

}  // namespace orvane
