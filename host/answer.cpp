#include "host/answer.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace orvane::host {

using nlohmann::ordered_json;

int fail(const std::string& problem, ExitStatus status) {
    std::cerr << "orvane: " << problem << '\n';
    return status;
}

int fail(const Error& error) { return fail(error.localizedDescription(), exitFailure); }

void print(const ordered_json& json) {
    std::cout << json.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

ordered_json jsonText(const std::optional<std::string_view>& text) {
    return text ? ordered_json(*text) : ordered_json();
}

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace orvane::host
