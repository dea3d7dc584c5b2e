#include "platform/linux/accessibility/atspi_walk.h"

#include <utility>

namespace orvane {

namespace {

constexpr int kTimeoutMilliseconds = 300;

}  // namespace

AtspiWalk::AtspiWalk(BusConnection& bus, std::int32_t excludedProcess, Done done)
    : bus_(bus), excludedProcess_(excludedProcess), done_(std::move(done)) {}

std::shared_ptr<AtspiWalk> AtspiWalk::start(BusConnection& bus, std::int32_t excludedProcess, Done done) {
    std::shared_ptr<AtspiWalk> walk(new AtspiWalk(bus, excludedProcess, std::move(done)));
    walk->ask(atspi::registryRoot().accessible(), "GetChildren", nullptr,
              [self = walk.get()](GVariant* values) {
                  const auto applications = atspi::objectsIn(values);
                  if (!applications) return;
                  self->hasRegistry_ = true;
                  for (const auto& application : *applications) self->visitApplication(application);
              });
    return walk;
}

void AtspiWalk::ask(const BusObject& object, const char* method, GVariant* arguments, Handler handler) {
    ++pending_;
    bus_.call(
        object, method, arguments,
        [self = shared_from_this(), handler = std::move(handler)](GVariant* values, GUnixFDList*) {
            if (!self->done_) return;
            handler(values);
            if (--self->pending_ == 0) self->finish();
        },
        kTimeoutMilliseconds);
}

void AtspiWalk::visitApplication(const atspi::Object& application) {
    ask(atspi::busItself(), "GetConnectionUnixProcessID", g_variant_new("(s)", application.service.c_str()),
        [this, application](GVariant* answer) {
            const auto process = atspi::processIn(answer);
            if (!process || *process == excludedProcess_) return;
            ask(application.accessible(), "GetChildren", nullptr,
                [this, process = *process](GVariant* values) {
                    for (const auto& object :
                         atspi::objectsIn(values).value_or(std::vector<atspi::Object>())) {
                        visitWindow(object, process);
                    }
                });
        });
}

void AtspiWalk::visitWindow(const atspi::Object& object, std::int32_t process) {
    windows_.push_back(std::make_shared<AtspiWindow>());
    const auto window = windows_.back();
    window->object = object;
    window->process = process;
    ask(object.accessible(), "GetState", nullptr, [window](GVariant* values) {
        window->isActive = atspi::hasState(values, atspi::State::active);
        window->isShowing = atspi::hasState(values, atspi::State::showing) &&
                            !atspi::hasState(values, atspi::State::iconified);
    });
    ask(object.accessible(), "GetRole", nullptr,
        [window](GVariant* values) { window->role = atspi::roleIn(values); });
    ask({object.service, object.path, atspi::propertiesInterface}, "Get", atspi::nameArguments(),
        [window](GVariant* values) { window->title = atspi::textIn(values); });
}

void AtspiWalk::finish() {
    std::optional<std::vector<AtspiWindow>> result;
    if (hasRegistry_) {
        result.emplace();
        for (const auto& window : windows_) result->push_back(std::move(*window));
    }
    const auto done = std::exchange(done_, nullptr);
    done(std::move(result));
}

}  // namespace orvane
