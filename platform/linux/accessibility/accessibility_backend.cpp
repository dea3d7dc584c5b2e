#include "platform/linux/accessibility/accessibility_backend.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane {

namespace {

// Tells a desktop of Mutter's kind from all others.
constexpr const char* kMutter = "org.gnome.Mutter.IdleMonitor";

constexpr const char* kShell = "org.gnome.Shell";
constexpr const char* kShellPath = "/org/gnome/Shell";

// Events come in bursts: a window loses the focus before another one gets it.
constexpr unsigned kEventMilliseconds = 50;
// A registry that gave no answer is asked again, also when nothing happens on the screen.
constexpr unsigned kRetryMilliseconds = 2000;
// A question finds windows that are older than this, and has them looked for anew.
constexpr std::int64_t kFreshMicroseconds = 500'000;

bool isOrdinary(const AtspiWindow& window) {
    constexpr std::array roles{atspi::Role::alert, atspi::Role::dialog, atspi::Role::fileChooser,
                               atspi::Role::frame};
    return window.isActive || std::any_of(roles.begin(), roles.end(), [&](atspi::Role role) {
               return window.role == static_cast<std::uint32_t>(role);
           });
}

}  // namespace

AccessibilityBackend::AccessibilityBackend(SharedBus& sessionBus, AccessibilityBus& accessibilityBus)
    : sessionBus_(sessionBus),
      accessibilityBus_(accessibilityBus),
      sessionListener_([this](BusConnection* bus) { sessionBusChanged(bus); }),
      accessibilityListener_([this](BusConnection* bus) { accessibilityBusChanged(bus); }) {
    sessionBus.add(sessionListener_);
    accessibilityBus.add(accessibilityListener_);
}

AccessibilityBackend::~AccessibilityBackend() {
    if (walk_) walk_->cancel();
}

bool AccessibilityBackend::isDecided() const {
    if (session_ == nullptr) return sessionBus_.isDecided();
    if (!isMutterDecided_ || !accessibilityBus_.isDecided()) return false;
    return mutterProcess_ == 0 || bus_ == nullptr || hasLooked_;
}

void AccessibilityBackend::sessionBusChanged(BusConnection* bus) {
    session_ = bus;
    isMutterDecided_ = false;
    if (bus != nullptr) {
        mutterWatch_ = bus->watchName(kMutter, [this](bool isOwned) { mutterOwned(isOwned); });
        shellProperties_ =
            bus->subscribe({kShell, kShellPath, atspi::propertiesInterface}, "PropertiesChanged",
                           [this](const std::string&, GVariant*) { askForOverview(); });
    } else {
        mutterWatch_ = {};
        shellProperties_ = {};
        mutterOwned(false);
    }
}

void AccessibilityBackend::mutterOwned(bool isOwned) {
    ++mutterOwner_;
    mutterProcess_ = 0;
    isMutterDecided_ = !isOwned;
    isOverviewShown_ = false;
    if (!isOwned) return end();
    askForOverview();
    session_->call(atspi::busItself(), "GetConnectionUnixProcessID", g_variant_new("(s)", kMutter),
                   [this, owner = mutterOwner_](GVariant* values, GUnixFDList*) {
                       if (owner != mutterOwner_) return;
                       isMutterDecided_ = true;
                       mutterProcess_ = atspi::processIn(values).value_or(0);
                       begin();
                   });
}

void AccessibilityBackend::askForOverview() {
    session_->getBoolean({kShell, kShellPath, kShell}, "OverviewActive",
                         [this, owner = mutterOwner_](std::optional<bool> isShown) {
                             if (owner != mutterOwner_) return;
                             isOverviewShown_ = isShown.value_or(false);
                             tellNow();
                         });
}

void AccessibilityBackend::accessibilityBusChanged(BusConnection* bus) {
    if (bus == nullptr) end();
    bus_ = bus;
    begin();
}

void AccessibilityBackend::begin() {
    if (bus_ == nullptr || mutterProcess_ == 0) return;
    registryWatch_ =
        bus_->watchName(atspi::registryService, [this](bool isOwned) { registryOwned(isOwned); });
}

void AccessibilityBackend::end() {
    registryWatch_ = {};
    forget();
    hasLooked_ = false;
}

void AccessibilityBackend::registryOwned(bool isOwned) {
    forget();
    // The first application that offers itself starts it.
    hasLooked_ = !isOwned;
    if (!isOwned) return;
    listenToWindows();
    look();
}

void AccessibilityBackend::listenToWindows() {
    windowEvents_ =
        bus_->subscribe({"", "", atspi::windowEventInterface}, "", [this](const std::string&, GVariant*) {
            if (lookTimer_.isPending()) return;
            lookTimer_.start(kEventMilliseconds, [this] { lookAgain(); });
        });
    // Applications keep their events to themselves until somebody wants them.
    for (const char* event : {"window:activate", "window:deactivate", "window:create", "window:destroy"}) {
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE("as"));
        bus_->call({atspi::registryService, "/org/a11y/atspi/registry", atspi::registryService},
                   "RegisterEvent", g_variant_new("(sass)", event, &properties, ""),
                   [](GVariant*, GUnixFDList*) {});
    }
}

void AccessibilityBackend::forget() {
    windowEvents_ = {};
    lookTimer_.cancel();
    if (walk_) std::exchange(walk_, nullptr)->cancel();
    isOutdated_ = false;
    isAvailable_ = false;
    windows_.clear();
    active_ = 0;
    tellNow();
}

void AccessibilityBackend::look() {
    if (walk_) return;
    isOutdated_ = false;
    walk_ = AtspiWalk::start(*bus_, mutterProcess_, [this](auto found) { looked(std::move(found)); });
}

void AccessibilityBackend::lookAgain() {
    // What a walk under way has seen may have been before the event.
    if (walk_) {
        isOutdated_ = true;
    } else {
        look();
    }
}

void AccessibilityBackend::looked(std::optional<std::vector<AtspiWindow>> found) {
    walk_.reset();
    hasLooked_ = true;
    lookedAt_ = g_get_monotonic_time();
    isAvailable_ = found.has_value();
    windows_.clear();
    active_ = 0;
    std::map<atspi::Object, std::int64_t> numbers;
    for (auto& each : std::move(found).value_or(std::vector<AtspiWindow>())) {
        const auto number = numberOf(each.object);
        numbers[each.object] = number;
        if (!each.isShowing) continue;
        DesktopWindow window;
        window.number = number;
        window.processIdentifier = each.process;
        window.layer = isOrdinary(each) ? WindowLayer::normal : WindowLayer::menu;
        if (each.title && !each.title->empty()) window.title = std::move(each.title);
        if (each.isActive) active_ = number;
        windows_.push_back(std::move(window));
    }
    numbers_ = std::move(numbers);

    if (active_ != 0) {
        std::erase(formerlyActive_, active_);
        formerlyActive_.insert(formerlyActive_.begin(), active_);
    }
    std::erase_if(formerlyActive_, [this](std::int64_t number) {
        return std::none_of(numbers_.begin(), numbers_.end(),
                            [=](const auto& entry) { return entry.second == number; });
    });
    const auto rank = [this](const DesktopWindow& window) {
        return std::find(formerlyActive_.begin(), formerlyActive_.end(), window.number);
    };
    std::stable_sort(windows_.begin(), windows_.end(),
                     [&](const auto& one, const auto& other) { return rank(one) < rank(other); });
    if (std::exchange(isOutdated_, false)) {
        look();
    } else if (!isAvailable_ && !lookTimer_.isPending()) {
        lookTimer_.start(kRetryMilliseconds, [this] { lookAgain(); });
    }
    tellNow();
}

std::int64_t AccessibilityBackend::active() const { return isOverviewShown_ ? 0 : active_; }

std::int64_t AccessibilityBackend::numberOf(const atspi::Object& object) {
    const auto known = numbers_.find(object);
    return known != numbers_.end() ? known->second : ++lastNumber_;
}

void AccessibilityBackend::tellNow() { tell(isAvailable_, active()); }

std::optional<DesktopWindow> AccessibilityBackend::activeWindow() {
    const auto now = windows();
    const auto found = std::find_if(now.begin(), now.end(),
                                    [this](const auto& window) { return window.number == active(); });
    return found != now.end() ? std::optional(*found) : std::nullopt;
}

std::vector<DesktopWindow> AccessibilityBackend::windows() {
    // Titles change without an event; the next question gets what is found now.
    if (isAvailable_ && g_get_monotonic_time() - lookedAt_ > kFreshMicroseconds) look();
    return windows_;
}

}  // namespace orvane
