#include "reporting/orvane_group_for_range.h"

#include "foundation/key_conversion.h"
#include "reporting/optional_text.h"

namespace orvane {

const KeyTable& OrvaneGroupForRange::classKeyTable() {
    // "lastUsedDate" is declared to depend on the views beneath, although a group has no such key.
    static const KeyTable table{
        "OrvaneGroupForRange",
        &commonKeyTable(),
        {keys::readWrite<"name", &OrvaneGroupForRange::name, &OrvaneGroupForRange::setName>(),
         keys::readWrite<"group", &OrvaneGroupForRange::group, &OrvaneGroupForRange::setGroup>(),
         keys::readWrite<"appsForRange", &OrvaneGroupForRange::appsForRange,
                         &OrvaneGroupForRange::setAppsForRange>(),
         keys::readOnly<"duration", &OrvaneGroupForRange::duration>({"appsForRange"})}};
    return table;
}

void OrvaneGroupForRange::setGroup(Ref<OrvaneGroup> group) {
    willChangeValueForKey("group");
    group_ = std::move(group);
    didChangeValueForKey("group");
}

std::optional<std::string> OrvaneGroupForRange::name() const {
    return group_ ? owned(group_->name()) : std::nullopt;
}

void OrvaneGroupForRange::setName(std::optional<std::string_view> name) {
    if (group_) group_->setName(name);
}

std::optional<std::string> OrvaneGroupForRange::identifier() const {
    return group_ ? owned(group_->identifier()) : std::nullopt;
}

std::optional<std::string> OrvaneGroupForRange::color() const {
    return group_ ? owned(group_->color()) : std::nullopt;
}

void OrvaneGroupForRange::setColor(std::optional<std::string_view> color) {
    if (group_) group_->setColor(color);
}

std::optional<Color> OrvaneGroupForRange::colorValue() const {
    return group_ ? group_->colorValue() : std::nullopt;
}

std::optional<std::set<std::filesystem::path>> OrvaneGroupForRange::URLs() const {
    if (!group_) return std::nullopt;
    std::set<std::filesystem::path> locations;
    for (const Ref<OrvaneApp>& member : group_->applications())
        if (const auto location = member->URL()) locations.insert(*location);
    return locations;
}

DecimalSeconds OrvaneGroupForRange::duration() const {
    DecimalSeconds sum{0};
    for (const Ref<OrvaneAppForRange>& app : appsForRange_) sum += app->duration();
    return sum;
}

void OrvaneGroupForRange::setAppsForRange(std::vector<Ref<OrvaneAppForRange>> apps) {
    willChangeValueForKey("appsForRange");
    appsForRange_ = std::move(apps);
    didChangeValueForKey("appsForRange");
}

std::vector<Ref<OrvaneRecording>> OrvaneGroupForRange::recordings() const {
    // Each recording belongs to one application and each application to one view: the union has no doubles.
    std::vector<Ref<OrvaneRecording>> all;
    for (const Ref<OrvaneAppForRange>& app : appsForRange_) {
        const std::vector<Ref<OrvaneRecording>> recordings = app->recordings();
        all.insert(all.end(), recordings.begin(), recordings.end());
    }
    return all;
}

void OrvaneGroupForRange::setMainContext() {
    for (const Ref<OrvaneAppForRange>& app : appsForRange_) app->setMainContext();
    setGroup(group_ ? refCast<OrvaneGroup>(group_->objectInMainContext()) : nullptr);
}

}  // namespace orvane
