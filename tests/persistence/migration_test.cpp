#include <gtest/gtest.h>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/schema.h"
#include "tests/persistence/small_disk.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

/// A model in four parts, each of which a new version can replace.
struct ModelParts {
    std::string person = R"({"name": "name", "type": "text"}, {"name": "flag", "type": "boolean"},
                            {"name": "count", "type": "integer32"})";
    std::string personRelationships =
        R"({"name": "pets", "destination": "Pet", "inverse": "owner", "toMany": true},
           {"name": "desk", "destination": "Desk", "inverse": "user"})";
    std::string pet = R"("attributes": [{"name": "kind", "type": "text"}, {"name": "born", "type": "date"},
                                        {"name": "died", "type": "date"}],
                         "relationships": [{"name": "owner", "destination": "Person", "inverse": "pets"}],
                         "indexes": [["owner", "born"], ["kind"]], "intervals": [{"start": "born", "end": "died"}])";
    std::string others = R"({"name": "Desk", "relationships": [
                            {"name": "user", "destination": "Person", "inverse": "desk"}]})";
};

std::shared_ptr<const ManagedObjectModel> modelOf(const ModelParts& parts, int version,
                                                  const std::string& person = R"("name": "Person")",
                                                  const std::string& pet = R"("name": "Pet")") {
    Error error;
    auto model = ManagedObjectModel::modelWithText(
        R"({"name": "Zoo", "version": )" + std::to_string(version) + R"(, "entities": [{)" + person +
            R"(, "attributes": [)" + parts.person + R"(], "relationships": [)" + parts.personRelationships +
            "]}, {" + pet + ", " + parts.pet + "}" + (parts.others.empty() ? "" : ", ") + parts.others + "]}",
        "zoo", &error);
    EXPECT_TRUE(model) << error.localizedDescription();
    return model;
}

class Migration : public testing::Test {
  protected:
    Migration() {
        options_.open.create = true;
        options_.migrateAutomatically = true;
        EXPECT_TRUE(open(*modelOf({}, 1))) << error_.localizedDescription();
        runSQL(file_, R"(
            INSERT INTO Person (_id, name, flag, count, desk) VALUES (1, 'Ada', 1, 7, 5), (2, NULL, NULL, NULL, NULL);
            INSERT INTO Pet (_id, kind, born, died, owner) VALUES (1, 'cat', 1.5, 9.25, 1), (3, 'owl', 2, NULL, NULL);
            INSERT INTO Desk (_id, user) VALUES (5, 1);
            INSERT INTO _keys VALUES ('Person', 12), ('Pet', 3), ('Desk', 5))");
    }

    bool open(const ManagedObjectModel& model) {
        error_ = Error();
        const auto store = sqlite::prepareStore(file_, model, options_, &error_);
        return store.has_value();
    }

    /// Brings the file to the new version, which must leave a sound file with just the indexes of the model,
    /// and returns what the query yields then.
    std::string migrated(const std::shared_ptr<const ManagedObjectModel>& model, const std::string& query) {
        if (!open(*model)) return error_.localizedDescription() + " " + error_.localizedFailureReason();
        options_.migrateAutomatically = false;
        EXPECT_TRUE(open(*model)) << "it is not up to date: " << error_.localizedDescription();
        options_.migrateAutomatically = true;
        std::string indexes;
        for (const EntityDescription& entity : model->entities())
            for (const sqlite::IndexText& index : sqlite::indexesOf(entity))
                indexes += (indexes.empty() ? "" : " ") + index.statement;
        EXPECT_EQ(runSQL(file_, "SELECT sql FROM sqlite_schema WHERE sql LIKE 'CREATE INDEX%' ORDER BY rowid")
                      .size(),
                  indexes.size());
        EXPECT_EQ(runSQL(file_, "PRAGMA integrity_check"), "ok");
        EXPECT_EQ(runSQL(file_, "SELECT value FROM _metadata WHERE name = 'model'"), model->text());
        return runSQL(file_, query);
    }

    void expectImpossible(const ModelParts& parts, const std::string& said) {
        const std::string before = bytesOf(file_);
        EXPECT_FALSE(open(*modelOf(parts, 2))) << said;
        EXPECT_EQ(error_.code(), migrationImpossibleError) << error_.localizedDescription();
        EXPECT_NE(error_.localizedFailureReason().find(said), std::string::npos)
            << error_.localizedFailureReason();
        EXPECT_TRUE(bytesOf(file_) == before) << said;
    }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_ / "Zoo.db";
    sqlite::PrepareOptions options_;
    Error error_;
};

TEST_F(Migration, HappensOnlyWhenAllowed) {
    const std::string before = bytesOf(file_);
    options_.migrateAutomatically = false;
    ModelParts parts;
    parts.person += R"(, {"name": "age", "type": "real"})";
    EXPECT_FALSE(open(*modelOf(parts, 2)));
    EXPECT_EQ(error_.code(), migrationNotAllowedError);
    EXPECT_TRUE(bytesOf(file_) == before);
}

TEST_F(Migration, AttributesAreAddedAndRemoved) {
    ModelParts parts;
    parts.person = R"({"name": "name", "type": "text"}, {"name": "age", "type": "real", "default": 1.5},
                      {"name": "rank", "type": "integer64", "optional": false, "default": 4},
                      {"name": "paid", "type": "decimal", "optional": false, "default": "0.500000"},
                      {"name": "seal", "type": "data", "optional": false, "default": ""})";
    EXPECT_EQ(migrated(modelOf(parts, 2),
                       "SELECT *, typeof(seal) FROM (SELECT _id, name, desk, age, rank, paid, seal FROM "
                       "Person) ORDER BY _id"),
              "1|Ada|5|-|4|500000||blob 2|-|-|-|4|500000||blob");
    EXPECT_EQ(
        runSQL(file_, "SELECT count(*) FROM pragma_table_info('Person') WHERE name IN ('flag', 'count')"),
        "0");
}

TEST_F(Migration, AttributesWidenToTypesThatHoldAllTheirValues) {
    ModelParts parts;
    parts.person = R"({"name": "name", "type": "text"}, {"name": "flag", "type": "integer32"},
                      {"name": "count", "type": "real"})";
    EXPECT_EQ(migrated(modelOf(parts, 2),
                       "SELECT flag, typeof(flag), count, typeof(count) FROM Person ORDER BY _id"),
              "1|integer|7.0|real -|null|-|null");
    parts.person = R"({"name": "name", "type": "text"}, {"name": "flag", "type": "decimal"},
                      {"name": "count", "type": "real"})";
    EXPECT_EQ(migrated(modelOf(parts, 3), "SELECT flag, typeof(flag) FROM Person ORDER BY _id"),
              "1000000|integer -|null");
}

TEST_F(Migration, AttributesBecomeRequiredAndOptional) {
    ModelParts parts;
    parts.person = R"({"name": "name", "type": "text", "optional": false, "default": "nobody"},
                      {"name": "flag", "type": "boolean", "optional": false, "default": false},
                      {"name": "count", "type": "real", "optional": false, "default": 0.5})";
    EXPECT_EQ(migrated(modelOf(parts, 2), "SELECT name, flag, count FROM Person ORDER BY _id"),
              "Ada|1|7.0 nobody|0|0.5");
    runSQL(file_, "UPDATE _metadata SET value = replace(value, '\"integer32\"', '\"real\"')");
    parts.person = R"({"name": "name", "type": "text"}, {"name": "flag", "type": "boolean"},
                      {"name": "count", "type": "real"})";
    EXPECT_EQ(migrated(modelOf(parts, 3), "SELECT name, flag, count FROM Person ORDER BY _id"),
              "Ada|1|7.0 nobody|0|0.5");
}

TEST_F(Migration, PropertiesAreRenamedByTheirIdentifierAndMayChangeNames) {
    ModelParts parts;
    parts.person = R"({"name": "title", "type": "text", "renamedFrom": "name"},
                      {"name": "count", "type": "boolean", "renamedFrom": "flag"},
                      {"name": "Flag", "type": "integer32", "renamedFrom": "count"})";
    parts.personRelationships =
        R"({"name": "animals", "destination": "Pet", "inverse": "keeper", "toMany": true, "renamedFrom": "pets"},
           {"name": "desk", "destination": "Desk", "inverse": "user"})";
    parts.pet =
        R"("attributes": [{"name": "kind", "type": "text"}, {"name": "died", "type": "date", "renamedFrom": "born"},
                                  {"name": "born", "type": "date", "renamedFrom": "died"}],
                   "relationships": [{"name": "keeper", "destination": "Person", "inverse": "animals",
                                      "renamedFrom": "owner"}],
                   "indexes": [["keeper", "born"]], "intervals": [{"start": "born", "end": "died"}])";
    EXPECT_EQ(migrated(modelOf(parts, 2),
                       "SELECT title, count, Flag FROM Person ORDER BY _id; "
                       "SELECT kind, died, born, keeper FROM Pet ORDER BY _id"),
              "Ada|1|7 -|-|- cat|1.5|9.25|1 owl|2.0|-|-");
    // A version that keeps the identifiers moves nothing again, and one may start from the name of the
    // version before.
    EXPECT_EQ(migrated(modelOf(parts, 3), "SELECT title, count, Flag FROM Person ORDER BY _id"),
              "Ada|1|7 -|-|-");
    parts.person = R"({"name": "name", "type": "text", "renamedFrom": "title"},
                      {"name": "count", "type": "boolean", "renamedFrom": "flag"},
                      {"name": "flag", "type": "integer32", "renamedFrom": "count"})";
    EXPECT_EQ(migrated(modelOf(parts, 4), "SELECT name, count, flag FROM Person ORDER BY _id"),
              "Ada|1|7 -|-|-");
}

TEST_F(Migration, EntitiesAreAddedRemovedAndRenamedWithTheKeysTheyGaveOut) {
    ModelParts parts;
    parts.personRelationships =
        R"({"name": "pets", "destination": "Person", "inverse": "owner", "toMany": true})";
    parts.pet = R"("attributes": [{"name": "name", "type": "text"}],
                   "relationships": [{"name": "owner", "destination": "Pet", "inverse": "pets"}])";
    parts.others =
        R"({"name": "Room", "attributes": [{"name": "size", "type": "real"}], "indexes": [["size"]]})";
    // Person and Pet change names with each other, Desk goes, Room comes.
    ModelParts swapped = parts;
    swapped.person = R"({"name": "kind", "type": "text"})";
    swapped.personRelationships = R"({"name": "owner", "destination": "Pet", "inverse": "pets"})";
    swapped.pet = R"("attributes": [{"name": "name", "type": "text"}], "relationships": [
                     {"name": "pets", "destination": "Person", "inverse": "owner", "toMany": true}])";
    EXPECT_EQ(
        migrated(modelOf(swapped, 2, R"("name": "Person", "renamedFrom": "Pet")",
                         R"("name": "Pet", "renamedFrom": "Person")"),
                 "SELECT _id, kind, owner FROM Person ORDER BY _id; SELECT _id, name FROM Pet ORDER BY _id; "
                 "SELECT count(*) FROM Room; SELECT * FROM _keys ORDER BY entity"),
        "1|cat|1 3|owl|- 1|Ada 2|- 0 Desk|5 Person|3 Pet|12");
    EXPECT_EQ(runSQL(file_, "SELECT count(*) FROM sqlite_schema WHERE name = 'Desk'"), "0");
    // An entity that takes the name of one removed before gives out none of its keys again.
    swapped.others =
        R"({"name": "Desk", "renamedFrom": "Room", "attributes": [{"name": "size", "type": "real"}]})";
    EXPECT_EQ(migrated(modelOf(swapped, 3, R"("name": "Person", "renamedFrom": "Pet")",
                               R"("name": "Pet", "renamedFrom": "Person")"),
                       "SELECT count(*) FROM Desk; SELECT * FROM _keys ORDER BY entity"),
              "0 Desk|5 Person|3 Pet|12");
}

TEST_F(Migration, RelationshipsAreAddedRemovedAndOpenedToMany) {
    ModelParts parts;
    parts.personRelationships =
        R"({"name": "desk", "destination": "Desk", "inverse": "users"},
           {"name": "boss", "destination": "Person", "inverse": "staff"},
           {"name": "staff", "destination": "Person", "inverse": "boss", "toMany": true})";
    parts.pet = R"("attributes": [{"name": "kind", "type": "text"}, {"name": "born", "type": "date"},
                                  {"name": "died", "type": "date"}], "indexes": [["kind"], ["born"]])";
    parts.others =
        R"({"name": "Desk", "relationships": [{"name": "users", "destination": "Person", "inverse": "desk",
                                                          "toMany": true, "renamedFrom": "user"}]})";
    EXPECT_EQ(migrated(modelOf(parts, 2),
                       "SELECT _id, desk, boss FROM Person ORDER BY _id; SELECT * FROM Desk; "
                       "SELECT kind, born FROM Pet ORDER BY _id"),
              "1|5|- 2|-|- 5 cat|1.5 owl|2.0");
}

TEST_F(Migration, WhatCannotBeInferredIsRefusedWithItsPlace) {
    const auto withPerson = [](const std::string& attribute) {
        ModelParts parts;
        parts.person = attribute;
        return parts;
    };
    expectImpossible(withPerson(R"({"name": "rank", "type": "text", "optional": false})"), "Person.rank");
    expectImpossible(withPerson(R"({"name": "name", "type": "text", "optional": false})"), "Person.name");
    expectImpossible(withPerson(R"({"name": "name", "type": "integer32"})"), "text");
    expectImpossible(withPerson(R"({"name": "count", "type": "boolean"})"), "integer32");
    expectImpossible(withPerson(R"({"name": "flag", "type": "date"})"), "boolean");

    ModelParts parts;
    parts.personRelationships =
        R"({"name": "pets", "destination": "Pet", "inverse": "owner"},
           {"name": "desk", "destination": "Desk", "inverse": "user"})";
    expectImpossible(parts, "Person.pets");
    parts = {};
    parts.personRelationships =
        R"({"name": "pets", "destination": "Pet", "inverse": "owner", "toMany": true},
           {"name": "desk", "destination": "Desk", "inverse": "user", "optional": false})";
    expectImpossible(parts, "Person.desk");
    parts = {};
    parts.personRelationships =
        R"({"name": "pets", "destination": "Pet", "inverse": "owner", "toMany": true},
           {"name": "desk", "destination": "Desk", "inverse": "user"},
           {"name": "boss", "destination": "Person", "inverse": "staff", "optional": false},
           {"name": "staff", "destination": "Person", "inverse": "boss", "toMany": true})";
    expectImpossible(parts, "Person.boss");
    parts = {};
    parts.personRelationships =
        R"({"name": "desk", "destination": "Pet", "inverse": "owner"},
           {"name": "pets", "destination": "Desk", "inverse": "user", "toMany": true})";
    parts.pet = R"("relationships": [{"name": "owner", "destination": "Person", "inverse": "desk"}])";
    parts.others =
        R"({"name": "Desk", "relationships": [{"name": "user", "destination": "Person", "inverse": "pets"}]})";
    expectImpossible(parts, "leads elsewhere");
}

TEST_F(Migration, WhatOthersAddedStaysAndMayStandAgainstAChange) {
    runSQL(file_,
           "ALTER TABLE Person ADD COLUMN shade TEXT; UPDATE Person SET shade = 'red'; "
           "CREATE INDEX theirs ON Pet (born); CREATE VIEW Names AS SELECT name, shade FROM Person");
    ModelParts parts;
    parts.person = R"({"name": "flag", "type": "boolean"}, {"name": "count", "type": "integer32"})";
    expectImpossible(parts, "Names");
    parts.person = R"({"name": "name", "type": "text"}, {"name": "shade", "type": "text"})";
    expectImpossible(parts, "shade");
    parts.person = R"({"name": "title", "type": "text", "renamedFrom": "name"})";
    ASSERT_TRUE(open(*modelOf(parts, 2))) << error_.localizedFailureReason();
    EXPECT_EQ(runSQL(file_, "SELECT * FROM Names; SELECT count(*) FROM sqlite_schema WHERE name = 'theirs'"),
              "Ada|red -|red 1");
}

TEST_F(Migration, ADiskThatFillsUpAnywhereLeavesTheOldFile) {
    runSQL(file_, R"(WITH RECURSIVE n(i) AS (VALUES (10) UNION ALL SELECT i + 1 FROM n WHERE i < 400)
                     INSERT INTO Pet SELECT i, 'kind ' || i, i, i, 1 FROM n)");
    const std::string before = bytesOf(file_);
    ModelParts parts;
    parts.person = R"({"name": "name", "type": "text", "optional": false, "default": "nobody"},
                      {"name": "count", "type": "real"})";
    parts.pet =
        R"("attributes": [{"name": "sort", "type": "text", "renamedFrom": "kind"}, {"name": "born", "type": "date"},
                                  {"name": "weight", "type": "real", "optional": false, "default": 1}],
                   "relationships": [{"name": "owner", "destination": "Person", "inverse": "pets"}],
                   "indexes": [["owner", "sort"], ["sort", "born"]])";
    options_.open.fileSystem = SmallDisk::name;
    int refused = 0;
    for (int room = 0;; room += 4096) {
        const SmallDisk disk(room);
        if (open(*modelOf(parts, 2))) break;
        ++refused;
        ASSERT_EQ(error_.code(), storeFullError) << room << ": " << error_.localizedFailureReason();
        ASSERT_TRUE(bytesOf(file_) == before) << room;
    }
    EXPECT_GT(refused, 5);
    EXPECT_EQ(runSQL(file_, "SELECT count(*), sum(weight), max(sort) FROM Pet; PRAGMA integrity_check"),
              "393|393.0|owl ok");
}

}  // namespace
}  // namespace orvane::test
