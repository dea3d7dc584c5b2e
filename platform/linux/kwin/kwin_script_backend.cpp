#include "platform/linux/kwin/kwin_script_backend.h"

#include <unistd.h>

#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/linux/compositor_sockets.h"
#include "platform/linux/kwin/kwin_script.h"

namespace orvane {

namespace fs = std::filesystem;

namespace {

constexpr const char* kKwin = "org.kde.KWin";
const BusObject kScripting{kKwin, "/Scripting", "org.kde.kwin.Scripting"};

// From loading the script to its first report.
constexpr unsigned kPatienceMilliseconds = 3000;
// So long the end may wait for KWin, which else would keep a script that nobody listens to.
constexpr int kUnloadMilliseconds = 200;

/// A file that only this user can read, with the text; empty when it cannot be written.
fs::path writeScript(const std::string& text) {
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

KwinScriptBackend::KwinScriptBackend(SharedBus& bus) : sharedBus_(bus) { bus.add(*this); }

KwinScriptBackend::~KwinScriptBackend() { unload(); }

bool KwinScriptBackend::isDecided() const {
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
    isLoaded_ = false;
    kwinOwned(false);
    isKwinDecided_ = false;
    bus_ = nullptr;
}

void KwinScriptBackend::kwinOwned(bool isOwned) {
    isKwinDecided_ = true;
    ++owner_;
    // A script ends with the KWin that runs it.
    isLoaded_ = false;
    forget();
    if (isOwned) {
        patience_.start(kPatienceMilliseconds, [this] { giveUp(); });
        bus_->call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"}, "GetNameOwner",
                   g_variant_new("(s)", kKwin), [this, owner = owner_](GVariant* values, GUnixFDList*) {
                       if (owner != owner_ || values == nullptr) return;
                       const char* name = nullptr;
                       if (!g_variant_is_of_type(values, G_VARIANT_TYPE("(s)"))) return;
                       g_variant_get(values, "(&s)", &name);
                       kwin_ = name;
                       load();
                   });
    }
    tell();
}

std::string KwinScriptBackend::scriptName() const { return "orvane" + bus_->ownName(); }

void KwinScriptBackend::load() {
    file_ = writeScript(kwinScript(bus_->ownName()));
    if (file_.empty()) {
        giveUp();
        return;
    }
    bus_->call(kScripting, "loadScript", g_variant_new("(ss)", file_.c_str(), scriptName().c_str()),
               [this, owner = owner_](GVariant* values, GUnixFDList*) {
                   if (owner != owner_ || values == nullptr) return;
                   isLoaded_ = true;
                   bus_->call(kScripting, "start", nullptr, [](GVariant*, GUnixFDList*) {});
               });
}

void KwinScriptBackend::unload() {
    bool isLate = false;
    if (bus_ != nullptr && isLoaded_)
        bus_->callNow(kScripting, "unloadScript", g_variant_new("(s)", scriptName().c_str()),
                      kUnloadMilliseconds, isLate);
    isLoaded_ = false;
    forget();
}

void KwinScriptBackend::giveUp() {
    isGivenUp_ = true;
    patience_.cancel();
    if (onAvailabilityChanged) onAvailabilityChanged(false);  // the shortcoming is another one
}

void KwinScriptBackend::forget() {
    patience_.cancel();
    kwin_.clear();
    picture_.reset();
    isGivenUp_ = false;
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
    isGivenUp_ = false;
    std::error_code ignored;
    if (!file_.empty()) fs::remove(std::exchange(file_, {}), ignored);
    tell();
}

void KwinScriptBackend::tell() {
    const auto active = picture_ && picture_->active ? picture_->active->number : 0;
    const bool isOther = std::exchange(toldActive_, active) != active;
    const bool available = isAvailable();
    if (std::exchange(toldAvailable_, available) != available && onAvailabilityChanged) {
        onAvailabilityChanged(available);
    }
    if (isOther && onActiveWindowChanged) onActiveWindowChanged();
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
