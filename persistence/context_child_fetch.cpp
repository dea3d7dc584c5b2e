#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>

#include "persistence/context_state.h"
#include "persistence/query_run.h"
#include "persistence/text_batch.h"

namespace orvane {

namespace {

using sqlite::CompiledQuery;

/// Rows read under one read lock. The parent, which saves on another thread, waits no longer than for these.
constexpr std::size_t pieceRows = 256;

/// Reads the answer of a query in pieces, each under a read lock of its own: by the column of which the query
/// bounds the range, where an index gives it in order, else by key.
class PieceReader {
  public:
    /// `select` asks for the key first, and then for the part's columns.
    PieceReader(sqlite::Database& file, const EntityTable& table, RowPart part, std::string select)
        : file_(file), table_(table), part_(part), select_(std::move(select)) {}

    /// `makeRoom` is called before each piece, while no lock is held, and `take` with each row.
    template <class MakeRoom, class Take>
    bool read(CompiledQuery query, QueryBranch branch, Error* error, MakeRoom&& makeRoom, Take&& take) const {
        const bool byKey = branch == QueryBranch::alternative || query.pieceColumn.empty();
        const std::string key = "t0.\"_id\"";
        const std::string place = byKey ? key : "t0." + sqlite::quoted(query.pieceColumn);
        const std::string order = byKey ? key : place + ", " + key;
        const std::string body = tail(query, branch);
        const std::string further = (body.find(" WHERE ") == std::string::npos ? " WHERE (" : " AND (") +
                                    order + (byKey ? ") > (?)" : ") > (?, ?)");
        const std::string end = " ORDER BY " + order + " LIMIT ?";
        const int placeColumn = byKey ? 0 : columnOf(query.pieceColumn);
        std::vector<Value> values;
        for (bool first = true;; first = false) {
            std::size_t rows = 0;
            std::int64_t lastKey = 0;
            double lastPlace = 0;
            values.emplace_back(std::int64_t{pieceRows});
            makeRoom();
            if (!runQuery(file_, select_ + body + (first ? "" : further) + end, query, values, error,
                          [&](const sqlite::Statement& row) {
                              take(row);
                              lastKey = row.integer(0);
                              if (!byKey) lastPlace = row.real(placeColumn);
                              ++rows;
                          }))
                return false;
            if (rows < pieceRows) return true;
            values.clear();
            if (!byKey) {
                values.emplace_back(lastPlace);
                moveLowerBound(query, lastPlace);
            }
            values.emplace_back(lastKey);
        }
    }

  private:
    /// The range of what is left begins at the last row read. Otherwise SQLite might step through all pieces
    /// before it, from the beginning of the range.
    static void moveLowerBound(CompiledQuery& query, double place) {
        if (query.pieceLowerParameter == 0) return;
        constexpr double lowest = -std::numeric_limits<double>::infinity();
        query.bindings[static_cast<std::size_t>(query.pieceLowerParameter) - 1] =
            query.pieceLowerIsOpen ? std::nextafter(place, lowest) : place;
    }

    int columnOf(const std::string& name) const {
        const auto& columns = table_.columns(part_);
        const auto found = std::find_if(columns.begin(), columns.end(), [&](const StoredColumn& column) {
            return table_.slots()[column.property].name == name;
        });
        return static_cast<int>(found - columns.begin()) + 1;
    }

    sqlite::Database& file_;
    const EntityTable& table_;
    RowPart part_;
    std::string select_;
};

}  // namespace

std::optional<std::vector<Ref<ManagedObject>>> ContextState::fetchAsChild(const FetchRequest& request,
                                                                          Error* error) {
    const EntityDescription& entity = entityNamed(request.entityName);
    EntityTable& entityTable = table(entity);
    sqlite::Database* file = database(error);
    if (!file) return std::nullopt;

    std::optional<CompiledQuery> query = compile(request, entity);
    if (query && !query->otherEntities.empty()) query.reset();
    const bool judgeInMemory = !query;
    if (!query) query.emplace();

    // Rows that the parent saves between the pieces are noted, and judged again at the end.
    const ParentChanges::Reader reader(*fromParent_);
    const RowPart part = rowPart(request, judgeInMemory);
    std::vector<Ref<ManagedObject>> result;
    {
        TextBatch texts(storage_->texts());
        const PieceReader pieces(*file, entityTable, part, columnSelect(entity.index, part));
        // A long answer takes milliseconds to move.
        const auto makeRoom = [&] {
            if (result.capacity() - result.size() < pieceRows)
                result.reserve(std::max(result.capacity() * 2, result.size() + pieceRows));
        };
        const auto take = [&](const sqlite::Statement& row) {
            ManagedObject& object = entityTable.findOrCreate(row.integer(0));
            result.emplace_back(&object);
            if (!EntityTable::isFilled(object, part)) entityTable.fill(object, row, part, texts);
        };
        if (!query->alternativeWhere.empty() &&
            !pieces.read(*query, QueryBranch::alternative, error, makeRoom, take))
            return std::nullopt;
        if (!pieces.read(*query, QueryBranch::ordinary, error, makeRoom, take)) return std::nullopt;
    }

    const std::vector<std::int64_t> candidates = changedMeanwhile(reader, entity.index);
    const std::unordered_set<std::int64_t> again(candidates.begin(), candidates.end());
    const auto matches = [&](const ManagedObject& object) {
        return !object.isDeleted() && (!request.predicate || request.predicate->evaluate(object));
    };
    if (!again.empty())
        std::erase_if(result, [&](const auto& object) { return again.contains(object->key_); });
    if (judgeInMemory) std::erase_if(result, [&](const auto& object) { return !matches(*object); });
    for (const std::int64_t key : candidates) {
        const Ref<ManagedObject> object(&entityTable.findOrCreate(key));
        if (!object->hasChanges()) {
            turnIntoFault(*object);
            if (!fire(*object)) continue;
        }
        if (matches(*object)) result.push_back(object);
    }
    sortUsing(result, request.sortOrders);
    cutToLimits(result, request);
    return result;
}

std::vector<std::int64_t> ContextState::changedMeanwhile(const ParentChanges::Reader& reader,
                                                         std::size_t entityIndex) const {
    std::vector<std::int64_t> keys;
    {
        const std::lock_guard lock(fromParent_->mutex);
        for (const auto& [key, snapshot] : fromParent_->unsaved[entityIndex]) keys.push_back(key);
        for (const std::int64_t key : fromParent_->savedSince(reader, entityIndex)) keys.push_back(key);
    }
    for (const Ref<ManagedObject>& object : listed_)
        if (object->entity().index == entityIndex && object->hasChanges()) keys.push_back(object->key_);
    // Rows by key, then new objects in the order of their insertion (temporary keys count downwards).
    std::sort(keys.begin(), keys.end(), [](std::int64_t left, std::int64_t right) {
        return (left > 0) != (right > 0) ? left > 0 : (left > 0 ? left < right : left > right);
    });
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

}  // namespace orvane
