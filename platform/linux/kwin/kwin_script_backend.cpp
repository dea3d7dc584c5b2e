#include "platform/linux/kwin/kwin_script_backend.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/linux/compositor_sockets.h"
#include "platform/linux/kwin/kwin_script.h"
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
#include "platform/linux/kwin/plasma_backend.h"
#endif

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kKwin = "org.kde.KWin";
// Offered to everybody, and by no other compositor.
constexpr const char* kKwinInterface = "org_kde_plasma_shell";
// What KWin answers when it has a script of that name already.
constexpr gint32 kNoScript = -1;

/// No constant: a platform that is there until the program ends would outlive it.
BusObject scripting() { return {kKwin, "/Scripting", "org.kde.kwin.Scripting"}; }

constexpr const char* kUnload = "unloadScript";

// From loading the script to its first report.
constexpr unsigned kPatienceMilliseconds = 3000;
// The end waits for KWin no longer, which would otherwise keep a script that nobody listens to.
constexpr int kUnloadMilliseconds = 200;
constexpr unsigned kFirstRetryMilliseconds = 500;
constexpr unsigned kLastRetryMilliseconds = 60'000;

bool isPermission([[maybe_unused]] const WaylandGlobal& global) {
#ifdef ORVANE_HAS_PLASMA_PROTOCOLS
    return PlasmaBackend::isUsable(global);
#else
    return false;
#endif
}

/// A file that only this user can read, with the text; empty when it cannot be written.
fs::path writeScript(const std::string& text) {
    if (runtimeFolder().empty()) return {};
    std::string path = (fs::path(runtimeFolder()) / "orvane-kwin-XXXXXX").string();
    const int descriptor = ::mkstemp(path.data());
    if (descriptor < 0) return {};
    const bool isWritten = ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::close(descriptor);
    if (isWritten) return path;
    ::unlink(path.c_str());
    return {};
}

}  // namespace

KwinScriptBackend::KwinScriptBackend(SharedBus& bus, WaylandDisplay& display)
    : sharedBus_(bus), display_(display), retryMilliseconds_(kFirstRetryMilliseconds) {
    bus.add(*this);
    display.add(*this);
}

KwinScriptBackend::~KwinScriptBackend() {
    bool isLate = false;
    if (bus_ != nullptr && std::exchange(isLoaded_, false))
        bus_->callNow(scripting(), kUnload, ownScript(), kUnloadMilliseconds, isLate);
    removeFile();
}

bool KwinScriptBackend::isDecided() const {
    if (!display_.isDecided()) return false;
    if (!isKwinCompositor_ || hasPermission_) return true;
    if (bus_ == nullptr) return sharedBus_.isDecided();
    return isKwinDecided_ && !patience_.isPending();
}

void KwinScriptBackend::busOpened(BusConnection& bus) {
    bus_ = &bus;
    reports_ = bus.receive(
        kwinReportPath, kwinReportInterface, kwinReportMethod,
        [this](const std::string& sender, const std::string& report) { reported(sender, report); });
    kwinWatch_ = bus.watchName(kKwin, [this](bool isOwned) { kwinOwned(isOwned); });
}

void KwinScriptBackend::busClosed() {
    kwinWatch_ = {};
    reports_ = {};
    kwinOwned(false);
    isKwinDecided_ = false;
    bus_ = nullptr;
}

void KwinScriptBackend::kwinOwned(bool isOwned) {
    isKwinDecided_ = true;
    isKwinOnBus_ = isOwned;
    // A script ends with the KWin that runs it.
    isLoaded_ = false;
    stop();
    update();
}

void KwinScriptBackend::globalAdded(const WaylandGlobal& global) {
    if (global.interface == kKwinInterface) isKwinCompositor_ = true;
    if (isPermission(global)) hasPermission_ = true;
}

void KwinScriptBackend::compositorLost() {
    isKwinCompositor_ = false;
    hasPermission_ = false;
    update();
}

bool KwinScriptBackend::isWanted() const {
    return isKwinOnBus_ && display_.answers() && isKwinCompositor_ && !hasPermission_;
}

void KwinScriptBackend::update() {
    if (isWanted() == isStarted_) return;
    retryMilliseconds_ = kFirstRetryMilliseconds;
    if (isStarted_) {
        stop();
    } else {
        start();
    }
}

void KwinScriptBackend::start() {
    isStarted_ = true;
    patience_.start(kPatienceMilliseconds, [this] { giveUp(); });
    bus_->call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"}, "GetNameOwner",
               g_variant_new("(s)", kKwin), [this, attempt = ++attempt_](GVariant* values, GUnixFDList*) {
                   if (attempt != attempt_ || values == nullptr) return;
                   if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(s)"))) return;
                   const char* name = nullptr;
                   g_variant_get(values, "(&s)", &name);
                   kwin_ = name;
                   load();
               });
}

void KwinScriptBackend::load() {
    const auto name = scriptName(bus_->ownName());
    file_ = writeScript(kwinScript(bus_->ownName(), name));
    if (file_.empty()) {
        giveUp();
        return;
    }
    isLoaded_ = true;
    bus_->call(scripting(), "loadScript", g_variant_new("(ss)", file_.c_str(), name.c_str()),
               [this, attempt = attempt_](GVariant* values, GUnixFDList*) {
                   if (attempt == attempt_) loaded(values);
               });
}

/// The name of the script, as an argument.
GVariant* KwinScriptBackend::ownScript() const {
    return g_variant_new("(s)", scriptName(bus_->ownName()).c_str());
}

void KwinScriptBackend::loaded(GVariant* values) {
    gint32 script = kNoScript;
    if (values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE("(i)")))
        g_variant_get(values, "(i)", &script);
    if (script == kNoScript) {
        giveUp();
        return;
    }
    // Up to version 5 scripts are in the first place, from 6 on in the second. To start all that are loaded
    // would start those of others.
    for (const auto* folder : {"/", "/Scripting/Script"}) {
        bus_->call({kKwin, folder + std::to_string(script), "org.kde.kwin.Script"}, "run", nullptr,
                   [](GVariant*, GUnixFDList*) {});
    }
}

void KwinScriptBackend::stop() {
    ++attempt_;
    if (bus_ != nullptr && std::exchange(isLoaded_, false))
        bus_->call(scripting(), kUnload, ownScript(), [](GVariant*, GUnixFDList*) {});
    isStarted_ = false;
    isGivenUp_ = false;
    patience_.cancel();
    retryTimer_.cancel();
    kwin_.clear();
    picture_.reset();
    removeFile();
    // Later, when the display too knows how it stands.
    noticeTimer_.start(0, [this] { tellNow(); });
}

void KwinScriptBackend::giveUp() {
    stop();
    isStarted_ = true;
    isGivenUp_ = true;
    // KWin may have only begun to start.
    retryTimer_.start(retryMilliseconds_, [this] { start(); });
    retryMilliseconds_ = std::min(2 * retryMilliseconds_, kLastRetryMilliseconds);
    if (onAvailabilityChanged) onAvailabilityChanged(false);  // the shortcoming is another one
}

void KwinScriptBackend::removeFile() {
    std::error_code ignored;
    if (!file_.empty()) fs::remove(std::exchange(file_, {}), ignored);
}

void KwinScriptBackend::reported(const std::string& sender, const std::string& report) {
    // Whoever else calls tells nothing about windows.
    if (kwin_.empty() || sender != kwin_) return;
    auto picture = reader_.read(report);
    if (!picture) return;
    picture_ = std::move(picture);
    patience_.cancel();
    retryMilliseconds_ = kFirstRetryMilliseconds;
    isGivenUp_ = false;
    removeFile();
    tellNow();
}

void KwinScriptBackend::tellNow() {
    tell(isAvailable(), picture_ && picture_->active ? picture_->active->number : 0);
}

std::optional<DesktopWindow> KwinScriptBackend::activeWindow() {
    return picture_ ? picture_->active : std::nullopt;
}

std::vector<DesktopWindow> KwinScriptBackend::windows() {
    return picture_ ? picture_->windows : std::vector<DesktopWindow>();
}

std::optional<Shortcoming> KwinScriptBackend::shortcoming() const {
    if (!isGivenUp_ || isAvailable()) return std::nullopt;
    return Shortcoming{
        "KWin tells its windows to programs that have its permission, and takes no script here that would "
        "tell them",
        "orvane setup kwin"};
}

}  // namespace orvane
