#include "platform/linux/accessibility/title_reader.h"

#include <algorithm>
#include <utility>

namespace orvane {

static_assert(TitleReader::longestWaitMilliseconds < 50, "a poll must not notice an application that hangs");

/// Questions that share one deadline.
class TitleReader::Questions {
  public:
    explicit Questions(BusConnection& bus)
        : bus_(bus), deadline_(g_get_monotonic_time() + longestWaitMilliseconds * 1000) {}

    Variant ask(const BusObject& object, const char* method, GVariant* arguments = nullptr) {
        const auto left = (deadline_ - g_get_monotonic_time()) / 1000;
        if (left <= 0) isLate_ = true;
        if (isLate_) {
            if (arguments != nullptr) g_variant_unref(g_variant_ref_sink(arguments));
            return nullptr;
        }
        return bus_.callNow(object, method, arguments, static_cast<int>(left), isLate_);
    }
    bool isLate() const { return isLate_; }

  private:
    BusConnection& bus_;
    const std::int64_t deadline_;
    bool isLate_ = false;
};

void TitleReader::busOpened(BusConnection& bus) { bus_ = &bus; }

void TitleReader::busClosed() {
    bus_ = nullptr;
    processes_.clear();
    silentUntil_.clear();
}

std::optional<TitleReader::Answer> TitleReader::focusedWindow(std::int32_t process) {
    if (bus_ == nullptr || process <= 0) return std::nullopt;
    const auto now = g_get_monotonic_time();
    std::erase_if(silentUntil_, [=](const auto& entry) { return entry.second <= now; });
    if (silentUntil_.contains(process) || silentUntil_.contains(0)) return std::nullopt;
    Questions questions(*bus_);
    return ask(process, questions);
}

std::optional<TitleReader::Answer> TitleReader::ask(std::int32_t process, Questions& questions) {
    const auto silent = [this](std::int32_t whose) {
        silentUntil_[whose] = g_get_monotonic_time() + silenceMilliseconds * 1000;
    };
    const auto list = questions.ask(atspi::registryRoot().accessible(), "GetChildren");
    const auto applications = atspi::objectsIn(list.get());
    if (!applications) {
        if (questions.isLate()) silent(0);
        return std::nullopt;
    }
    std::map<std::string, std::int32_t> known;
    for (const auto& application : *applications) {
        const auto found = processes_.find(application.service);
        if (found != processes_.end()) {
            known.insert(*found);
            continue;
        }
        const auto reply = questions.ask(atspi::busItself(), "GetConnectionUnixProcessID",
                                         g_variant_new("(s)", application.service.c_str()));
        if (const auto owner = atspi::processIn(reply.get())) known.emplace(application.service, *owner);
    }
    processes_ = std::move(known);

    std::optional<Answer> answer;
    for (const auto& application : *applications) {
        const auto owner = processes_.find(application.service);
        if (answer || owner == processes_.end() || owner->second != process) continue;
        const auto windows = questions.ask(application.accessible(), "GetChildren");
        for (const auto& window : atspi::objectsIn(windows.get()).value_or(std::vector<atspi::Object>())) {
            const auto states = questions.ask(window.accessible(), "GetState");
            if (!atspi::hasState(states.get(), atspi::State::active)) continue;
            const auto name = questions.ask({window.service, window.path, atspi::propertiesInterface}, "Get",
                                            atspi::nameArguments());
            if (!questions.isLate()) answer = Answer{atspi::textIn(name.get())};
            break;
        }
        if (questions.isLate()) silent(process);
    }
    return answer;
}

}  // namespace orvane
