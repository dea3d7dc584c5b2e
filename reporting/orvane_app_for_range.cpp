#include "reporting/orvane_app_for_range.h"

#include <stdexcept>

#include "foundation/key_conversion.h"
#include "reporting/optional_text.h"

namespace orvane {

const KeyTable& OrvaneAppForRange::classKeyTable() {
    static const KeyTable table{
        "OrvaneAppForRange",
        &commonKeyTable(),
        {keys::readWrite<"app", &OrvaneAppForRange::app, &OrvaneAppForRange::setApp>(),
         keys::readWrite<"recordings", &OrvaneAppForRange::recordings, &OrvaneAppForRange::setRecordings>(),
         keys::readOnly<"path", &OrvaneAppForRange::path>(),
         keys::readOnly<"URL", &OrvaneAppForRange::path>(),
         keys::readOnly<"duration", &OrvaneAppForRange::duration>({"recordings"}),
         keys::readOnly<"lastUsedDate", &OrvaneAppForRange::lastUsedDate>({"recordings"})}};
    return table;
}

void OrvaneAppForRange::setApp(Ref<OrvaneApp> app) {
    willChangeValueForKey("app");
    app_ = std::move(app);
    didChangeValueForKey("app");
}

std::optional<std::string> OrvaneAppForRange::name() const {
    return app_ ? owned(app_->name()) : std::nullopt;
}

std::optional<std::string> OrvaneAppForRange::identifier() const {
    return app_ ? owned(app_->identifier()) : std::nullopt;
}

std::optional<std::string> OrvaneAppForRange::color() const {
    return app_ ? owned(app_->color()) : std::nullopt;
}

void OrvaneAppForRange::setColor(std::optional<std::string_view> color) {
    if (app_) app_->setColor(color);
}

std::optional<Color> OrvaneAppForRange::colorValue() const {
    return app_ ? app_->colorValue() : std::nullopt;
}

std::optional<std::filesystem::path> OrvaneAppForRange::URL() const {
    return app_ ? app_->URL() : std::nullopt;
}

std::optional<std::string> OrvaneAppForRange::path() const { return app_ ? app_->path() : std::nullopt; }

std::optional<std::set<std::filesystem::path>> OrvaneAppForRange::URLs() const {
    const auto location = URL();
    if (!location) return std::nullopt;
    return std::set<std::filesystem::path>{*location};
}

DecimalSeconds OrvaneAppForRange::duration() const {
    DecimalSeconds sum{0};
    for (const Ref<OrvaneRecording>& recording : recordings_) sum += recording->duration();
    return sum;
}

std::optional<Date> OrvaneAppForRange::lastUsedDate() const {
    std::optional<Date> latest;
    for (const Ref<OrvaneRecording>& recording : recordings_) {
        const std::optional<Date> end = recording->endDate();
        if (end && (!latest || *end > *latest)) latest = end;
    }
    return latest;
}

void OrvaneAppForRange::setRecordings(std::vector<Ref<OrvaneRecording>> recordings) {
    willChangeValueForKey("recordings");
    recordings_ = std::move(recordings);
    didChangeValueForKey("recordings");
}

void OrvaneAppForRange::resetColor(const void* sender) {
    willChangeValueForKey("name");
    willChangeValueForKey("color");
    if (app_) app_->resetColor(sender);
    didChangeValueForKey("color");
    didChangeValueForKey("name");
}

void OrvaneAppForRange::setMainContext() {
    std::vector<Ref<OrvaneRecording>> recordings;
    recordings.reserve(recordings_.size());
    for (const Ref<OrvaneRecording>& recording : recordings_) {
        Ref<OrvaneRecording> inMainContext = refCast<OrvaneRecording>(recording->objectInMainContext());
        if (!inMainContext)
            throw std::logic_error("the main context has no recording " +
                                   recording->objectID().URIRepresentation());
        recordings.push_back(std::move(inMainContext));
    }
    setRecordings(std::move(recordings));
    setApp(app_ ? refCast<OrvaneApp>(app_->objectInMainContext()) : nullptr);
}

}  // namespace orvane
