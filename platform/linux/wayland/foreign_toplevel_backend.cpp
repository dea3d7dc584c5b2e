#include "platform/linux/wayland/foreign_toplevel_backend.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvane {

const zwlr_foreign_toplevel_manager_v1_listener ForeignToplevelBackend::kListener{
    .toplevel =
        [](void* self, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
            static_cast<ForeignToplevelBackend*>(self)->added(handle);
        },
    .finished = [](void* self,
                   zwlr_foreign_toplevel_manager_v1*) { static_cast<ForeignToplevelBackend*>(self)->drop(); },
};

ForeignToplevelBackend::ForeignToplevelBackend(WaylandDisplay& display, ProcessSearch processes)
    : display_(display), processes_(std::move(processes)) {
    display.add(*this);
}

void ForeignToplevelBackend::globalAdded(const WaylandGlobal& global) {
    if (manager_ || global.interface != zwlr_foreign_toplevel_manager_v1_interface.name) return;
    // The third version only adds who a dialog belongs to.
    manager_.reset(display_.bind<zwlr_foreign_toplevel_manager_v1>(
        global, zwlr_foreign_toplevel_manager_v1_interface, 3));
    managerName_ = global.name;
    zwlr_foreign_toplevel_manager_v1_add_listener(manager_.get(), &kListener, this);
    noticeSoon();
}

void ForeignToplevelBackend::globalRemoved(std::uint32_t name) {
    if (manager_ && name == managerName_) drop();
}

void ForeignToplevelBackend::compositorLost() { drop(); }

void ForeignToplevelBackend::drop() {
    toplevels_.clear();
    foundProcesses_.clear();
    manager_.reset();
    noticeSoon();
}

void ForeignToplevelBackend::added(zwlr_foreign_toplevel_handle_v1* handle) {
    toplevels_.push_back(std::make_unique<ForeignToplevel>(handle, ++lastNumber_));
    const auto toplevel = std::prev(toplevels_.end());
    foundProcesses_.clear();
    (*toplevel)->onChanged = [this, toplevel] { changed(toplevel); };
    (*toplevel)->onClosed = [this, toplevel] {
        toplevels_.erase(toplevel);
        foundProcesses_.clear();
        noticeSoon();
    };
}

void ForeignToplevelBackend::changed(Toplevels::iterator toplevel) {
    if ((*toplevel)->state()->isActivated) toplevels_.splice(toplevels_.begin(), toplevels_, toplevel);
    noticeSoon();
}

const ForeignToplevel* ForeignToplevelBackend::active() const {
    const auto found = std::find_if(toplevels_.begin(), toplevels_.end(), [](const auto& toplevel) {
        return toplevel->state() && toplevel->state()->isActivated && !toplevel->state()->isMinimized;
    });
    return found != toplevels_.end() ? found->get() : nullptr;
}

std::optional<DesktopWindow> ForeignToplevelBackend::activeWindow() {
    const auto* toplevel = isAvailable() ? active() : nullptr;
    return toplevel != nullptr ? std::optional(describe(*toplevel)) : std::nullopt;
}

std::vector<DesktopWindow> ForeignToplevelBackend::windows() {
    std::vector<DesktopWindow> result;
    if (!isAvailable()) return result;
    for (const auto& toplevel : toplevels_) {
        if (toplevel->state() && !toplevel->state()->isMinimized) result.push_back(describe(*toplevel));
    }
    return result;
}

DesktopWindow ForeignToplevelBackend::describe(const ForeignToplevel& toplevel) {
    DesktopWindow window;
    window.number = toplevel.number();
    window.title = toplevel.state()->title;
    window.windowClass = toplevel.state()->applicationIdentifier;
    window.processIdentifier = processOf(window.windowClass);
    return window;
}

std::int32_t ForeignToplevelBackend::processOf(const std::string& applicationIdentifier) {
    const auto known = foundProcesses_.find(applicationIdentifier);
    if (known != foundProcesses_.end()) return known->second;
    return foundProcesses_[applicationIdentifier] = processes_.find(applicationIdentifier);
}

void ForeignToplevelBackend::noticeSoon() {
    // A switch is told as two changes, of the former and of the new one.
    if (noticeTimer_.isPending()) return;
    noticeTimer_.start(0, [this] { tellNow(); });
}

void ForeignToplevelBackend::tellNow() {
    const auto* toplevel = isAvailable() ? active() : nullptr;
    tell(isAvailable(), toplevel != nullptr ? toplevel->number() : 0);
}

}  // namespace orvane
