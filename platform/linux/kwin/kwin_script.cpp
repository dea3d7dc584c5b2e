#include "platform/linux/kwin/kwin_script.h"

#include "platform/linux/desktop_backend.h"

namespace orvane {

namespace {

// Functions and properties have other names from version 6 on; each is used under the name that is there.
constexpr const char* kBody = R"js(
// Windows change in bursts; one report for each is enough.
const reportTimer = singleShot(20, report);
// After that long without an answer the program may be gone.
const answerTimer = singleShot(5000, askWhetherWanted);
let isAwaited = false;
let isOutdated = false;

function singleShot(milliseconds, action) {
    const timer = new QTimer();
    timer.interval = milliseconds;
    timer.singleShot = true;
    timer.timeout.connect(action);
    return timer;
}

function allWindows() {
    return workspace.windowList ? workspace.windowList() : workspace.clientList();
}

function isHere(window) {
    const activities = window.activities || [];
    if (activities.length > 0 && !activities.includes(workspace.currentActivity)) return false;
    if (window.onAllDesktops) return true;
    // Up to version 5 desktops are numbers.
    if (typeof workspace.currentDesktop === "number") return window.desktop === workspace.currentDesktop;
    return window.desktops.includes(workspace.currentDesktop);
}

function layerOf(window) {
    if (window.desktopWindow) return layers.below;
    if (window.dock) return layers.dock;
    if (window.notification || window.criticalNotification || window.onScreenDisplay || window.appletPopup ||
        window.menu || window.dropdownMenu || window.popupMenu || window.tooltip || window.comboBox ||
        window.dndIcon) return layers.menu;
    if (window.splash || window.toolbar || window.utility || window.keepAbove) return layers.floating;
    return window.keepBelow ? layers.below : layers.normal;
}

// The resource name is left out: of a Wayland window that is its program, which may be a mere interpreter.
function describe(window) {
    const active = workspace.windowList ? workspace.activeWindow : workspace.activeClient;
    return {
        id: String(window.internalId),
        pid: window.pid,
        // Byte arrays, which count as true even when they are empty.
        class: String(window.desktopFileName) || String(window.resourceClass),
        title: window.caption,
        layer: layerOf(window),
        active: window === active,
        shown: !window.minimized && !window.hidden && !window.desktopWindow && isHere(window)
    };
}

// One report is on its way at a time, so that nothing gathers before a program that stands still.
function report() {
    isAwaited = true;
    isOutdated = false;
    answerTimer.start();
    const windows = allWindows().filter(window => !window.deleted);
    windows.sort((one, other) => other.stackingOrder - one.stackingOrder);
    callDBus(connection, path, interfaceName, method, JSON.stringify(windows.map(describe)), () => {
        answerTimer.stop();
        isAwaited = false;
        if (isOutdated) changed();
    });
}

// Calls that fail are not told. A program that crashed leaves the script behind, which then removes itself.
function askWhetherWanted() {
    callDBus("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner", connection,
        isThere => {
            if (isThere) report();
            else callDBus("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting", "unloadScript", scriptName);
        });
}

function changed() {
    if (isAwaited) isOutdated = true;
    else if (!reportTimer.active) reportTimer.start();
}

function connectAll(object, signals, handler) {
    signals.forEach(name => { if (object[name]) object[name].connect(handler); });
}

function watch(window) {
    connectAll(window, ["activitiesChanged", "captionChanged", "minimizedChanged", "hiddenChanged",
        "desktopChanged", "desktopsChanged", "keepAboveChanged", "keepBelowChanged", "stackingOrderChanged",
        "desktopFileNameChanged", "windowClassChanged"], changed);
}

allWindows().forEach(watch);
connectAll(workspace, ["clientAdded", "windowAdded"], watch);
connectAll(workspace, ["clientAdded", "windowAdded", "clientRemoved", "windowRemoved", "clientActivated",
    "windowActivated", "currentDesktopChanged", "currentActivityChanged"], changed);
report();
)js";

std::string constant(const char* name, const std::string& value) {
    return std::string("var ") + name + " = " + value + ";\n";
}

std::string text(const std::string& value) { return '"' + value + '"'; }

}  // namespace

std::string kwinScript(const std::string& connection, const std::string& name) {
    const auto layer = [](const char* key, int number) { return key + (": " + std::to_string(number)); };
    return constant("connection", text(connection)) + constant("scriptName", text(name)) +
           constant("path", text(kwinReportPath)) + constant("interfaceName", text(kwinReportInterface)) +
           constant("method", text(kwinReportMethod)) +
           constant("layers",
                    "{" + layer("below", WindowLayer::below) + ", " + layer("normal", WindowLayer::normal) +
                        ", " + layer("floating", WindowLayer::floating) + ", " +
                        layer("dock", WindowLayer::dock) + ", " + layer("menu", WindowLayer::menu) + "}") +
           kBody;
}

}  // namespace orvane
