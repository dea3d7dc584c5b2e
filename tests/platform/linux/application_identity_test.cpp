#include <gtest/gtest.h>

#include "desktop_fixture.h"
#include "platform/linux/application_directory.h"

namespace orvane::testing {
namespace {

namespace fs = std::filesystem;

/// How one window looks to the different kinds of desktops.
struct Look {
    std::string x11Class;
    std::string x11Instance;
    /// What GTK programs write beside these on X11, and GNOME tells on Wayland too.
    std::string gtkId;
    /// Empty for programs that only know X11.
    std::string waylandId;
};

struct Application {
    const char* kind;
    std::string identifier;
    Look look;
    FakeProcess process;
    /// Units that the process is in when something other than a terminal has started it.
    std::vector<std::string> units;
    /// A script that waits for the program, and was started in its stead.
    std::vector<std::string> script = {};
};

std::string bin(const std::string& name) { return fixtureRoot() / "bin" / name; }

/// Units that desktops make for an application when a launcher starts it or the session begins.
std::vector<std::string> launched(const std::string& escaped) {
    return {"app-gnome-" + escaped + "-4711.scope", "app-" + escaped + "@0123456789abcdef.service",
            "app-" + escaped + "@autostart.service"};
}

std::vector<std::string> alsoActivated(const std::string& identifier) {
    auto units = launched(identifier);
    units.push_back("dbus-:1.2-" + identifier + "@0.service");
    return units;
}

std::vector<Application> applications() {
    const std::string share = fixtureRoot() / "share";
    const std::string snapId = "01234567-89ab-cdef-0123-456789abcdef";
    FakeProcess flatpak{"/app/bin/boxed", {"boxed"}};
    flatpak.flatpakInfo = "[Application]\nname=org.example.Boxed\n";
    return {
        {"GTK 3",
         "org.example.Notes",
         {"Notes", "notes", "org.example.Notes", "notes"},
         {bin("notes"), {bin("notes"), "--gapplication-service"}},
         alsoActivated("org.example.Notes")},
        {"GTK 4",
         "org.example.Paper",
         {"org.example.Paper", "org.example.Paper", "org.example.Paper", "org.example.Paper"},
         {bin("paper-viewer"), {"paper-viewer", "file.pdf"}},
         alsoActivated("org.example.Paper")},
        {"Qt",
         "org.example.scribble",
         {"scribble", "scribble", "", "org.example.scribble"},
         {bin("scribble"), {"scribble"}},
         launched("org.example.scribble")},
        {"Electron",
         "chat-desktop",
         {"Chat", "chat", "", "chat-bin"},
         {bin("chat-bin"), {bin("chat-bin"), "--no-zygote"}},
         launched("chat\\x2ddesktop")},
        {"Electron that the system brings",
         "writer",
         {"Writer", "writer", "", "writer"},
         {"/usr/lib/electron25/electron", {"/usr/lib/electron25/electron", "/usr/lib/writer/app.asar"}},
         launched("writer")},
        {"Java",
         "modeller",
         {"com-example-modeller-Main", "sun-awt-X11-XFramePeer", "", ""},
         {"/usr/lib/jvm/17/bin/java", {"java", "-Xmx1g", "-jar", share + "/modeller.jar"}},
         launched("modeller")},
        {"Java behind a script",
         "workshop",
         {"example-workshop", "sun-awt-X11-XFramePeer", "", "example-workshop"},
         {"/opt/workshop/jre/bin/java", {"java", "-cp", "all.jar", "com.example.Main"}},
         launched("workshop"),
         {"/bin/sh", bin("workshop.sh")}},
        {"a terminal whose windows belong to a service",
         "org.example.Console",
         {"Console", "console-server", "org.example.Console", "console-server"},
         {"/usr/libexec/console-server", {"/usr/libexec/console-server"}},
         {"console-server.service", "dbus-:1.9-org.example.Console@1.service"}},
        {"a program inside a terminal",
         "plainterm",
         {"PlainTerm", "plainterm", "", "plainterm"},
         {bin("plainterm"), {"plainterm", "-e", "watcher"}},
         launched("watcher")},
        {"Flatpak",
         "org.example.Boxed",
         {"boxed", "boxed", "", "org.example.Boxed"},
         flatpak,
         {"app-flatpak-org.example.Boxed-77.scope", "app-gnome-org.example.Boxed-78.scope",
          "dbus-:1.2-org.example.Boxed@2.service"}},
        {"Snap",
         "player_player",
         {"player", "player", "", "player"},
         {"/snap/player/5/usr/bin/player",
          {"/snap/player/5/usr/bin/player"},
          1,
          0,
          false,
          "snap.player.player-" + snapId + ".scope",
          {}},
         {"snap.player.player." + snapId + ".scope"}},
        {"a script of an interpreter",
         "tool",
         {"Tool.py", "tool.py", "", "tool.py"},
         {"/usr/bin/python3.11", {"python3", share + "/tool.py"}},
         launched("tool")},
        {"a program that is a script",
         "gadget",
         {"Gadget", "gadget", "", "gadget"},
         {"/usr/bin/python3.11", {"/usr/bin/python3", bin("gadget")}},
         launched("gadget")},
        {"without a desktop entry",
         "thing",
         {"Thing", "thing", "", "thing"},
         {"/opt/thing/Thing", {"./Thing"}},
         {"session-1.scope"}},
    };
}

void install() {
    const std::string share = fixtureRoot() / "share";
    installEntry("org.example.Notes", "Exec=notes %U\nDBusActivatable=true\n", "notes");
    installEntry("org.example.Paper", "Exec=paper-viewer %f\nDBusActivatable=true\n", "paper-viewer");
    installEntry("org.example.scribble", "Exec=scribble -qwindowtitle %c\n", "scribble");
    installEntry("chat-desktop", "Exec=" + bin("chat-bin") + " %U\nStartupWMClass=Chat\n", "chat-bin");
    installEntry("writer", "Exec=writer %F\nStartupWMClass=Writer\n", "writer");
    installEntry("modeller",
                 "Exec=java -jar " + share + "/modeller.jar\nStartupWMClass=com-example-modeller-Main\n",
                 "java");
    installEntry("workshop", "Exec=" + bin("workshop.sh") + " %f\nStartupWMClass=example-workshop\n",
                 "workshop.sh");
    installEntry("org.example.Console",
                 "Exec=console\nDBusActivatable=true\nCategories=System;TerminalEmulator;\n", "console");
    writeFile(fixtureRoot() / "data/dbus-1/services/org.example.Console.service",
              "[D-BUS Service]\nName=org.example.Console\nExec=/usr/libexec/console-server\n"
              "SystemdService=console-server.service\n");
    installEntry("plainterm", "Exec=plainterm\nCategories=TerminalEmulator;\n", "plainterm");
    installEntry("watcher", "Exec=watcher\nTerminal=true\n", "watcher");
    installEntry("org.example.Boxed",
                 "Exec=flatpak run --branch=stable --command=boxed org.example.Boxed\n"
                 "X-Flatpak=org.example.Boxed\n",
                 "flatpak");
    installEntry(
        "player_player",
        "Exec=env BAMF_DESKTOP_FILE_HINT=/x.desktop /snap/bin/player %U\nX-SnapInstanceName=player\n");
    installEntry("tool", "Exec=python3 " + share + "/tool.py\n");
    installEntry("gadget", "Exec=gadget\n", "gadget");
    for (const char* file : {"modeller.jar", "tool.py"}) writeFile(fs::path(share) / file, "");
}

/// The window as each kind of desktop tells it.
std::vector<std::pair<std::string, DesktopWindow>> toldWindows(const Look& look, int process) {
    const auto window = [](const std::string& windowClass, const std::string& instance,
                           const std::string& gtkId, int owner) {
        DesktopWindow result;
        result.windowClass = windowClass;
        result.windowInstance = instance;
        result.gtkApplicationId = gtkId;
        result.processIdentifier = owner;
        return result;
    };
    std::vector<std::pair<std::string, DesktopWindow>> told{
        {"X11", window(look.x11Class, look.x11Instance, look.gtkId, process)},
        {"accessibility", window("", "", "", process)}};
    if (!look.waylandId.empty()) {
        told.emplace_back("GNOME", window(look.waylandId, "", look.gtkId, process));
        told.emplace_back("Wayland", window(look.waylandId, "", "", process));
        told.emplace_back("Wayland without processes", window(look.waylandId, "", "", 0));
    }
    return told;
}

TEST(ApplicationIdentityTest, IsTheSameOnEachDesktopHoweverItWasStarted) {
    install();
    const auto proc = freshFolder("identity-proc");
    ApplicationDirectory directory(proc);
    int number = 1000;
    for (const auto& application : applications()) {
        struct Start {
            std::string way;
            FakeProcess process;
        };
        std::vector<Start> starts;
        for (const auto& unit : application.units) {
            starts.push_back({unit, application.process});
            starts.back().process.unit = unit;
        }
        // A sandbox keeps its own unit.
        const bool hasUnit = application.process.unit.starts_with("snap.");
        for (const auto& [way, unit, isJob] :
             {std::tuple("terminal", "vte-spawn-0123.scope", true),
              std::tuple("terminal with a unit", "app-plainterm-9.scope", true),
              std::tuple("terminal, let go", "app-plainterm-9.scope", false)}) {
            starts.push_back({way, application.process});
            if (!hasUnit) starts.back().process.unit = unit;
            starts.back().process.hasTerminal = isJob;
        }
        for (auto& start : starts) {
            if (!application.script.empty()) {
                auto waiting = start.process;
                waiting.executable = application.script.front();
                waiting.command = application.script;
                waiting.processGroup = ++number;
                addProcess(proc, number, waiting);
                start.process.parent = start.process.processGroup = number;
            }
            addProcess(proc, ++number, start.process);
            for (const auto& [desktop, window] : toldWindows(application.look, number)) {
                EXPECT_EQ(directory.identify(window), application.identifier)
                    << application.kind << " on " << desktop << ", started by " << start.way;
            }
        }
    }
}

}  // namespace
}  // namespace orvane::testing
