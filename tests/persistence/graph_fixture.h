#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "persistence/managed_object_context.h"
#include "persistence/model.h"
#include "tests/persistence/temporary_folder.h"

namespace orvane {

/// A store in a folder of its own over a small model: shelves hold books, a book may have one cover.
class GraphTest : public testing::Test {
  protected:
    static constexpr const char* modelText = R"({
        "name": "Library", "version": 1, "entities": [
            {"name": "Shelf",
             "attributes": [{"name": "label", "type": "text"}],
             "relationships": [{"name": "books", "destination": "Book", "inverse": "shelf", "toMany": true,
                                "deleteRule": "cascade"}]},
            {"name": "Book",
             "attributes": [{"name": "title", "type": "text"}, {"name": "pages", "type": "integer64"},
                            {"name": "price", "type": "decimal"}, {"name": "weight", "type": "real"},
                            {"name": "lent", "type": "boolean"}, {"name": "from", "type": "date"},
                            {"name": "to", "type": "date"}, {"name": "scan", "type": "data"}],
             "relationships": [{"name": "shelf", "destination": "Shelf", "inverse": "books"},
                               {"name": "cover", "destination": "Cover", "inverse": "book"}],
             "indexes": [["shelf"]], "intervals": [{"start": "from", "end": "to"}]},
            {"name": "Cover",
             "attributes": [{"name": "color", "type": "text", "optional": false, "default": "red"}],
             "relationships": [{"name": "book", "destination": "Book", "inverse": "cover"}]}]})";

    GraphTest() { context_ = openContext(); }

    std::filesystem::path file() const { return folder_ / "library.db"; }

    std::shared_ptr<PersistentStoreCoordinator> openStore() const {
        Error error;
        auto model = ManagedObjectModel::modelWithText(modelText, "test", &error);
        EXPECT_TRUE(model) << error.localizedDescription();
        auto coordinator =
            std::make_shared<PersistentStoreCoordinator>(model, std::vector<const EntityClass*>());
        EXPECT_TRUE(coordinator->addPersistentStore(NSSQLiteStoreType, "", file(), {}, &error))
            << error.localizedDescription();
        return coordinator;
    }
    /// A main context over a connection of its own, as another process would have.
    std::unique_ptr<ManagedObjectContext> openContext() const {
        auto context = std::make_unique<ManagedObjectContext>();
        context->setPersistentStoreCoordinator(openStore());
        return context;
    }

    Ref<ManagedObject> insert(const char* entity,
                              std::initializer_list<std::pair<const char*, Value>> values) {
        Ref<ManagedObject> object = context_->insertNewObject(entity);
        for (const auto& [key, value] : values) object->setValueForKey(value, key);
        return object;
    }
    void save() {
        Error error;
        ASSERT_TRUE(context_->save(&error)) << error.localizedDescription();
    }
    /// What one key holds in the objects of an entity, as text, in the order of that key.
    std::string listing(ManagedObjectContext& context, const char* entity, const char* key,
                        std::optional<Predicate> predicate = std::nullopt) {
        Error error;
        const auto objects = context.executeFetchRequest({entity, predicate, {{key, true}}}, &error);
        if (!objects) return error.localizedDescription();
        std::string result;
        for (const auto& object : *objects)
            result += (result.empty() ? "" : " ") + object->valueForKey(key).description();
        return result;
    }

    test::TemporaryFolder folder_;
    std::unique_ptr<ManagedObjectContext> context_;
};

}  // namespace orvane
