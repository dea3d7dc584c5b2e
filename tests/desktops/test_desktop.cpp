#include "tests/desktops/test_desktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace orvane {

namespace fs = std::filesystem;

namespace {

/// "nobody" on all systems.
constexpr ::uid_t kUser = 65534;

constexpr const char* kSaver = "org.freedesktop.ScreenSaver";
constexpr const char* kSaverPath = "/org/freedesktop/ScreenSaver";

/// Programs are installed once for the whole run: GLib reads the variable once, and notices new entries late.
class InstalledPrograms : public ::testing::Environment {
  public:
    void SetUp() override {
        std::string pattern = "/tmp/orvane-programs-XXXXXX";
        root = mkdtemp(pattern.data());
        fs::permissions(root, fs::perms(0755));
        setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
        install("notes", "Notes");
        install("mail", "Mail");
    }
    void TearDown() override { fs::remove_all(root); }

    static fs::path program(const std::string& name) { return root / "bin" / ("orvane-" + name); }
    static fs::path data() { return root / "data"; }

  private:
    static void install(const std::string& program, const std::string& name) {
        const auto file = InstalledPrograms::program(program);
        fs::create_directories(file.parent_path());
        fs::copy_file(ORVANE_SOURCE_DIR "/tests/desktops/window.py", file);
        fs::permissions(file, fs::perms(0755));
        fs::create_directories(root / "data/applications");
        std::ofstream(root / "data/applications" / ("org.example." + name + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << file.string() << '\n';
    }

    static fs::path root;
};

fs::path InstalledPrograms::root;
const auto* const kPrograms = ::testing::AddGlobalTestEnvironment(new InstalledPrograms);

}  // namespace

TestDesktop::TestDesktop() {
    // Not in $TMPDIR: another user must get there.
    std::string pattern = "/tmp/orvane-desktop-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    fs::permissions(folder_, fs::perms(0755));
    for (const char* name : {"run", "home", "session-bus", "system-bus"})
        fs::create_directory(folder_ / name);
    fs::permissions(folder_ / "run", fs::perms(0700));
    for (const char* name : {"run", "home"}) giveToUser(folder_ / name);

    sessionBus_ = std::make_unique<PrivateBus>((folder_ / "session-bus").string());
    systemBus_ = std::make_unique<PrivateBus>((folder_ / "system-bus").string());
    sessionBus_->start();
    systemBus_->start();
    loginManager_ = std::make_unique<MockLoginManager>(*systemBus_);

    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK"}) {
        const char* value = std::getenv(name);
        formerEnvironment_.emplace(name, value != nullptr ? std::optional<std::string>(value) : std::nullopt);
        unsetenv(name);
    }
    setVariable("XDG_RUNTIME_DIR", runtimeFolder());
    setVariable("DBUS_SESSION_BUS_ADDRESS", sessionBus_->address());
    setVariable("DBUS_SYSTEM_BUS_ADDRESS", systemBus_->address());
    const auto home = (folder_ / "home").string();
    environment_.insert({{"HOME", home},
                         {"TMPDIR", "/tmp"},
                         {"XDG_DATA_HOME", InstalledPrograms::data()},
                         {"XDG_CONFIG_HOME", home + "/config"},
                         {"XDG_CACHE_HOME", home + "/cache"},
                         {"XDG_STATE_HOME", home + "/state"},
                         {"GSETTINGS_BACKEND", "memory"},
                         {"NO_AT_BRIDGE", "1"}});
}

TestDesktop::~TestDesktop() {
    windows_.clear();
    for (const auto& [name, value] : formerEnvironment_) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }
    screenSaver_.reset();
    loginManager_.reset();
    std::error_code error;
    fs::remove_all(folder_, error);
}

void TestDesktop::setVariable(const std::string& name, const std::string& value) {
    const char* former = std::getenv(name.c_str());
    formerEnvironment_.emplace(name, former != nullptr ? std::optional<std::string>(former) : std::nullopt);
    setenv(name.c_str(), value.c_str(), 1);
    environment_[name] = value;
}

void TestDesktop::giveToUser(const fs::path& path) {
    if (geteuid() != 0) return;
    if (lchown(path.c_str(), kUser, kUser) != 0) throw std::runtime_error("chown failed");
    if (!fs::is_directory(path)) return;
    for (const auto& entry : fs::directory_iterator(path)) giveToUser(entry.path());
}

std::vector<std::string> TestDesktop::asUser(const std::vector<std::string>& command) {
    if (geteuid() != 0) return command;
    const auto user = std::to_string(kUser);
    // Whoever changes the user loses the wish to end with the parent.
    std::vector<std::string> result{"setpriv", "--reuid",        user,          "--regid",
                                    user,      "--clear-groups", "--pdeathsig", "KILL"};
    result.insert(result.end(), command.begin(), command.end());
    return result;
}

void TestDesktop::kill() {
    killCompositor();
    windows_.clear();
}

TestDesktop::Window& TestDesktop::open(const std::string& program, const std::string& title) {
    auto window = std::make_unique<Window>();
    window->program = std::make_unique<ChildProcess>(
        asUser({InstalledPrograms::program(program).string(), title}), environment_);
    const std::string answer = window->program->readLine();
    if (!answer.starts_with("shown ")) throw std::runtime_error(program + " showed no window");
    window->number = static_cast<std::uint32_t>(std::stoul(answer.substr(6)));
    window->identifier = program == "notes" ? "org.example.Notes" : "org.example.Mail";
    windows_.push_back(std::move(window));
    return *windows_.back();
}

void TestDesktop::lock(bool isLocked) {
    if (!screenSaver_)
        screenSaver_ = std::make_unique<MockScreenSaver>(*sessionBus_, kSaver, kSaverPath, false);
    screenSaver_->setActive(isLocked, kSaverPath);
}

}  // namespace orvane
