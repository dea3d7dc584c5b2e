#include "persistence/model.h"

#include <gtest/gtest.h>

#include "persistence/persistence_errors.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane::test {
namespace {

/// A small model of which each test spoils one place.
constexpr std::string_view sound = R"({"name": "Shop", "version": 3, "entities": [
    {"name": "Order", "class": "ShopOrder", "attributes": [
        {"name": "number", "type": "integer64", "optional": false, "default": -9007199254740993},
        {"name": "open", "type": "boolean", "default": true, "renamedFrom": "pending"},
        {"name": "from", "type": "date", "default": 0.1},
        {"name": "till", "type": "date"},
        {"name": "price", "type": "decimal", "default": "-0.000001"},
        {"name": "weight", "type": "real", "default": 2},
        {"name": "seal", "type": "data", "default": "00ff"},
        {"name": "size", "type": "integer32", "default": 7},
        {"name": "note", "type": "text", "default": "\"ä\"\n\u0000"}],
     "relationships": [
        {"name": "buyer", "destination": "Person", "inverse": "orders", "optional": false},
        {"name": "parcel", "destination": "Parcel", "inverse": "order", "deleteRule": "cascade"}],
     "indexes": [["number"], ["buyer", "from"]], "intervals": [{"start": "from", "end": "till"}]},
    {"name": "Person", "renamedFrom": "Buyer", "relationships": [
        {"name": "orders", "destination": "Order", "inverse": "buyer", "toMany": true}]},
    {"name": "Parcel", "relationships": [
        {"name": "order", "destination": "Order", "inverse": "parcel"}]}]})";

std::string changed(std::string_view from, std::string_view to) {
    std::string result(sound);
    const std::size_t place = result.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return result.replace(place, from.size(), to);
}

TEST(Model, TheLibrarysOwnHasItsPropertiesInOrder) {
    Error error;
    const auto model =
        ManagedObjectModel::modelWithContentsOfURL(ORVANE_SOURCE_DIR "/store/Orvane.momd", &error);
    ASSERT_TRUE(model) << error.localizedDescription();
    std::string listing = model->name();
    for (const EntityDescription& entity : model->entities()) {
        listing += " " + entity.name + "/" + entity.className + ":";
        for (const AttributeDescription& attribute : entity.attributes) {
            EXPECT_EQ(entity.propertyIndex(attribute.name), &attribute - entity.attributes.data());
            EXPECT_TRUE(attribute.optional && attribute.defaultValue.isNone()) << attribute.name;
            listing += " " + attribute.name;
        }
        for (const RelationshipDescription& relationship : entity.relationships)
            listing += " " + relationship.name + (relationship.toMany ? ">>" : ">") +
                       destinationOf(*model, relationship).name +
                       (relationship.deleteRule == DeleteRule::cascade ? "!" : "");
    }
    EXPECT_EQ(
        listing,
        "Orvane Application/OrvaneApp: color disabled identifier name group>Group recordings>>Recording! "
        "Group/OrvaneGroup: category color disabled identifier name applications>>Application "
        "Recording/OrvaneRecording: endDate idle startDate windowName application>Application");
}

TEST(Model, EveryMemberSurvivesWritingAndReading) {
    Error error;
    const auto model = ManagedObjectModel::modelWithText(sound, "Shop", &error);
    ASSERT_TRUE(model) << error.localizedDescription();
    const auto again = ManagedObjectModel::modelWithText(model->text(), "Shop again", &error);
    ASSERT_TRUE(again) << error.localizedDescription();
    EXPECT_EQ(*again, *model);

    const EntityDescription& order = *again->entity("Order");
    EXPECT_EQ(order.attribute("number")->defaultValue, Value(std::int64_t{-9007199254740993}));
    EXPECT_FALSE(order.attribute("number")->optional);
    EXPECT_EQ(order.attribute("open")->renamingIdentifier, "pending");
    EXPECT_EQ(order.attribute("from")->defaultValue, Value(dateFromSecondsSinceEpoch(0.1)));
    EXPECT_EQ(order.attribute("price")->defaultValue, Value(DecimalSeconds(-1)));
    EXPECT_EQ(order.attribute("seal")->defaultValue, Value(Data{0x00, 0xff}));
    EXPECT_EQ(order.attribute("note")->defaultValue, Value(std::string("\"ä\"\n\0", 6)));
    EXPECT_EQ(order.indexes[1].properties, (std::vector<std::string>{"buyer", "from"}));
    EXPECT_EQ(order.intervals[0], (IntervalDescription{"from", "till"}));
    EXPECT_EQ(again->entity("Person")->renamingIdentifier, "Buyer");
    EXPECT_EQ(again->entity("order"), nullptr);
}

struct Spoiled {
    std::string_view from;
    std::string_view to;
    std::vector<std::string_view> said;  ///< what the message must hold besides the name of the source
};

TEST(Model, EachMistakeIsNamedWithItsPlace) {
    const Spoiled mistakes[] = {
        {R"("version": 3)", R"("version": 3,,)", {"is not JSON", "byte"}},
        {R"("version": 3)", R"("version": 0)", {"version"}},
        {R"("version": 3)", R"("version": 3, "version": 4)", {"version", "twice"}},
        {R"("version": 3)", R"("vision": 3)", {"vision", "unknown"}},
        {R"("version": 3, )", "", {"version", "missing"}},
        {R"("name": "Shop")", R"("name": 5)", {"name", "text"}},
        {R"("size", "type": "integer32")", R"("size", "type": "integer16")", {"Order", "size", "integer16"}},
        {R"("size", "type")", R"("size", "kind")", {"Order", "size", "kind"}},
        {R"("size", "type": "integer32", )", R"("size", )", {"Order", "size", "type", "missing"}},
        {R"("name": "size")", R"("name": "2nd")", {"Order", "2nd", "no name"}},
        {R"("name": "size")", R"("name": "_id")", {"Order", "_id", "no name"}},
        {R"("name": "size")", R"("name": "Weight")", {"Order", "Weight", "taken"}},
        {R"("name": "size")", R"("name": "pending")", {"Order", "another", "pending"}},
        {R"({"name": "size")", R"({"name": "parcel")", {"Order", "parcel", "taken"}},
        {R"("name": "Parcel")", R"("name": "person")", {"person", "taken"}},
        {R"("name": "Parcel")", R"("name": "SQLite_x")", {"SQLite_x", "reserved"}},
        {R"("default": 7)", R"("default": 2147483648)", {"Order", "size", "2147483648", "integer32"}},
        {R"("default": -9007199254740993)", R"("default": 18446744073709551615)", {"number", "integer64"}},
        {R"("default": -9007199254740993)", R"("default": 1e999)", {"out of range"}},
        {R"("default": true)", R"("default": 1)", {"Order", "open", "boolean"}},
        {R"("default": "-0.000001")", R"("default": "-0.0000010")", {"Order", "price", "decimal"}},
        {R"("default": "00ff")", R"("default": "00f")", {"Order", "seal", "data"}},
        {R"("default": "00ff")", R"("default": "0x")", {"Order", "seal", "data"}},
        {R"("destination": "Person")",
         R"("destination": "People")",
         {"Order", "buyer", "People", "no entity"}},
        {R"("inverse": "orders")", R"("inverse": "sales")", {"Order", "buyer", "sales"}},
        {R"("inverse": "parcel")", R"("inverse": "buyer")", {"parcel", "lead back"}},
        {R"("inverse": "orders")", R"("inverse": "orders", "deleteRule": "deny")", {"buyer", "deny"}},
        {R"("buyer", "from"])", R"("buyer", "form"])", {"Order", "index", "form"}},
        {R"("buyer", "from"])", R"("buyer", "buyer"])", {"Order", "index", "buyer", "twice"}},
        {R"([["number"], ["buyer", "from"]])", R"([["number"], ["number"]])", {"Order", "index", "twice"}},
        {R"("inverse": "buyer", "toMany": true}])",
         R"("inverse": "buyer", "toMany": true}], "indexes": [["orders"]])",
         {"Person", "orders", "to-many"}},
        {R"({"start": "from")", R"({"start": "note")", {"Order", "interval", "note"}},
        {R"({"start": "from")", R"({"start": "weight")", {"Order", "interval", "different types"}},
        {R"({"start": "from")", R"({"start": "till")", {"Order", "interval", "same"}},
        {R"({"start": "from")", R"({"start": "buyer")", {"Order", "interval", "buyer", "unknown"}},
    };
    for (const Spoiled& mistake : mistakes) {
        Error error;
        EXPECT_FALSE(
            ManagedObjectModel::modelWithText(changed(mistake.from, mistake.to), "shop.json", &error))
            << mistake.to;
        EXPECT_EQ(error.code(), modelMalformedError) << mistake.to;
        const std::string message = error.localizedDescription();
        EXPECT_TRUE(message.starts_with("shop.json: ")) << message;
        for (const std::string_view part : mistake.said)
            EXPECT_NE(message.find(part), std::string::npos) << mistake.to << " gave: " << message;
    }
}

TEST(Model, WhatTheGraphCannotHoldIsRefused) {
    Error error;
    EXPECT_FALSE(ManagedObjectModel::modelWithText(
        R"({"name": "M", "version": 1, "entities": [{"name": "A", "relationships": [
            {"name": "from", "destination": "A", "inverse": "to", "toMany": true},
            {"name": "to", "destination": "A", "inverse": "from", "toMany": true}]}]})",
        "m", &error));
    EXPECT_NE(error.localizedDescription().find("both ends"), std::string::npos);
    EXPECT_FALSE(ManagedObjectModel::modelWithText(
        R"({"name": "M", "version": 1, "entities": [{"name": "A", "relationships": [
            {"name": "peer", "destination": "A", "inverse": "peer"}]}]})",
        "m", &error));
    EXPECT_NE(error.localizedDescription().find("own inverse"), std::string::npos);

    const auto withAttributes = [](int count) {
        std::string attributes;
        for (int i = 0; i < count; ++i)
            attributes +=
                (i > 0 ? "," : "") + (R"({"name": "a)" + std::to_string(i) + R"(", "type": "text"})");
        return R"({"name": "M", "version": 1, "entities": [{"name": "Wide", "attributes": [)" + attributes +
               "]}]}";
    };
    EXPECT_TRUE(ManagedObjectModel::modelWithText(withAttributes(60), "m", &error));
    EXPECT_FALSE(ManagedObjectModel::modelWithText(withAttributes(61), "m", &error));
    EXPECT_NE(error.localizedDescription().find("Wide"), std::string::npos);
}

TEST(Model, TextsOfAnyBytesAreRefusedWithoutHarm) {
    for (const std::string_view text :
         {"", " ", "null", "[]", "7", "{", "{}", "\xff\xfe", "{\"name\": \"\xc3\"}"}) {
        Error error;
        EXPECT_FALSE(ManagedObjectModel::modelWithText(text, "m", &error)) << text;
        EXPECT_EQ(error.code(), modelMalformedError) << text;
    }
    EXPECT_FALSE(ManagedObjectModel::modelWithText(std::string(100000, '['), "m", nullptr));
    for (std::size_t length = 0; length < sound.size(); ++length)
        EXPECT_FALSE(ManagedObjectModel::modelWithText(sound.substr(0, length), "m", nullptr)) << length;
}

TEST(ModelResource, ReadsTheCurrentOfItsVersions) {
    const TemporaryFolder folder;
    writeBytes(folder / "versions.json", R"({"current": "Shop 2", "versions": ["Shop 1", "Shop 2"]})");
    writeBytes(folder / "Shop 1.json", "what an older version holds is not looked at");
    writeBytes(folder / "Shop 2.json", sound);
    Error error;
    const auto model = ManagedObjectModel::modelWithContentsOfURL(folder.path(), &error);
    ASSERT_TRUE(model) << error.localizedDescription();
    EXPECT_EQ(model->version(), 3);
}

TEST(ModelResource, MissingAndMalformedPartsAreToldApart) {
    const TemporaryFolder folder;
    const auto codeOf = [&](const std::filesystem::path& resource, const std::string& named) {
        Error error;
        EXPECT_FALSE(ManagedObjectModel::modelWithContentsOfURL(resource, &error));
        EXPECT_NE(error.localizedDescription().find(named), std::string::npos)
            << error.localizedDescription();
        return error.code();
    };
    EXPECT_EQ(codeOf(folder / "No.momd", "No.momd"), modelMissingError);
    EXPECT_EQ(codeOf(folder.path(), "versions.json"), modelMissingError);
    for (const char* list :
         {"", "{", "[]", R"({"current": "A"})", R"({"current": 1, "versions": [1]})",
          R"({"current": "B", "versions": ["A"]})", R"({"current": "../A", "versions": ["../A"]})",
          R"({"current": "A", "versions": ["A", "A"]})", R"({"current": "A", "versions": ["A"], "x": 1})"}) {
        writeBytes(folder / "versions.json", list);
        EXPECT_EQ(codeOf(folder.path(), "versions.json"), modelMalformedError) << list;
    }
    writeBytes(folder / "versions.json", R"({"current": "A", "versions": ["A"]})");
    EXPECT_EQ(codeOf(folder.path(), "A.json"), modelMissingError);
    std::filesystem::create_directory(folder / "A.json");
    EXPECT_EQ(codeOf(folder.path(), "A.json"), modelMissingError);
    std::filesystem::remove(folder / "A.json");
    writeBytes(folder / "A.json", "");
    EXPECT_EQ(codeOf(folder.path(), "A.json"), modelMalformedError);
}

}  // namespace
}  // namespace orvane::test
