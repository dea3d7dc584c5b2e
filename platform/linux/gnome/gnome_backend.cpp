#include "platform/linux/gnome/gnome_backend.h"

#include <utility>

#include "platform/linux/gnome/gnome_extension.h"

namespace orvane {

namespace {

// As the extension names itself.
constexpr const char* kService = "org.orvane.Windows1";
constexpr const char* kPath = "/org/orvane/Windows1";
constexpr const char* kShell = "org.gnome.Shell";

constexpr unsigned kRetryMilliseconds = 2000;

}  // namespace

GnomeBackend::GnomeBackend(SharedBus& bus) : sharedBus_(bus) { bus.add(*this); }

bool GnomeBackend::isDecided() const {
    if (bus_ == nullptr) return sharedBus_.isDecided();
    return isExtensionDecided_ && !(isExtensionThere_ && isAsking_ && !picture_);
}

void GnomeBackend::busOpened(BusConnection& bus) {
    bus_ = &bus;
    changedSignal_ = bus.subscribe({kService, kPath, kService}, "Changed",
                                   [this](const std::string&, GVariant*) { ask(); });
    shellWatch_ = bus.watchName(kShell, [this](bool isOwned) {
        if (std::exchange(isShellThere_, isOwned) != isOwned && onAvailabilityChanged) {
            // The shortcoming is another one.
            onAvailabilityChanged(isAvailable());
        }
    });
    extensionWatch_ = bus.watchName(kService, [this](bool isOwned) { extensionOwned(isOwned); });
}

void GnomeBackend::busClosed() {
    extensionWatch_ = {};
    shellWatch_ = {};
    changedSignal_ = {};
    bus_ = nullptr;
    isShellThere_ = false;
    extensionOwned(false);
    isExtensionDecided_ = false;
}

void GnomeBackend::extensionOwned(bool isOwned) {
    isExtensionDecided_ = true;
    isExtensionThere_ = isOwned;
    ++owner_;
    isAsking_ = false;
    retryTimer_.cancel();
    picture_.reset();
    if (isOwned) {
        ask();
    } else {
        tellNow();
    }
}

void GnomeBackend::ask() {
    if (!isExtensionThere_) return;
    if (isAsking_) {
        // What is on its way may have been told before the change.
        isOutdated_ = true;
        return;
    }
    isAsking_ = true;
    isOutdated_ = false;
    bus_->call({kService, kPath, kService}, "GetWindows", nullptr,
               [this, owner = owner_](GVariant* values, GUnixFDList*) {
                   if (owner == owner_) answered(GnomePicture::parse(values));
               });
}

void GnomeBackend::answered(std::optional<GnomePicture> picture) {
    isAsking_ = false;
    picture_ = std::move(picture);
    if (!picture_) {
        retryTimer_.start(kRetryMilliseconds, [this] { ask(); });
    } else if (isOutdated_) {
        ask();
    }
    tellNow();
}

void GnomeBackend::tellNow() {
    tell(isAvailable(), picture_ && picture_->active ? picture_->active->number : 0);
}

std::optional<DesktopWindow> GnomeBackend::activeWindow() {
    return picture_ ? picture_->active : std::nullopt;
}

std::vector<DesktopWindow> GnomeBackend::windows() {
    return picture_ ? picture_->windows : std::vector<DesktopWindow>();
}

std::optional<Shortcoming> GnomeBackend::shortcoming() const {
    if (!isShellThere_ || isAvailable()) return std::nullopt;
    if (isExtensionThere_) {
        return Shortcoming{"the extension of GNOME Shell gives no answer that is understood",
                           "orvane setup gnome"};
    }
    if (GnomeExtension().isInstalled()) {
        return Shortcoming{"the extension of GNOME Shell is installed but does not run: log out and in again",
                           "orvane setup gnome"};
    }
    return Shortcoming{"GNOME tells its windows only through an extension that is not installed",
                       "orvane setup gnome"};
}

}  // namespace orvane
