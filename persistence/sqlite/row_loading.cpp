#include "persistence/object_table.h"
#include "persistence/sqlite/database.h"
#include "persistence/text_batch.h"

namespace orvane {

void EntityTable::fill(ManagedObject& object, const sqlite::Statement& row, RowPart part, TextBatch& texts) {
    const bool onlyTexts = (object.state() & ManagedObject::stateLoaded) != 0;
    char* const base = static_cast<char*>(this->row(object));
    sqlite3_stmt* const statement = row.handle();
    int index = 0;
    for (const StoredColumn& column : columns(part)) {
        ++index;
        if ((object.changed_ >> column.property & 1) != 0 || (onlyTexts && !column.isText())) continue;
        void* const address = base + column.offset;
        // One look-up of the column serves its type and its value. Absent numbers read as zero, so that only
        // zeros need a look at the type.
        sqlite3_value* const value = sqlite3_column_value(statement, index);
        const auto absent = [&] { return sqlite3_value_type(value) == SQLITE_NULL; };
        switch (column.kind) {
            case SlotKind::date:
                if (const double seconds = sqlite3_value_double(value); seconds != 0 || !absent())
                    static_cast<DateSlot*>(address)->seconds = seconds;
                break;
            case SlotKind::boolean:
                if (const int flag = sqlite3_value_int(value); flag != 0 || !absent())
                    static_cast<BooleanSlot*>(address)->value = flag != 0;
                break;
            case SlotKind::text:
                if (const unsigned char* bytes = sqlite3_value_text(value)) {
                    const auto length = static_cast<std::size_t>(sqlite3_value_bytes(value));
                    texts.add(*static_cast<TextSlot*>(address),
                              {reinterpret_cast<const char*>(bytes), length});
                }
                break;
            case SlotKind::data:
                if (!absent()) {
                    const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
                    const auto length = static_cast<std::size_t>(sqlite3_value_bytes(value));
                    texts.add(*static_cast<TextSlot*>(address),
                              std::string_view(length ? bytes : "", length));
                }
                break;
            case SlotKind::toOne:
                if (const std::int64_t key = sqlite3_value_int64(value); key != 0 || !absent())
                    static_cast<ToOneSlot*>(address)->set(
                        &storage_.table(column.destination).findOrCreate(key));
                break;
            case SlotKind::integer32:
            case SlotKind::integer64:
                if (const std::int64_t number = sqlite3_value_int64(value); number != 0 || !absent())
                    static_cast<IntegerSlot*>(address)->value = number;
                break;
            case SlotKind::decimal:
                if (const std::int64_t number = sqlite3_value_int64(value); number != 0 || !absent())
                    static_cast<DecimalSlot*>(address)->value = DecimalSeconds(number);
                break;
            case SlotKind::real:
                if (const double number = sqlite3_value_double(value); number != 0 || !absent())
                    static_cast<RealSlot*>(address)->value = number;
                break;
            case SlotKind::toMany:
                break;
        }
    }
    object.reserved_ &= ~(ManagedObject::stateRefreshed | ManagedObject::stateTextsLate);
    object.reserved_ |= ManagedObject::stateLoaded;
    if (part == RowPart::withoutTexts) object.reserved_ |= ManagedObject::stateTextsLate;
}

void EntityTable::bind(const ManagedObject& constObject, sqlite::Statement& statement, int first,
                       std::uint64_t columns) const {
    auto& object = const_cast<ManagedObject&>(constObject);
    int parameter = first;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if ((columns >> i & 1) == 0) continue;
        const StoredColumn& column = columns_[i];
        const auto bindOptional = [&](const auto& value, const auto& bindValue) {
            if (value)
                bindValue(*value);
            else
                statement.bindNull(parameter);
        };
        switch (column.kind) {
            case SlotKind::boolean:
                bindOptional(slot<BooleanSlot>(object, column.offset).get(),
                             [&](bool value) { statement.bind(parameter, std::int64_t{value}); });
                break;
            case SlotKind::integer32:
            case SlotKind::integer64:
                bindOptional(slot<IntegerSlot>(object, column.offset).get(),
                             [&](std::int64_t value) { statement.bind(parameter, value); });
                break;
            case SlotKind::decimal:
                bindOptional(slot<DecimalSlot>(object, column.offset).get(), [&](DecimalSeconds value) {
                    statement.bind(parameter, std::int64_t{value.count()});
                });
                break;
            case SlotKind::real:
                bindOptional(slot<RealSlot>(object, column.offset).get(),
                             [&](double value) { statement.bind(parameter, value); });
                break;
            case SlotKind::date:
                bindOptional(slot<DateSlot>(object, column.offset).get(),
                             [&](Date value) { statement.bind(parameter, secondsSinceEpoch(value)); });
                break;
            case SlotKind::text:
                bindOptional(slot<TextSlot>(object, column.offset).get(),
                             [&](std::string_view value) { statement.bind(parameter, value); });
                break;
            case SlotKind::data:
                bindOptional(slot<TextSlot>(object, column.offset).get(), [&](std::string_view value) {
                    sqlite3_bind_blob64(statement.handle(), parameter, value.data(), value.size(),
                                        SQLITE_STATIC);
                });
                break;
            case SlotKind::toOne: {
                const ManagedObject* target = slot<ToOneSlot>(object, column.offset).get();
                if (target && target->isUsable())
                    statement.bind(parameter, target->key_);
                else
                    statement.bindNull(parameter);
                break;
            }
            case SlotKind::toMany:
                break;
        }
        ++parameter;
    }
}

}  // namespace orvane
