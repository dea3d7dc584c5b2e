#include "platform/linux/compositor_sockets.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace orvane {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isX11Session() {
    return !variable("DISPLAY").empty() && variable("WAYLAND_DISPLAY").empty() &&
           variable("SWAYSOCK").empty();
}

/// Sockets of the runtime folder with such a name, the newest first.
std::vector<std::string> socketsNamed(std::string_view prefix) {
    std::vector<std::pair<std::filesystem::file_time_type, std::string>> found;
    std::error_code error;
    for (std::filesystem::directory_iterator each(runtimeFolder(), error), end; !error && each != end;
         each.increment(error)) {
        std::error_code ignored;
        if (!each->path().filename().string().starts_with(prefix) || !each->is_socket(ignored)) continue;
        found.emplace_back(each->last_write_time(ignored), each->path().string());
    }
    std::sort(found.rbegin(), found.rend());
    std::vector<std::string> result;
    for (auto& [time, path] : found) result.push_back(std::move(path));
    return result;
}

/// What the environment names comes first.
std::vector<std::string> withFirst(const std::string& named, std::vector<std::string> others) {
    if (named.empty()) return others;
    std::erase(others, named);
    others.insert(others.begin(), named);
    return others;
}

}  // namespace

std::string runtimeFolder() { return variable("XDG_RUNTIME_DIR"); }

std::vector<std::string> waylandSockets() {
    if (isX11Session()) return {};
    std::string named = variable("WAYLAND_DISPLAY");
    if (!named.empty() && named.front() != '/') {
        const auto folder = runtimeFolder();
        named = folder.empty() ? std::string() : folder + '/' + named;
    }
    return withFirst(named, socketsNamed("wayland-"));
}

std::vector<std::string> swaySockets() {
    if (isX11Session()) return {};
    return withFirst(variable("SWAYSOCK"), socketsNamed("sway-ipc."));
}

int connectToSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return -1;
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace orvane
