#include "platform/linux/gnome/mutter_idle_source.h"

#include <algorithm>
#include <utility>

#include "platform/linux/boot_time.h"

namespace orvane {

namespace {

const BusObject& monitor() {
    static const BusObject object{"org.gnome.Mutter.IdleMonitor", "/org/gnome/Mutter/IdleMonitor/Core",
                                  "org.gnome.Mutter.IdleMonitor"};
    return object;
}

/// 0 for what is no answer with a number of a watch.
std::uint32_t watchNumber(GVariant* values) {
    guint32 number = 0;
    if (values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE("(u)"))) {
        g_variant_get(values, "(u)", &number);
    }
    return number;
}

}  // namespace

MutterIdleSource::MutterIdleSource(SharedBus& bus, bool heldBackByInhibitors)
    : sharedBus_(bus), heldBackByInhibitors_(heldBackByInhibitors) {
    bus.add(*this);
}

bool MutterIdleSource::isDecided() const { return bus_ != nullptr ? isDecided_ : sharedBus_.isDecided(); }

std::string MutterIdleSource::name() const {
    return heldBackByInhibitors_ ? "Mutter idle monitor (held back by films and calls)"
                                 : "Mutter idle monitor (input alone)";
}

void MutterIdleSource::busOpened(BusConnection& bus) {
    bus_ = &bus;
    firedSignal_ = bus.subscribe(monitor(), "WatchFired", [this](const std::string&, GVariant* values) {
        watchFired(watchNumber(values));
    });
    nameWatch_ = bus.watchName(monitor().service, [this](bool isOwned) { owned(isOwned); });
}

void MutterIdleSource::busClosed() {
    nameWatch_ = {};
    firedSignal_ = {};
    bus_ = nullptr;
    owned(false);
}

void MutterIdleSource::owned(bool isOwned) {
    ++owner_;
    restWatch_ = 0;
    inputWatch_ = 0;
    isInputAwaited_ = false;
    isAsking_ = false;
    restSince_.reset();
    isDecided_ = false;
    if (!isOwned) {
        setAvailable(false);
        return;
    }
    // Fires at once when the rest has lasted that long already.
    bus_->call(monitor(), "AddIdleWatch", g_variant_new("(t)", guint64{restMilliseconds}),
               [this, owner = owner_](GVariant* values, GUnixFDList*) {
                   if (owner != owner_) return;
                   restWatch_ = watchNumber(values);
                   if (restWatch_ == 0 || heldBackByInhibitors_) {
                       setAvailable(restWatch_ != 0);
                   } else {
                       rest();
                   }
               });
}

void MutterIdleSource::setAvailable(bool isAvailable) {
    isDecided_ = true;
    if (std::exchange(isAvailable_, isAvailable) != isAvailable && onAvailabilityChanged) {
        onAvailabilityChanged(isAvailable);
    }
}

void MutterIdleSource::watchFired(std::uint32_t watch) {
    if (watch == 0) return;
    if (watch == inputWatch_) {
        // It fires once only.
        inputWatch_ = 0;
        isInputAwaited_ = false;
        restSince_.reset();
    } else if (watch == restWatch_) {
        rest();
    }
}

void MutterIdleSource::rest() {
    awaitInput();
    if (heldBackByInhibitors_) {
        // The time of the last input may lie before a film that was watched meanwhile.
        restSince_ = secondsSinceBoot() - static_cast<double>(restMilliseconds) / 1000;
    } else {
        askIdleTime();
    }
}

void MutterIdleSource::awaitInput() {
    if (std::exchange(isInputAwaited_, true)) return;
    bus_->call(monitor(), "AddUserActiveWatch", nullptr,
               [this, owner = owner_](GVariant* values, GUnixFDList*) {
                   if (owner != owner_) return;
                   inputWatch_ = watchNumber(values);
                   if (inputWatch_ != 0) return;
                   // A monitor that does not tell the end of a rest is of no use.
                   ++owner_;
                   setAvailable(false);
               });
}

void MutterIdleSource::askIdleTime() {
    if (std::exchange(isAsking_, true)) return;
    bus_->call(monitor(), "GetIdletime", nullptr, [this, owner = owner_](GVariant* values, GUnixFDList*) {
        if (owner != owner_) return;
        isAsking_ = false;
        guint64 milliseconds = 0;
        if (values != nullptr && g_variant_is_of_type(values, G_VARIANT_TYPE("(t)"))) {
            g_variant_get(values, "(t)", &milliseconds);
        }
        if (milliseconds >= restMilliseconds && isInputAwaited_) {
            // Awaited before this answer was given, so that no input lies between.
            restSince_ = secondsSinceBoot() - static_cast<double>(milliseconds) / 1000;
        } else if (milliseconds >= restMilliseconds) {
            rest();
        }
        setAvailable(true);
    });
}

std::optional<double> MutterIdleSource::idleSeconds() {
    if (!isAvailable_) return std::nullopt;
    if (restSince_) return std::max(0.0, secondsSinceBoot() - *restSince_);
    // While a film runs, the watch for a rest keeps still: what is learnt now is told the next time.
    if (!heldBackByInhibitors_) askIdleTime();
    return 0;
}

}  // namespace orvane
