#include "platform/linux/kwin/kwin_script.h"

#include "platform/linux/desktop_backend.h"

namespace orvane {

namespace {

// Functions and properties have other names from version 6 on; each is used under the name that is there.
constexpr const char* kBody = R"js(
var unanswered = 0;

function isHere(window) {
    if (window.onAllDesktops) return true;
    // Up to version 5 desktops are numbers.
    if (typeof workspace.currentDesktop === "number") return window.desktop === workspace.currentDesktop;
    return window.desktops.indexOf(workspace.currentDesktop) >= 0;
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

function report(gone) {
    // A program that is gone answers no more.
    if (unanswered > 50) return;
    ++unanswered;
    var windows = workspace.windowList ? workspace.windowList() : workspace.clientList();
    var active = workspace.windowList ? workspace.activeWindow : workspace.activeClient;
    windows = windows.filter(function (window) { return window !== gone && !window.deleted; });
    windows.sort(function (one, other) { return other.stackingOrder - one.stackingOrder; });
    callDBus(connection, path, interfaceName, method, JSON.stringify(windows.map(function (window) {
        return {
            id: String(window.internalId),
            pid: window.pid,
            class: String(window.desktopFileName) || String(window.resourceClass),
            name: String(window.resourceName),
            title: window.caption,
            layer: layerOf(window),
            active: window === active,
            shown: !window.minimized && !window.hidden && isHere(window)
        };
    })), function () { unanswered = 0; });
}

function connectAll(object, signals, handler) {
    signals.forEach(function (name) { if (object[name]) object[name].connect(handler); });
}

function changed() { report(null); }

function watch(window) {
    connectAll(window, ["captionChanged", "minimizedChanged", "hiddenChanged", "desktopChanged", "desktopsChanged",
        "keepAboveChanged", "keepBelowChanged", "stackingOrderChanged", "desktopFileNameChanged",
        "windowClassChanged"], changed);
}

(workspace.windowList ? workspace.windowList() : workspace.clientList()).forEach(watch);
connectAll(workspace, ["clientAdded", "windowAdded"], function (window) { watch(window); changed(); });
connectAll(workspace, ["clientRemoved", "windowRemoved"], report);
connectAll(workspace, ["clientActivated", "windowActivated", "currentDesktopChanged"], changed);
changed();
)js";

std::string constant(const char* name, const std::string& value) {
    return std::string("var ") + name + " = " + value + ";\n";
}

std::string text(const std::string& value) { return '"' + value + '"'; }

}  // namespace

std::string kwinScript(const std::string& connection) {
    const auto layer = [](const char* name, int number) { return name + (": " + std::to_string(number)); };
    return constant("connection", text(connection)) + constant("path", text(kwinReportPath)) +
           constant("interfaceName", text(kwinReportInterface)) + constant("method", text(kwinReportMethod)) +
           constant("layers",
                    "{" + layer("below", WindowLayer::below) + ", " + layer("normal", WindowLayer::normal) +
                        ", " + layer("floating", WindowLayer::floating) + ", " +
                        layer("dock", WindowLayer::dock) + ", " + layer("menu", WindowLayer::menu) + "}") +
           kBody;
}

}  // namespace orvane
