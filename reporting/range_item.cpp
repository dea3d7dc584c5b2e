#include "reporting/range_item.h"

#include "foundation/key_conversion.h"
#include "reporting/orvane_app_for_range.h"

namespace orvane {

namespace {

Value locationTexts(const KeyedObject& item) {
    const auto locations = static_cast<const RangeItem&>(item).URLs();
    if (!locations) return {};
    Value::Array texts;
    for (const std::filesystem::path& location : *locations) texts.emplace_back(location.string());
    return texts;
}

}  // namespace

const KeyTable& RangeItem::commonKeyTable() {
    static const KeyTable table{
        "RangeItem",
        nullptr,
        {keys::readOnly<"name", &RangeItem::name>(), keys::readOnly<"identifier", &RangeItem::identifier>(),
         keys::readOnly<"uid", &RangeItem::uid>(),
         keys::readWrite<"color", &RangeItem::color, &RangeItem::setColor>(),
         keys::readOnly<"colorValue", &RangeItem::colorValue>(), Key{"URLs", locationTexts, nullptr, {}},
         keys::readOnly<"duration", &RangeItem::duration>(),
         keys::readOnly<"appsForRange", &RangeItem::appsForRange>(),
         keys::readOnly<"editableName", &RangeItem::editableName>(),
         keys::readOnly<"recordings", &RangeItem::recordings>(),
         keys::readWrite<"fromDate", &RangeItem::fromDate, &RangeItem::setFromDate>(),
         keys::readWrite<"toDate", &RangeItem::toDate, &RangeItem::setToDate>()}};
    return table;
}

void RangeItem::setFromDate(std::optional<Date> date) {
    willChangeValueForKey("fromDate");
    fromDate_ = date;
    didChangeValueForKey("fromDate");
}

void RangeItem::setToDate(std::optional<Date> date) {
    willChangeValueForKey("toDate");
    toDate_ = date;
    didChangeValueForKey("toDate");
}

}  // namespace orvane
