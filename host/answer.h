#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/error.h"
#include "host/command.h"

namespace orvane::host {

/// Prints the problem on standard error; returns the status.
int fail(const std::string& problem, ExitStatus status);
/// Prints what went wrong on standard error; returns exitFailure.
int fail(const Error& error);

/// Prints the value, laid out for people, with replacement characters for what is no UTF-8.
void print(const nlohmann::ordered_json& json);
/// The text, or null for none.
nlohmann::ordered_json jsonText(const std::optional<std::string_view>& text);

/// "1 group", "2 groups".
std::string counted(std::size_t count, const char* what);

}  // namespace orvane::host
