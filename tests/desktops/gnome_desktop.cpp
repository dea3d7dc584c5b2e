#include "tests/desktops/gnome_desktop.h"

#include <fstream>
#include <stdexcept>

#include "platform/linux/gnome/gnome_extension.h"
#include "tests/platform/main_loop_wait.h"

namespace orvane {

namespace fs = std::filesystem;

GnomeDesktop::GnomeDesktop(bool hasExtension)
    : hasExtension_(hasExtension), connection_(sessionBus().connect()) {
    g_dbus_connection_set_exit_on_close(connection_, FALSE);
    const auto settings = folder() / "home/config/glib-2.0/settings";
    fs::create_directories(settings);
    // Without a welcome, and with the extension from the start.
    std::ofstream(settings / "keyfile")
        << "[org/gnome/shell]\nwelcome-dialog-last-shown-version='99'\n"
        << "enabled-extensions=[" << (hasExtension ? "'windows@orvane'" : "@as") << "]\n";
    giveToUser(folder() / "home");
    if (hasExtension) {
        const auto outcome = GnomeExtension().install(installedVersion());
        if (!outcome.problem.empty()) throw std::runtime_error(outcome.problem);
    }
}

GnomeDesktop::~GnomeDesktop() {
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
    GnomeExtension().remove();
}

std::unique_ptr<PrivateAccessibility> GnomeDesktop::offerAccessibility() {
    auto accessibility = std::make_unique<PrivateAccessibility>(sessionBus());
    setForPrograms("AT_SPI_BUS_ADDRESS", accessibility->address());
    setForPrograms("NO_AT_BRIDGE", "");
    return accessibility;
}

std::string GnomeDesktop::installedVersion() {
    ChildProcess shell({"gnome-shell", "--version"});
    const auto answer = shell.readLine();
    return answer.substr(answer.rfind(' ') + 1);
}

std::map<std::string, std::string> GnomeDesktop::userEnvironment() const {
    auto variables = environment();
    variables["GSETTINGS_BACKEND"] = "keyfile";
    return variables;
}

void GnomeDesktop::start() {
    auto variables = userEnvironment();
    variables["WAYLAND_DISPLAY"] = "";
    shell_ = std::make_unique<ChildProcess>(
        asUser({"gnome-shell", "--unsafe-mode", "--headless", "--wayland", "--no-x11", "--virtual-monitor",
                "1280x800", "--wayland-display", "wayland-gnome"}),
        variables);
    // Without a keyboard no window is ever active; and the shell starts with its overview.
    const bool isReady = waitUntil(
        [this] {
            return tryToEvaluate(
                       "const {Clutter} = imports.gi;"
                       "global.keyboard = global.keyboard || Clutter.get_default_backend().get_default_seat()"
                       "    .create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE);"
                       "Main.overview.hide();"
                       "Main.layoutManager._startingUp || Main.overview.visible")
                       .value_or("true") == "false";
        },
        60);
    if (!isReady) throw std::runtime_error("gnome-shell did not start");
    setVariable("WAYLAND_DISPLAY", "wayland-gnome");
    setForPrograms("GDK_BACKEND", "wayland");
}

std::optional<std::string> GnomeDesktop::tryToEvaluate(const std::string& script) {
    GVariant* reply =
        g_dbus_connection_call_sync(connection_, "org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell",
                                    "Eval", g_variant_new("(s)", script.c_str()), G_VARIANT_TYPE("(bs)"),
                                    G_DBUS_CALL_FLAGS_NONE, 30000, nullptr, nullptr);
    if (reply == nullptr) return std::nullopt;
    gboolean isDone = FALSE;
    const char* text = nullptr;
    g_variant_get(reply, "(b&s)", &isDone, &text);
    std::optional<std::string> result;
    if (isDone != FALSE) result = text;
    g_variant_unref(reply);
    return result;
}

std::string GnomeDesktop::evaluate(const std::string& script) {
    auto result = tryToEvaluate(script);
    if (!result) throw std::runtime_error("gnome-shell did not run: " + script);
    return *result;
}

void GnomeDesktop::activate(Window& window) {
    // A program takes its window for shown a moment before the shell knows it.
    const auto script =
        "global.get_window_actors().map(actor => actor.meta_window).find(window => window.get_pid() === " +
        std::to_string(window.program->identifier()) + ").activate(global.get_current_time())";
    if (!waitUntil([&] { return tryToEvaluate(script).has_value(); })) evaluate(script);
}

void GnomeDesktop::showEmptyDesktop(bool show) {
    // There always is an empty workspace at the end.
    evaluate(std::string("const all = global.workspace_manager; all.get_workspace_by_index(") +
             (show ? "all.n_workspaces - 1" : "0") + ").activate(global.get_current_time())");
}

void GnomeDesktop::touch() {
    evaluate(
        "for (const state of [1, 0])"
        "    global.keyboard.notify_keyval(imports.gi.GLib.get_monotonic_time(), 0xffe1, state)");
}

bool GnomeDesktop::switchScreens(bool on) {
    GVariant* reply = g_dbus_connection_call_sync(
        connection_, "org.gnome.Mutter.DisplayConfig", "/org/gnome/Mutter/DisplayConfig",
        "org.freedesktop.DBus.Properties", "Set",
        g_variant_new("(ssv)", "org.gnome.Mutter.DisplayConfig", "PowerSaveMode",
                      g_variant_new_int32(on ? 0 : 3)),
        nullptr, G_DBUS_CALL_FLAGS_NONE, 30000, nullptr, nullptr);
    if (reply == nullptr) throw std::runtime_error("the screens could not be switched");
    g_variant_unref(reply);
    return true;
}

void GnomeDesktop::killCompositor() { shell_.reset(); }

}  // namespace orvane
