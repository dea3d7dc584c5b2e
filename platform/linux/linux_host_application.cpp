#include "platform/linux/linux_host_application.h"

#include "platform/linux/error_presenter.h"

namespace orvane {

namespace {

ErrorPresenter& registeredPresenter() {
    static ErrorPresenter presenter;
    return presenter;
}

}  // namespace

void setErrorPresenter(ErrorPresenter presenter) { registeredPresenter() = std::move(presenter); }

LinuxHostApplication::LinuxHostApplication(LogSink& log) : log_(log) {}

void LinuxHostApplication::presentError(const Error& error) {
    // A copy, since the presenter may register another one.
    if (const ErrorPresenter presenter = registeredPresenter()) return presenter(error);
    std::string line = error.localizedDescription();
    if (const auto reason = error.localizedFailureReason(); !reason.empty()) line += " (" + reason + ")";
    log_.log(line);
}

}  // namespace orvane
