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
    ::sigaction(SIGINT, &action, &interruptBefore_);
    ::sigaction(SIGTERM, &action, &terminateBefore_);
    // A terminal that is closed is one more way to end it, unless it was started not to mind.
    ::sigaction(SIGHUP, &action, &hangupBefore_);
    if (hangupBefore_.sa_handler == SIG_IGN) ::sigaction(SIGHUP, &hangupBefore_, nullptr);
}

Interruption::~Interruption() {
    ::sigaction(SIGINT, &interruptBefore_, nullptr);
    ::sigaction(SIGTERM, &terminateBefore_, nullptr);
    ::sigaction(SIGHUP, &hangupBefore_, nullptr);
}

bool Interruption::requested() { return requestedSignal != 0; }

}  // namespace orvane::host
