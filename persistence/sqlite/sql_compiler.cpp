#include "persistence/sqlite/sql_compiler.h"

#include <algorithm>

#include "persistence/sqlite/comparison_writer.h"
#include "persistence/sqlite/schema.h"

namespace orvane::sqlite {
namespace {

/// SQLite takes 32766 place holders; those who run the query add a few of their own.
constexpr std::size_t mostBindings = 32000;

/// SQLite's parser has room for a hundred open pieces of an expression; a level of parentheses takes up to
/// three.
constexpr int mostNesting = 25;

int nesting(std::string_view sql) {
    int depth = 0;
    int deepest = 0;
    for (const char c : sql) {
        if (c == '(') deepest = std::max(deepest, ++depth);
        if (c == ')') --depth;
    }
    return deepest;
}

Column::Kind kindOf(AttributeType type) {
    switch (type) {
        case AttributeType::boolean:
        case AttributeType::integer32:
        case AttributeType::integer64:
            return Column::Kind::integer;
        case AttributeType::real:
            return Column::Kind::real;
        case AttributeType::decimal:
            return Column::Kind::decimal;
        case AttributeType::date:
            return Column::Kind::date;
        case AttributeType::text:
            return Column::Kind::text;
        case AttributeType::data:
            break;
    }
    return Column::Kind::data;
}

/// Compiles one query. Parts without a column make the operations return none.
class QueryCompiler {
  public:
    QueryCompiler(const ManagedObjectModel& model, const EntityDescription& entity)
        : model_(model), entity_(entity) {}

    std::optional<CompiledQuery> compile(const PredicateNode* predicate, std::span<const SortOrder> orders) {
        if (predicate) {
            auto where = condition(*predicate, &bounds_);
            if (!where || nesting(*where) > mostNesting) return std::nullopt;
            if (*where != everyRow) query_.where = std::move(*where);
        }
        if (!addOrders(orders) || query_.bindings.size() > mostBindings) return std::nullopt;
        if (!query_.where.empty() && query_.where != noRow) {
            useIntervals();
            choosePieceColumn();
        }
        return std::move(query_);
    }

  private:
    /// With `bounds`, the condition must hold for every row of the answer, and the ranges it sets are noted
    /// there.
    std::optional<std::string> condition(const PredicateNode& node, std::vector<Bound>* bounds) {
        const std::size_t before = query_.bindings.size();
        auto result = uncheckedCondition(node, bounds);
        // Nothing may be bound that the text does not name: place holders that follow it would be miscounted.
        if (result && (*result == everyRow || *result == noRow)) query_.bindings.resize(before);
        return result;
    }

    std::optional<std::string> uncheckedCondition(const PredicateNode& node, std::vector<Bound>* bounds) {
        switch (node.kind) {
            case PredicateNode::Kind::always:
                return std::string(everyRow);
            case PredicateNode::Kind::never:
                return std::string(noRow);
            case PredicateNode::Kind::conjunction: {
                auto terms = conditions(node, bounds);
                return terms ? std::optional(conjunction(std::move(*terms))) : std::nullopt;
            }
            case PredicateNode::Kind::disjunction: {
                auto terms = conditions(node, nullptr);
                return terms ? std::optional(disjunction(std::move(*terms))) : std::nullopt;
            }
            case PredicateNode::Kind::negation: {
                const auto child = condition(node.children.front(), nullptr);
                return child ? std::optional(negated(*child)) : std::nullopt;
            }
            case PredicateNode::Kind::comparison:
                break;
        }
        const auto left = side(node.left);
        const auto right = side(node.right);
        if (!left || !right) return std::nullopt;
        return writer_.write(node, *left, *right, bounds);
    }

    std::optional<std::vector<std::string>> conditions(const PredicateNode& node,
                                                       std::vector<Bound>* bounds) {
        std::vector<std::string> terms;
        for (const PredicateNode& child : node.children) {
            auto term = condition(child, bounds);
            if (!term) return std::nullopt;
            terms.push_back(std::move(*term));
        }
        return terms;
    }

    std::optional<Side> side(const PredicateOperand& operand) {
        switch (operand.kind) {
            case PredicateOperand::Kind::constant:
                return Side{&operand.constant};
            case PredicateOperand::Kind::self:
                return Side{Column{"t0.\"_id\"", Column::Kind::object, &entity_, {}}};
            case PredicateOperand::Kind::keyPath: {
                auto found = column(operand.keyPath);
                return found ? std::optional(Side{std::move(*found)}) : std::nullopt;
            }
            case PredicateOperand::Kind::list:
                break;
        }
        std::vector<Side> elements;
        for (const PredicateOperand& element : operand.list) {
            auto elementSide = side(element);
            if (!elementSide) return std::nullopt;
            elements.push_back(std::move(*elementSide));
        }
        return Side{std::move(elements)};
    }

    /// The column that a key path leads to through to-one relationships.
    std::optional<Column> column(std::string_view keyPath) {
        const EntityDescription* entity = &entity_;
        std::string alias = "t0";
        while (true) {
            const std::size_t stop = keyPath.find('.');
            const std::string_view key = keyPath.substr(0, stop);
            const std::string sql = alias + "." + sqlite::quoted(key);
            const std::string ownName = alias == "t0" ? std::string(key) : std::string();
            const RelationshipDescription* relationship = entity->relationship(key);
            if (relationship && relationship->toMany) return std::nullopt;
            if (stop == std::string_view::npos) {
                if (relationship)
                    return Column{sql, Column::Kind::object, &destinationOf(model_, *relationship), ownName};
                const AttributeDescription* attribute = entity->attribute(key);
                if (!attribute) return std::nullopt;
                return Column{sql, kindOf(attribute->type), nullptr, ownName};
            }
            if (!relationship) return std::nullopt;
            entity = &destinationOf(model_, *relationship);
            alias = join(sql, *entity);
            keyPath.remove_prefix(stop + 1);
        }
    }

    /// The alias of the table that a column of keys leads to.
    std::string join(const std::string& keyColumn, const EntityDescription& destination) {
        auto found = std::find(joinedColumns_.begin(), joinedColumns_.end(), keyColumn);
        std::string alias = "t" + std::to_string(found - joinedColumns_.begin() + 1);
        if (found != joinedColumns_.end()) return alias;
        joinedColumns_.push_back(keyColumn);
        query_.joins += " LEFT JOIN " + sqlite::quoted(destination.name) + " AS " + alias + " ON " + alias +
                        ".\"_id\" = " + keyColumn;
        query_.otherEntities.insert(&destination);
        return alias;
    }

    bool addOrders(std::span<const SortOrder> orders) {
        if (orders.empty()) return true;
        for (const SortOrder& order : orders) {
            const auto key = column(order.keyPath);
            if (!key || key->kind == Column::Kind::object) return false;
            query_.orderBy += key->sql + (order.ascending ? ", " : " DESC, ");
        }
        // Sorting in memory keeps the places of equal ones, which are those of the table.
        query_.orderBy += "t0.\"_id\"";
        return true;
    }

    const Bound* bound(std::string_view column, bool (Bound::*isSuch)() const) const {
        for (const Bound& each : bounds_)
            if (each.column == column && (each.*isSuch)()) return &each;
        return nullptr;
    }

    /// Where the start is bounded from below and the end from above, the start of a row that is not inverted
    /// is bounded from both sides, and an index on it need not be read to its end. Inverted rows are told
    /// apart.
    void useIntervals() {
        for (const IntervalDescription& interval : entity_.intervals) {
            const Bound* end = bound(interval.end, &Bound::isUpper);
            if (!end || !bound(interval.start, &Bound::isLower) || bound(interval.start, &Bound::isUpper))
                continue;
            const std::string startSql = "t0." + sqlite::quoted(interval.start);
            const std::string endSql = "t0." + sqlite::quoted(interval.end);
            const std::string comparison = end->comparison == "=" ? "<=" : end->comparison;
            query_.alternativeWhere = query_.where + " AND " + endSql + " < " + startSql;
            query_.alternativeFrom = "INDEXED BY " + sqlite::quoted(intervalIndexName(entity_, interval));
            query_.where += " AND " + startSql + " " + comparison + " " + end->parameter() + " AND " +
                            endSql + " >= " + startSql;
            bounds_.push_back({interval.start, comparison, end->place});
            return;
        }
    }

    /// A column of reals with a range, which an index gives in order: directly, or behind columns of which
    /// the condition wants one value.
    void choosePieceColumn() {
        for (const IndexDescription& index : entity_.indexes) {
            const std::string& last = index.properties.back();
            const AttributeDescription* attribute = entity_.attribute(last);
            if (!attribute ||
                (attribute->type != AttributeType::date && attribute->type != AttributeType::real))
                continue;
            const bool isOrdered = std::all_of(
                index.properties.begin(), index.properties.end() - 1, [&](const std::string& property) {
                    return std::any_of(bounds_.begin(), bounds_.end(), [&](const Bound& each) {
                        return each.column == property && each.comparison == "=";
                    });
                });
            if (!isOrdered || !(bound(last, &Bound::isLower) || bound(last, &Bound::isUpper))) continue;
            const bool isClosed = bound(last, &Bound::isLower) && bound(last, &Bound::isUpper);
            if (!isClosed && !query_.pieceColumn.empty()) continue;
            query_.pieceColumn = last;
            const Bound* lower = bound(last, &Bound::isLower);
            query_.pieceLowerParameter = lower ? lower->place : 0;
            query_.pieceLowerIsOpen = lower && lower->comparison == ">";
            if (isClosed) return;
        }
    }

    const ManagedObjectModel& model_;
    const EntityDescription& entity_;
    CompiledQuery query_;
    ComparisonWriter writer_{query_.bindings};
    std::vector<Bound> bounds_;
    std::vector<std::string> joinedColumns_;
};

}  // namespace

std::optional<CompiledQuery> compileQuery(const ManagedObjectModel& model, const EntityDescription& entity,
                                          const PredicateNode* predicate, std::span<const SortOrder> orders) {
    return QueryCompiler(model, entity).compile(predicate, orders);
}

}  // namespace orvane::sqlite
