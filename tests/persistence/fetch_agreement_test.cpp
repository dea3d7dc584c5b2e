// Fetches answered by the file give the answers that the same predicates give in memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include "persistence/managed_object_context.h"
#include "persistence/sqlite/sql_compiler.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

using namespace std::literals;
using Objects = std::vector<Ref<ManagedObject>>;

constexpr const char* modelText = R"({"name": "Agreement", "version": 1, "entities": [
    {"name": "Item",
     "attributes": [{"name": "flag", "type": "boolean"}, {"name": "small", "type": "integer32"},
                    {"name": "big", "type": "integer64"}, {"name": "ratio", "type": "real"},
                    {"name": "span", "type": "decimal"}, {"name": "start", "type": "date"},
                    {"name": "stop", "type": "date"}, {"name": "title", "type": "text"},
                    {"name": "note", "type": "text"}, {"name": "bytes", "type": "data"}],
     "relationships": [{"name": "owner", "destination": "Owner", "inverse": "items"},
                       {"name": "peer", "destination": "Item", "inverse": "peers"},
                       {"name": "peers", "destination": "Item", "inverse": "peer", "toMany": true},
                       {"name": "bestOf", "destination": "Owner", "inverse": "best", "toMany": true}],
     "indexes": [["start"], ["owner", "stop"], ["title"]], "intervals": [{"start": "start", "end": "stop"}]},
    {"name": "Owner",
     "attributes": [{"name": "name", "type": "text"}, {"name": "rank", "type": "integer32"}],
     "relationships": [{"name": "items", "destination": "Item", "inverse": "owner", "toMany": true},
                       {"name": "best", "destination": "Item", "inverse": "bestOf"}]}]})";

Value date(double seconds) { return dateFromSecondsSinceEpoch(seconds); }
Value microseconds(int count) { return DecimalSeconds(count); }

/// Values of each kind that lie close to one another or are hard to tell apart.
using Pool = std::vector<Value>;
const Pool integers{{}, -1, 0, 1, 2, 3, 0, 1};
const Pool large{{},
                 1,
                 std::int64_t{9007199254740993},
                 std::numeric_limits<std::int64_t>::max(),
                 std::numeric_limits<std::int64_t>::min()};
const Pool reals{
    {},    0.0, -0.0, 0.1, 0.5, 1.0, 1.5, -1e300, 9007199254740992.0, std::numeric_limits<double>::infinity(),
    0x1p63};
const Pool spans{{},
                 microseconds(0),
                 microseconds(500'000),
                 microseconds(1'000'000),
                 microseconds(100'000),
                 microseconds(-1)};
const Pool dates{{}, date(0), date(1), date(1.5), date(2), date(3), date(4)};
const Pool texts{{},  "",  "a",    "A",     "ab",    "aB",  "é",      "e\u0301",
                 "E", "1", "\xff", "a\xff", "a\0b"s, "ab*", "Straße", "STRASSE"};
const Pool datas{{}, Data{}, Data{1}, Data{1, 2}, Data{255}, Data{'a'}};
const Pool booleans{{}, true, false};

class FetchAgreement : public testing::Test {
  protected:
    FetchAgreement() {
        Error error;
        model_ = ManagedObjectModel::modelWithText(modelText, "test", &error);
        EXPECT_TRUE(model_) << error.localizedDescription();
        auto coordinator =
            std::make_shared<PersistentStoreCoordinator>(model_, std::vector<const EntityClass*>());
        EXPECT_TRUE(coordinator->addPersistentStore(NSSQLiteStoreType, "", folder_ / "store.db", {}, &error))
            << error.localizedDescription();
        context_.setPersistentStoreCoordinator(coordinator);
        for (int i = 0; i < 120; ++i) items_.push_back(context_.insertNewObject("Item"));
        for (int i = 0; i < 5; ++i) owners_.push_back(context_.insertNewObject("Owner"));
        for (auto& item : items_) fill(*item);
        for (auto& owner : owners_) fill(*owner);
        EXPECT_TRUE(context_.save(&error)) << error.localizedDescription();
        std::sort(items_.begin(), items_.end(), [](const auto& left, const auto& right) {
            return left->objectID().key() < right->objectID().key();
        });
    }

    template <class T>
    const T& oneOf(const std::vector<T>& choices) {
        return choices[random_() % choices.size()];
    }
    bool chance(unsigned percent) { return random_() % 100 < percent; }

    const Pool& pool(std::string_view key) {
        if (key == "flag") return booleans;
        if (key == "small" || key == "rank") return integers;
        if (key == "big") return large;
        if (key == "ratio") return reals;
        if (key == "span") return spans;
        if (key == "start" || key == "stop") return dates;
        return key == "bytes" ? datas : texts;
    }

    void fill(ManagedObject& object) {
        for (const AttributeDescription& attribute : object.entity().attributes)
            object.setValueForKey(oneOf(pool(attribute.name)), attribute.name);
        for (const RelationshipDescription& relationship : object.entity().relationships) {
            if (relationship.toMany || chance(25)) continue;
            object.setValueForKey(oneOf(relationship.destination == "Item" ? items_ : owners_),
                                  relationship.name);
        }
    }

    Value anyValue() {
        static const std::vector<const Pool*> pools{&integers, &large, &reals, &spans,
                                                    &dates,    &texts, &datas, &booleans};
        return chance(15) ? Value(oneOf(chance(50) ? items_ : owners_)) : oneOf(*oneOf(pools));
    }

    /// A value that the key path may well hold; at times one of another class.
    Value valueFor(const std::string& path) {
        const std::string key = path.substr(path.rfind('.') + 1);
        if (chance(12)) return anyValue();
        if (key == "owner") return oneOf(owners_);
        if (key == "peer" || key == "best" || key == "SELF") return oneOf(items_);
        const Pool& values = pool(key);
        const bool isNumber = &values == &integers || &values == &large || &values == &reals ||
                              &values == &spans || &values == &booleans;
        static const std::vector<const Pool*> numbers{&integers, &large, &reals, &spans, &booleans};
        return isNumber ? oneOf(*oneOf(numbers)) : oneOf(values);
    }

    std::string operand(const std::string& like, Pool& arguments) {
        if (chance(20)) return oneOf(paths_);
        arguments.push_back(valueFor(like));
        return "%@";
    }

    std::string comparison(Pool& arguments) {
        static const std::vector<std::string> operators{
            "==",         "==",       "!=",   "<",  "<=",    ">",       ">=",      "CONTAINS",
            "BEGINSWITH", "ENDSWITH", "LIKE", "IN", "IN %@", "BETWEEN", "interval"};
        static const std::vector<std::string> modifiers{"", "", "[c]", "[d]", "[cd]"};
        const std::string& name = oneOf(operators);
        if (name == "interval") {
            for (int i = 0; i < 2; ++i) arguments.push_back(oneOf(dates));
            return chance(50) ? "start >= %@ AND stop < %@" : "start > %@ AND stop <= %@";
        }
        const std::string path = oneOf(paths_);
        if (name == "BETWEEN") {
            const std::string low = operand(path, arguments);
            return path + " BETWEEN {" + low + ", " + operand(path, arguments) + "}";
        }
        const std::string& modifier = oneOf(modifiers);
        if (name == "IN") {
            const std::string first = operand(path, arguments);
            return path + " IN" + modifier + " {" + first + ", " + operand(path, arguments) + "}";
        }
        if (name == "IN %@") {
            Pool list;
            for (auto count = random_() % 5; count > 0; --count) list.push_back(valueFor(path));
            arguments.emplace_back(list);
            return chance(50) ? path + " IN" + modifier + " %@" : "%@ CONTAINS" + modifier + " " + path;
        }
        const std::string left = chance(15) ? operand(path, arguments) : path;
        return left + " " + name + modifier + " " + operand(path, arguments);
    }

    std::string condition(Pool& arguments, int depth) {
        if (depth == 0 || chance(30)) return comparison(arguments);
        const std::string first = condition(arguments, depth - 1);
        if (chance(30)) return "NOT (" + first + ")";
        return "(" + first + (chance(60) ? " AND " : " OR ") + condition(arguments, depth - 1) + ")";
    }

    std::optional<sqlite::CompiledQuery> compiled(const FetchRequest& request) const {
        return sqlite::compileQuery(*model_, *model_->entity("Item"), &request.predicate->root(),
                                    request.sortOrders);
    }

    static std::string keys(const Objects& objects) {
        std::vector<std::int64_t> keys;
        for (const auto& object : objects) keys.push_back(object->objectID().key());
        std::sort(keys.begin(), keys.end());
        std::string text;
        for (const std::int64_t key : keys) text += std::to_string(key) + " ";
        return text;
    }

    testing::AssertionResult agrees(const FetchRequest& request) {
        Error error;
        const auto fetched = context_.executeFetchRequest(request, &error);
        if (!fetched) return testing::AssertionFailure() << error.localizedDescription();
        const std::string expected = keys(request.predicate->filter(items_));
        const std::string found = keys(*fetched);
        // The order of equal ones is open; sorting what is in order leaves every place as it is.
        Objects sorted = *fetched;
        sortUsing(sorted, request.sortOrders);
        if (found == expected && sorted == *fetched &&
            context_.countForFetchRequest(request) == fetched->size())
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << request.predicate->description() << "\nin the file " << found
                                           << "\nin memory   " << expected;
    }

    TemporaryFolder folder_;
    std::shared_ptr<const ManagedObjectModel> model_;
    ManagedObjectContext context_;
    std::minstd_rand random_{5};
    Objects items_;
    Objects owners_;
    const std::vector<std::string> paths_{
        "flag",       "small",      "big",       "ratio",           "span",     "start", "stop",
        "title",      "note",       "bytes",     "owner",           "peer",     "SELF",  "title",
        "owner.name", "owner.rank", "peer.stop", "owner.best.span", "peer.peer"};
};

TEST_F(FetchAgreement, OfRandomPredicates) {
    static const std::vector<std::string> sortKeys{"start", "title", "owner.name", "span",
                                                   "bytes", "ratio", "flag"};
    int inFile = 0;
    int inverted = 0;
    constexpr int rounds = 1000;
    for (int i = 0; i < rounds; ++i) {
        Pool arguments;
        const std::string format = condition(arguments, 3);
        FetchRequest request{"Item", Predicate::withFormat(format, std::span<const Value>(arguments))};
        for (auto count = random_() % 3; count > 0; --count)
            request.sortOrders.push_back({oneOf(sortKeys), chance(50)});
        if (const auto query = compiled(request)) {
            ++inFile;
            inverted += !query->alternativeWhere.empty();
        }
        ASSERT_TRUE(agrees(request));
    }
    EXPECT_GT(inFile, rounds * 8 / 10);
    EXPECT_GT(inverted, rounds / 100);
}

TEST_F(FetchAgreement, WithUnsavedChanges) {
    for (std::size_t i = 0; i < items_.size(); i += 7) fill(*items_[i]);
    fill(*owners_[2]);
    for (int i = 0; i < 300; ++i) {
        Pool arguments;
        const std::string format = condition(arguments, 2);
        ASSERT_TRUE(agrees({"Item", Predicate::withFormat(format, std::span<const Value>(arguments))}));
    }
}

TEST_F(FetchAgreement, OfPredicatesThatStrainTheDatabase) {
    std::string chain = "small == 1";
    for (int i = 0; i < 1000; ++i) chain += " OR title LIKE[c] 'x" + std::to_string(i) + "'";
    EXPECT_TRUE(agrees({"Item", Predicate::withFormat(chain)}));
    for (const int depth : {5, 12, 13, 30, 49}) {
        std::string nested = "small == 1";
        for (int i = 0; i < depth; ++i)
            nested = "NOT (flag == " + std::to_string(i % 2) + " OR " + nested + ")";
        EXPECT_TRUE(agrees({"Item", Predicate::withFormat(nested)})) << depth;
    }
    for (const int count : {1000, 33'000}) {
        Pool list;
        for (int i = 0; i < count; ++i) list.emplace_back(i - 1);
        EXPECT_TRUE(agrees({"Item", Predicate::withFormat("small IN %@", {list})})) << count;
    }
    const auto impossible = "start >= %@ AND stop <= %@ AND title BETWEEN {1, 2}";
    EXPECT_TRUE(agrees({"Item", Predicate::withFormat(impossible, {dates[1], dates[5]})}));
}

TEST_F(FetchAgreement, QueriesAreWrittenSoThatIndexesServe) {
    const auto query = [&](std::string_view format, const Pool& arguments) {
        return *compiled({"Item", Predicate::withFormat(format, std::span<const Value>(arguments))});
    };
    const auto day = query("flag == 0 AND start >= %@ AND stop <= %@", {date(1), date(3)});
    EXPECT_EQ(day.where,
              "(t0.\"flag\" = ?1 AND t0.\"start\" >= ?2 AND t0.\"stop\" <= ?3) AND t0.\"start\" <= ?3 AND "
              "t0.\"stop\" >= t0.\"start\"");
    EXPECT_EQ(day.pieceColumn, "start");
    EXPECT_EQ(day.bindings, (Pool{0, 1.0, 3.0}));
    // A start that is bounded already gains nothing; ends of ranges under OR and NOT are none of the whole.
    EXPECT_EQ(
        query("start >= %@ AND start <= %@ AND stop <= %@", {date(1), date(2), date(3)}).alternativeWhere,
        "");
    EXPECT_EQ(query("start >= %@ AND NOT stop <= %@", {date(1), date(3)}).alternativeWhere, "");
    EXPECT_EQ(query("start >= %@ OR stop <= %@", {date(1), date(3)}).pieceColumn, "");
    EXPECT_EQ(query("owner == %@ AND stop > %@", {owners_[0], date(3)}).pieceColumn, "stop");
    EXPECT_EQ(query("stop > %@", {date(3)}).pieceColumn, "");

    EXPECT_EQ(query("title BEGINSWITH %@", {"a\xff"}).bindings, (Pool{"a\xff", "b"}));
    // Numbers of another type become what the column stores, also where the two have no exact equal.
    EXPECT_EQ(query("span == 0.1", {}).where, "0");
    EXPECT_EQ(query("span > 0.1", {}).bindings, Pool{100'001});
    EXPECT_EQ(query("small < 1.5", {}).bindings, Pool{2});
    EXPECT_EQ(query("ratio == %@", {large[2]}).where, "0");
    EXPECT_FALSE(compiled({"Item", Predicate::withFormat("span == ratio")}));
    EXPECT_FALSE(compiled({"Item", Predicate::withFormat("peers.@count > 0")}));
    EXPECT_FALSE(compiled({"Item", Predicate::withFormat("flag == 0"), {{"owner", true}}}));
}

}  // namespace
}  // namespace orvane::test
