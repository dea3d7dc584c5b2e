#include "platform/linux/sway/sway_backend.h"

#include <glib-unix.h>

#include <utility>

#include "platform/linux/compositor_sockets.h"

namespace orvane {

namespace {

constexpr std::chrono::milliseconds kFirstWait{1000};
constexpr std::chrono::milliseconds kLongestAnswer{250};
// One that took the connection and says nothing is tried again: by now another may listen in its place.
constexpr unsigned kAnswerMilliseconds = 10'000;
// A locker or a launcher takes the focus without an event: what was told longer ago is asked for anew.
constexpr std::int64_t kFreshMicroseconds = 500'000;

}  // namespace

SwayBackend::SwayBackend() : retry_(runtimeFolder(), "sway-ipc.", [this] { attempt(); }) {
    if (connect()) {
        const auto deadline = std::chrono::steady_clock::now() + kFirstWait;
        while (!isReady_ && connection_ && connection_->waitForInput(deadline)) takeMessages();
        if (connection_->isBroken()) lose();
    } else {
        retry_.start();
    }
    // Whoever makes a backend looks at it himself.
    noticeTimer_.cancel();
    tell(isReady_, focused());
}

SwayBackend::~SwayBackend() {
    if (source_ != 0) g_source_remove(source_);
}

void SwayBackend::attempt() {
    if (!connection_ && !connect()) retry_.start();
}

bool SwayBackend::connect() {
    connection_ = SwayConnection::open();
    if (!connection_) return false;
    const auto ready = +[](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<SwayBackend*>(self)->readable();
        return G_SOURCE_CONTINUE;
    };
    source_ = g_unix_fd_add(connection_->descriptor(),
                            static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), ready, this);
    // Going to an empty workspace is no event of a window.
    connection_->send({SwayMessageType::subscribe, R"(["window","workspace","shutdown"])"});
    connection_->send({SwayMessageType::getTree, {}});
    answerTimer_.start(kAnswerMilliseconds, [this] { lose(); });
    return true;
}

void SwayBackend::readable() {
    connection_->read();
    takeMessages();
    if (connection_->isBroken()) lose();
}

void SwayBackend::takeMessages() {
    while (const auto message = connection_->next()) {
        switch (message->type) {
            case SwayMessageType::getTree:
                setTree(message->payload);
                if (!isReady_ && tree_) {
                    isReady_ = true;
                    answerTimer_.cancel();
                    retry_.stop();
                    noticeSoon();
                }
                break;
            case SwayMessageType::windowEvent:
                // The one that was told last may get it back, from a locker that nobody saw.
                if (isSwayFocusEvent(message->payload)) forgetActive();
                [[fallthrough]];
            case SwayMessageType::workspaceEvent:
                tree_.reset();
                if (canChangeSwayFocus(message->payload)) noticeSoon();
                break;
            default:
                // A shutdown is followed by the end of the connection.
                break;
        }
    }
}

void SwayBackend::lose() {
    if (source_ != 0) g_source_remove(std::exchange(source_, 0));
    connection_.reset();
    answerTimer_.cancel();
    isReady_ = false;
    tree_.reset();
    retry_.start();
    noticeSoon();
}

void SwayBackend::setTree(const std::string& answer) {
    tree_ = SwayTree::parse(answer);
    toldAt_ = g_get_monotonic_time();
}

std::int64_t SwayBackend::focused() const { return tree_ && tree_->focused ? tree_->focused->number : 0; }

const SwayTree* SwayBackend::tree() {
    if (!isReady_) return nullptr;
    connection_->read();
    takeMessages();
    if (!tree_ || g_get_monotonic_time() - toldAt_ > kFreshMicroseconds) {
        tree_.reset();
        const auto answer = connection_->ask(SwayMessageType::getTree, kLongestAnswer);
        if (answer) setTree(*answer);
        // Events that came with the answer are off the socket, which will not wake the main loop for them.
        if (connection_->hasNext() || focused() != toldActive()) noticeSoon();
    }
    if (connection_->isBroken()) lose();
    return tree_ ? &*tree_ : nullptr;
}

std::optional<DesktopWindow> SwayBackend::activeWindow() {
    const auto* now = tree();
    return now != nullptr ? now->focused : std::nullopt;
}

std::vector<DesktopWindow> SwayBackend::windows() {
    const auto* now = tree();
    return now != nullptr ? now->windows : std::vector<DesktopWindow>();
}

void SwayBackend::noticeSoon() {
    if (!noticeTimer_.isPending()) noticeTimer_.start(0, [this] { tellNow(); });
}

void SwayBackend::tellNow() {
    tree();
    tell(isReady_, focused());
}

}  // namespace orvane
