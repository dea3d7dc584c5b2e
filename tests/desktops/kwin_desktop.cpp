#include "tests/desktops/kwin_desktop.h"

#include <fstream>
#include <stdexcept>

#include "platform/linux/kwin/kwin_permission.h"
#include "platform/linux/kwin/kwin_script.h"
#include "platform/linux/kwin/kwin_script_backend.h"
#include "tests/platform/main_loop_wait.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kScripting = "org.kde.kwin.Scripting";

}  // namespace

KwinDesktop::KwinDesktop(bool hasPermission) : connection_(sessionBus().connect()) {
    g_dbus_connection_set_exit_on_close(connection_, FALSE);
    // The installed program carries a capability that not every container may grant; a copy has none.
    fs::copy_file("/usr/bin/kwin_wayland", folder() / "kwin_wayland");
    const KwinPermission permission;
    const auto outcome =
        hasPermission ? permission.grant(fs::canonical("/proc/self/exe")) : permission.withdraw();
    if (!outcome.problem.empty()) throw std::runtime_error(outcome.problem);
    fs::create_directories(permission.file().parent_path());
    std::ofstream(permission.file().parent_path() / "orvane-kwin-input.desktop")
        << "[Desktop Entry]\nType=Application\nName=Input\nNoDisplay=true\nExec=" << ORVANE_KWIN_INPUT
        << "\nX-KDE-Wayland-Interfaces=org_kde_kwin_fake_input\n";
}

KwinDesktop::~KwinDesktop() {
    KwinPermission().withdraw();
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

void KwinDesktop::start() {
    auto variables = environment();
    // Of the test's own user, who can tell which programs ask.
    const fs::path home = folder() / "kwin";
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        variables[name] = home.string();
    fs::create_directories(home);
    variables["KWIN_COMPOSE"] = "Q";
    variables["QT_QPA_PLATFORM"] = "";
    variables["WAYLAND_DISPLAY"] = "";
    ChildProcess::run({"kbuildsycoca5"}, variables);
    kwin_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{(folder() / "kwin_wayland").string(), "--virtual", "--width", "1280",
                                 "--height", "800", "--socket", "wayland-kwin", "--no-lockscreen",
                                 "--no-global-shortcuts"},
        variables);
    const fs::path socket = fs::path(runtimeFolder()) / "wayland-kwin";
    const bool isReady = waitUntil(
        [&] {
            return fs::exists(socket) &&
                   ask("/Scripting", kScripting, "isScriptLoaded", g_variant_new("(s)", "test"));
        },
        60);
    if (!isReady) throw std::runtime_error("kwin_wayland did not start");
    fs::permissions(socket, fs::perms(0777));
    setVariable("WAYLAND_DISPLAY", "wayland-kwin");
    setForPrograms("GDK_BACKEND", "wayland");
}

Variant KwinDesktop::ask(const char* path, const char* interface, const char* method, GVariant* arguments) {
    return Variant(g_dbus_connection_call_sync(connection_, "org.kde.KWin", path, interface, method,
                                               arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, 30000, nullptr,
                                               nullptr));
}

void KwinDesktop::run(const std::string& script, std::string name) {
    const auto file = folder() / ("test-" + std::to_string(++scripts_) + ".js");
    std::ofstream(file) << script;
    if (name.empty()) name = file.stem();
    if (!ask("/Scripting", kScripting, "loadScript", g_variant_new("(ss)", file.c_str(), name.c_str())) ||
        !ask("/Scripting", kScripting, "start", nullptr))
        throw std::runtime_error("KWin did not run: " + script);
}

int KwinDesktop::ownScripts() {
    const Variant reply(g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames",
        nullptr, G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, 30000, nullptr, nullptr));
    GVariantIter* names = nullptr;
    const char* connection = nullptr;
    g_variant_get(reply.get(), "(as)", &names);
    while (g_variant_iter_next(names, "&s", &connection) != 0)
        ownNames_.insert(KwinScriptBackend::scriptName(connection));
    g_variant_iter_free(names);
    int count = 0;
    for (const auto& name : ownNames_) {
        gboolean isLoaded = FALSE;
        const auto answer =
            ask("/Scripting", kScripting, "isScriptLoaded", g_variant_new("(s)", name.c_str()));
        if (answer) g_variant_get(answer.get(), "(b)", &isLoaded);
        if (isLoaded != FALSE) ++count;
    }
    return count;
}

void KwinDesktop::leaveScriptBehind() {
    GDBusConnection* program = sessionBus().connect();
    g_dbus_connection_set_exit_on_close(program, FALSE);
    const std::string connection = g_dbus_connection_get_unique_name(program);
    const auto name = KwinScriptBackend::scriptName(connection);
    run(kwinScript(connection, name), name);
    ownNames_.insert(name);
    g_dbus_connection_close_sync(program, nullptr, nullptr);
    g_object_unref(program);
}

void KwinDesktop::activate(Window& window) {
    // A program takes its window for shown a moment before KWin knows it.
    run("function bring(client) {"
        "    if (client.pid !== " +
        std::to_string(window.program->identifier()) +
        ") return;"
        "    client.minimized = false;"
        "    workspace.activeClient = client;"
        "}"
        "workspace.clientList().forEach(bring);"
        "workspace.clientAdded.connect(bring);");
}

void KwinDesktop::showEmptyDesktop(bool show) {
    run(std::string("if (workspace.desktops < 2) workspace.createDesktop(1, 'Empty');"
                    "workspace.currentDesktop = ") +
        (show ? "2;" : "1;"));
}

void KwinDesktop::touch() {
    if (!ChildProcess::run({ORVANE_KWIN_INPUT})) throw std::runtime_error("KWin takes no input");
}

}  // namespace orvane
