#include <charconv>
#include <cmath>
#include <limits>

#include "host/replay/trace_actions.h"

namespace orvane::host {

namespace {

constexpr int iconSide = 32;

std::int32_t processIdentifier(const Member& value) {
    return static_cast<std::int32_t>(
        value.integer(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

std::optional<RunningApplication> readFrontmost(const Member& value) {
    if (value.isNull()) return std::nullopt;
    ObjectReader object(value);
    RunningApplication result;
    if (const auto identifier = object.take("bundleIdentifier")) result.bundleIdentifier = identifier->text();
    result.processIdentifier = processIdentifier(object.require("processIdentifier"));
    object.finish();
    return result;
}

std::vector<Dictionary> readWindows(const Member& value) {
    value.requireArray();
    std::vector<Dictionary> result;
    for (std::size_t i = 0; i < value.json().size(); ++i) {
        const Member window = value.element(i);
        window.requireObject();
        for (const auto& [key, member] : window.json().items())
            if (member.is_null()) window.fail("has null under " + Json(key).dump());
        result.push_back(window.dictionary());
    }
    return result;
}

SimulatedAccessibilityState readAccessibility(const Member& value) {
    ObjectReader object(value);
    SimulatedAccessibilityState result;
    if (const auto trusted = object.take("trusted")) result.trusted = trusted->boolean();
    if (const auto windows = object.take("focusedWindows")) {
        ObjectReader processes(*windows);
        for (const auto& [key, json] : windows->json().items()) {
            std::int32_t process = 0;
            const char* end = key.data() + key.size();
            const auto [stop, error] = std::from_chars(key.data(), end, process);
            if (error != std::errc() || stop != end || key != std::to_string(process))
                windows->fail("has a key that is no process id: " + Json(key).dump());
            const Member window = processes.require(key);
            if (window.isNull()) continue;
            ObjectReader attributes(window);
            SimulatedFocusedWindow focused;
            if (const auto title = attributes.take(kAXTitleAttribute)) {
                focused.hasTitle = true;
                focused.title = title->optionalText();
            }
            attributes.finish();
            result.focusedWindows.emplace(process, std::move(focused));
        }
    }
    object.finish();
    return result;
}

int hexDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

Image readIcon(const Member& value) {
    value.requireArray();
    constexpr std::size_t pixelCount = iconSide * iconSide;
    Image icon{iconSide, iconSide, {}};
    for (std::size_t i = 0; i < value.json().size(); ++i) {
        const Member run = value.element(i);
        run.requireArray();
        if (run.json().size() != 2) run.fail("is not a colour and a count");
        const Member color = run.element(0);
        const std::string& text = color.text();
        std::vector<std::uint8_t> pixel;
        for (std::size_t at = 0; text.size() == 8 && at < 8; at += 2) {
            const int high = hexDigit(text[at]);
            const int low = hexDigit(text[at + 1]);
            if (high >= 0 && low >= 0) pixel.push_back(static_cast<std::uint8_t>(high * 16 + low));
        }
        if (pixel.size() != 4) color.fail("is not a colour of eight hexadecimal digits");
        for (std::int64_t count = run.element(1).integer(0, pixelCount); count > 0; --count)
            icon.pixels.insert(icon.pixels.end(), pixel.begin(), pixel.end());
        if (icon.pixels.size() > pixelCount * 4) break;
    }
    if (icon.pixels.size() != pixelCount * 4) value.fail("has not 1024 pixels");
    return icon;
}

SimulatedWorkspace::Applications readApplications(const Member& value) {
    ObjectReader object(value);
    SimulatedWorkspace::Applications result;
    for (const auto& [identifier, json] : value.json().items()) {
        ObjectReader parts(object.require(identifier));
        SimulatedApplication application;
        if (const auto path = parts.take("path")) application.path = path->text();
        if (const auto path = parts.take("bundlePath")) application.bundlePath = path->text();
        if (const auto name = parts.take("bundleName")) application.bundleName = name->text();
        if (const auto icon = parts.take("icon")) application.icon = readIcon(*icon);
        parts.finish();
        result.emplace(identifier, std::move(application));
    }
    return result;
}

}  // namespace

DesktopAction readDesktop(const Member& value) {
    ObjectReader object(value);
    DesktopAction result;
    if (const auto frontmost = object.take("frontmost")) result.frontmost = readFrontmost(*frontmost);
    if (const auto windows = object.take("windows")) result.windows = readWindows(*windows);
    if (const auto accessibility = object.take("accessibility"))
        result.accessibility = readAccessibility(*accessibility);
    if (const auto applications = object.take("applications"))
        result.applications = readApplications(*applications);
    object.finish();
    return result;
}

}  // namespace orvane::host
