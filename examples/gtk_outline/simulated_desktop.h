#pragma once

#include <gio/gio.h>
#include <orvane/orvane.h>

/// A desktop that does what it is told on standard input, in place of the running one: it lets the example be
/// tried, and tested, anywhere and without waiting. Lines, their parts divided by tabulators:
///
///     use    IDENTIFIER  TITLE  SECONDS    works so long in a window of that application
///     group  NAME  COLOR  IDENTIFIER       makes a group and puts the application in it
///
/// Its days begin on 2 March 2026 at 09:00 UTC.
class SimulatedDesktop {
  public:
    /// Installs it. The store lies below `folder`.
    explicit SimulatedDesktop(const std::filesystem::path& folder);
    ~SimulatedDesktop();
    SimulatedDesktop(const SimulatedDesktop&) = delete;
    SimulatedDesktop& operator=(const SimulatedDesktop&) = delete;

    /// Follows the lines from here on, as the main loop runs. Ends the application at the end of the input.
    void follow(GApplication* application, orvane::Orvane& tracker);

  private:
    void readNext();
    void run(const std::string& line);
    void use(const std::string& identifier, const std::string& title, double seconds);
    void group(const std::string& name, const std::string& color, const std::string& identifier);

    std::shared_ptr<orvane::SimulatedPlatform> platform_;
    GDataInputStream* input_ = nullptr;
    GApplication* application_ = nullptr;
    orvane::Orvane* tracker_ = nullptr;
};
