#include "host/exchange/interruption.h"

namespace orvane::host {

namespace {

volatile std::sig_atomic_t requestedSignal = 0;

void note(int signal) { requestedSignal = signal; }

}  // namespace

Interruption::Interruption() {
    requestedSignal = 0;
    struct sigaction action {};
    action.sa_handler = note;
    sigemptyset(&action.sa_mask);
    // No restart: a read that waits for a pipe has to return.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < signals.size(); ++i) ::sigaction(signals[i], &action, &before_[i]);
    // A terminal that is closed ends it too, unless it was started not to mind.
    if (before_.back().sa_handler == SIG_IGN) ::sigaction(SIGHUP, &before_.back(), nullptr);
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < signals.size(); ++i) ::sigaction(signals[i], &before_[i], nullptr);
}

bool Interruption::requested() { return requestedSignal != 0; }

}  // namespace orvane::host
