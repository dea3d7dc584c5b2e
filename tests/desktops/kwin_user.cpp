// The user of a KWin that the tests run: moves the pointer, activates windows and switches screens, by
// protocols that KWin offers to programs with permission. Reads one command a line and answers each with
// "done".

#include <linux/input-event-codes.h>
#include <poll.h>
#include <unistd.h>
#include <wayland-client.h>
#include <wayland-protocols/dpms-client.h>
#include <wayland-protocols/fake-input-client.h>
#include <wayland-protocols/plasma-window-management-client.h>

#include <cstdint>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

namespace {

class User {
  public:
    User() : display_(wl_display_connect(nullptr)) {
        if (display_ == nullptr) return;
        auto* registry = wl_display_get_registry(display_);
        static constexpr wl_registry_listener listener{&User::global,
                                                       [](void*, wl_registry*, std::uint32_t) {}};
        wl_registry_add_listener(registry, &listener, this);
        wl_display_roundtrip(display_);
        if (input_ != nullptr) org_kde_kwin_fake_input_authenticate(input_, "tests", "tests");
    }

    bool isReady() const { return input_ != nullptr && management_ != nullptr && dpms_ != nullptr; }

    /// False when the compositor is gone.
    bool obey(const std::string& line) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "touch") {
            org_kde_kwin_fake_input_pointer_motion(input_, wl_fixed_from_int(3), wl_fixed_from_int(3));
        } else if (command == "activate") {
            std::uint32_t process = 0;
            words >> process;
            // A program takes its window for shown a moment before KWin knows it.
            while (windows_.count(process) == 0) {
                if (wl_display_dispatch(display_) < 0) return false;
            }
            const auto active = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
            org_kde_plasma_window_set_state(windows_[process], active, active);
        } else if (command == "screens") {
            std::string state;
            words >> state;
            for (auto* output : outputs_) {
                org_kde_kwin_dpms_set(org_kde_kwin_dpms_manager_get(dpms_, output),
                                      state == "on" ? ORG_KDE_KWIN_DPMS_MODE_ON : ORG_KDE_KWIN_DPMS_MODE_OFF);
            }
        }
        return wl_display_roundtrip(display_) >= 0;
    }

    /// Takes in what KWin tells until there is a command to read.
    bool waitForCommand() {
        for (;;) {
            while (wl_display_prepare_read(display_) != 0) wl_display_dispatch_pending(display_);
            wl_display_flush(display_);
            pollfd ready[]{{STDIN_FILENO, POLLIN, 0}, {wl_display_get_fd(display_), POLLIN, 0}};
            poll(ready, 2, -1);
            if (ready[1].revents == 0) {
                wl_display_cancel_read(display_);
            } else if (wl_display_read_events(display_) < 0 || wl_display_dispatch_pending(display_) < 0) {
                return false;
            }
            if (ready[0].revents != 0) return true;
        }
    }

  private:
    static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                       std::uint32_t) {
        auto& user = *static_cast<User*>(data);
        const auto bind = [&](const wl_interface& wanted, std::uint32_t version) {
            return std::string(interface) == wanted.name ? wl_registry_bind(registry, name, &wanted, version)
                                                         : nullptr;
        };
        if (auto* input = bind(org_kde_kwin_fake_input_interface, 1)) {
            user.input_ = static_cast<org_kde_kwin_fake_input*>(input);
        } else if (auto* dpms = bind(org_kde_kwin_dpms_manager_interface, 1)) {
            user.dpms_ = static_cast<org_kde_kwin_dpms_manager*>(dpms);
        } else if (auto* output = bind(wl_output_interface, 1)) {
            user.outputs_.push_back(static_cast<wl_output*>(output));
        } else if (auto* management = bind(org_kde_plasma_window_management_interface, 13)) {
            user.management_ = static_cast<org_kde_plasma_window_management*>(management);
            wl_proxy_add_dispatcher(static_cast<wl_proxy*>(management), &User::told, nullptr, data);
        }
    }

    /// Events of the management and of windows. Few of them are wanted.
    static int told(const void*, void* object, std::uint32_t, const wl_message* message,
                    wl_argument* values) {
        auto* proxy = static_cast<wl_proxy*>(object);
        auto& user = *static_cast<User*>(wl_proxy_get_user_data(proxy));
        const std::string event = message->name;
        if (event == "window_with_uuid") {
            auto* window = org_kde_plasma_window_management_get_window_by_uuid(user.management_, values[1].s);
            wl_proxy_add_dispatcher(reinterpret_cast<wl_proxy*>(window), &User::told, nullptr, &user);
        } else if (event == "pid_changed") {
            user.windows_[values[0].u] = static_cast<org_kde_plasma_window*>(object);
        } else if (event == "unmapped") {
            std::erase_if(user.windows_, [object](const auto& each) { return each.second == object; });
        }
        return 0;
    }

    wl_display* display_;
    org_kde_kwin_fake_input* input_ = nullptr;
    org_kde_kwin_dpms_manager* dpms_ = nullptr;
    org_kde_plasma_window_management* management_ = nullptr;
    std::vector<wl_output*> outputs_;
    /// By process.
    std::map<std::uint32_t, org_kde_plasma_window*> windows_;
};

}  // namespace

int main() {
    User user;
    if (!user.isReady()) return 1;
    std::cout << "ready" << std::endl;
    while (user.waitForCommand()) {
        std::string line;
        if (!std::getline(std::cin, line) || !user.obey(line)) break;
        std::cout << "done" << std::endl;
    }
    return 0;
}
