#include "store/orvane_app.h"

#include "foundation/key_conversion.h"
#include "platform/platform.h"
#include "util/color_text.h"
#include "util/dominant_color.h"

namespace orvane {

const KeyTable& OrvaneApp::classKeyTable() {
    static const auto URLText = [](const KeyedObject& app) -> Value {
        const auto location = static_cast<const OrvaneApp&>(app).URL();
        return location ? Value(location->string()) : Value();
    };
    static const KeyTable table{"OrvaneApp",
                                &_OrvaneApp::classKeyTable(),
                                {
                                    keys::readOnly<"colorValue", &OrvaneApp::colorValue>({"color"}),
                                    keys::readOnly<"path", &OrvaneApp::path>({"identifier"}),
                                    Key{"URL", URLText, nullptr, {"path"}},
                                    keys::readOnly<"isAppStore", &OrvaneApp::isAppStore>({"path"}),
                                    keys::readOnly<"duration", &OrvaneApp::duration>({"recordings"}),
                                    keys::readOnly<"lastUsedDate", &OrvaneApp::lastUsedDate>({"recordings"}),
                                }};
    return table;
}

std::set<std::string_view> OrvaneApp::keyPathsForValuesAffectingDuration() {
    return keyPathsForValuesAffectingValueForKey("duration");
}

std::set<std::string_view> OrvaneApp::keyPathsForValuesAffectingLastUsedDate() {
    return keyPathsForValuesAffectingValueForKey("lastUsedDate");
}

std::optional<Color> OrvaneApp::colorValue() const { return createColorFromHexTripletsString(color()); }

std::optional<std::string> OrvaneApp::path() const {
    const auto text = identifier();
    if (!text || text->empty()) return std::nullopt;
    const auto location = Platform::current().workspace().URLForApplicationWithBundleIdentifier(*text);
    return location ? std::optional(location->string()) : std::nullopt;
}

std::optional<std::filesystem::path> OrvaneApp::URL() const { return path(); }

bool OrvaneApp::isAppStore() const {
    const auto location = URL();
    return location && Platform::current().fileManager().fileExists(*location / "Contents" / "_MASReceipt");
}

DecimalSeconds OrvaneApp::duration() const {
    const Value sum = valueForKeyPath("recordings.@sum.duration");
    const DecimalSeconds* seconds = sum.asDecimal();
    return seconds ? *seconds : DecimalSeconds(0);
}

std::optional<Date> OrvaneApp::lastUsedDate() const {
    const Value latest = valueForKeyPath("recordings.@max.endDate");
    const Date* date = latest.asDate();
    return date ? std::optional(*date) : std::nullopt;
}

void OrvaneApp::resetColor(const void*) {
    Platform& platform = Platform::current();
    std::optional<Color> dominant;
    if (const auto location = URL()) dominant = dominantColor(platform.workspace().iconForFile(*location));

    // The bundle may be known where the application itself is not, and the other way round.
    if (const auto text = identifier()) {
        if (const auto bundle = platform.workspace().absolutePathForAppBundleWithIdentifier(*text)) {
            const Value newName = platform.fileManager().bundleInformation(*bundle, "CFBundleName");
            if (const std::string* present = newName.asString()) setName(*present);
        }
    }
    if (dominant) setColor(hexStringForColor(dominant));
}

std::string OrvaneApp::hexStringForColor(const std::optional<Color>& color) const {
    return orvane::hexStringForColor(color);
}

}  // namespace orvane
