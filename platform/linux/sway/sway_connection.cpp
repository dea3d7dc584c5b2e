#include "platform/linux/sway/sway_connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/linux/compositor_sockets.h"

namespace orvane {

std::unique_ptr<SwayConnection> SwayConnection::open() {
    for (const auto& path : swaySockets()) {
        const int descriptor = connectToSocket(path);
        if (descriptor >= 0) return std::unique_ptr<SwayConnection>(new SwayConnection(descriptor));
    }
    return nullptr;
}

SwayConnection::~SwayConnection() { close(descriptor_); }

void SwayConnection::send(const SwayMessage& message) {
    const auto bytes = message.bytes();
    // Requests are short; a socket that has no room for one belongs to a sway that has not read for long.
    const auto sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent != static_cast<ssize_t>(bytes.size())) isBroken_ = true;
}

void SwayConnection::read() {
    std::array<char, 65536> buffer;
    while (!isBroken_) {
        const auto count = recv(descriptor_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) break;
        if (count <= 0) {
            isBroken_ = true;
            break;
        }
        reader_.append({buffer.data(), static_cast<std::size_t>(count)});
        while (auto message = reader_.next()) messages_.push_back(std::move(*message));
        if (reader_.isBroken()) isBroken_ = true;
    }
}

std::optional<SwayMessage> SwayConnection::next() {
    if (messages_.empty()) return std::nullopt;
    auto message = std::move(messages_.front());
    messages_.pop_front();
    return message;
}

bool SwayConnection::waitForInput(std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (isBroken_ || left.count() <= 0) return false;
        pollfd ready{descriptor_, POLLIN, 0};
        const int answer = poll(&ready, 1, static_cast<int>(left.count()));
        if (answer < 0 && errno == EINTR) continue;
        if (answer > 0) read();
        return answer > 0 && !isBroken_;
    }
}

std::optional<std::string> SwayConnection::ask(SwayMessageType type, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    send({type, {}});
    for (;;) {
        const auto answer = std::find_if(messages_.begin(), messages_.end(),
                                         [=](const auto& message) { return message.type == type; });
        if (answer != messages_.end()) {
            auto payload = std::move(answer->payload);
            messages_.erase(answer);
            return payload;
        }
        if (!waitForInput(deadline)) {
            // An answer that comes too late would be taken for that to the next question.
            isBroken_ = true;
            return std::nullopt;
        }
    }
}

}  // namespace orvane
