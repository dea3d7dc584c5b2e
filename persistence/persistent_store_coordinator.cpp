#include "persistence/persistent_store_coordinator.h"

#include <charconv>
#include <stdexcept>

#include "persistence/persistence_errors.h"
#include "persistence/sqlite/sql_compiler.h"
#include "persistence/sqlite/store.h"

namespace orvane {

namespace {

constexpr std::string_view uriScheme = "x-orvane://";

/// Whether the class was generated from an entity with the same properties in the same order.
bool fits(const EntityClass& objectClass, const EntityDescription& entity) {
    if (objectClass.slots.size() != entity.propertyCount()) return false;
    for (std::size_t i = 0; i < objectClass.slots.size(); ++i)
        if (entity.propertyIndex(objectClass.slots[i].name) != i) return false;
    return true;
}

}  // namespace

std::string ManagedObjectID::URIRepresentation() const {
    if (!entity_) return {};
    std::string result(uriScheme);
    if (!isTemporaryID() && storeIdentifier_) result += *storeIdentifier_;
    result += "/" + entity_->name + (isTemporaryID() ? "/t" : "/p");
    return result + std::to_string(isTemporaryID() ? -key_ : key_);
}

PersistentStoreCoordinator::PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model,
                                                       const std::vector<const EntityClass*>& classes)
    : model_(std::move(model)) {
    for (const EntityDescription& entity : model_->entities()) {
        const EntityClass* found = nullptr;
        for (const EntityClass* candidate : classes)
            if (!entity.className.empty() && candidate->className == entity.className) found = candidate;
        if (found && !fits(*found, entity))
            throw std::logic_error("class " + entity.className +
                                   " was generated from another version of entity " + entity.name);
        classes_.push_back(found);
    }
}

PersistentStoreCoordinator::~PersistentStoreCoordinator() = default;

const EntityClass* PersistentStoreCoordinator::classOf(const EntityDescription& entity) const {
    return classes_[entity.index];
}

bool PersistentStoreCoordinator::addPersistentStore(std::string_view type, std::string_view configuration,
                                                    const std::filesystem::path& file,
                                                    const PersistentStoreOptions& options, Error* error) {
    if (type != NSSQLiteStoreType || !configuration.empty() || store_) {
        assignError(error, Error(persistenceErrorDomain, storeCannotOpenError,
                                 store_ ? "The coordinator has a store already."
                                        : "Only SQLite stores without a configuration name are known."));
        return false;
    }
    sqlite::PrepareOptions prepare;
    prepare.open.fileSystem = options.fileSystem;
    prepare.open.create = true;
    prepare.open.busyTimeoutMilliseconds = options.busyTimeoutMilliseconds;
    prepare.migrateAutomatically = options.migratePersistentStoresAutomatically && options.inferMappingModel;
    if (const auto mode = options.pragmas.find("journal_mode"); mode != options.pragmas.end())
        prepare.journalMode = mode->second;
    const auto isSet = [&](const char* pragma, const char* value) {
        const auto found = options.pragmas.find(pragma);
        return found != options.pragmas.end() && found->second == value;
    };
    prepare.secureDelete = isSet("secure_delete", "ON");
    prepare.lockExclusively = isSet("locking_mode", "EXCLUSIVE");
    auto prepared = sqlite::prepareStore(file, *model_, prepare, error);
    if (!prepared || !sqlite::registerFunctions(*prepared->database, error)) return false;
    auto store = std::make_shared<sqlite::Store>(file, std::move(*prepared), prepare, *model_);
    for (const EntityDescription& entity : model_->entities())
        if (const EntityClass* objectClass = classOf(entity))
            if (!store->declareDerived(entity, objectClass->derived, error)) return false;
    store_ = std::move(store);
    return true;
}

bool PersistentStoreCoordinator::isStoreMoved(Error* error) const {
    return store_ && store_->mainDatabase().wasMoved(error);
}

std::optional<ManagedObjectID> PersistentStoreCoordinator::managedObjectIDForURIRepresentation(
    std::string_view text) const {
    if (!store_ || !text.starts_with(uriScheme)) return std::nullopt;
    text.remove_prefix(uriScheme.size());
    const std::size_t afterStore = text.find('/');
    const std::size_t afterEntity = text.rfind('/');
    if (afterStore == std::string_view::npos || afterEntity <= afterStore) return std::nullopt;
    const std::string_view storeName = text.substr(0, afterStore);
    const EntityDescription* entity =
        model_->entity(text.substr(afterStore + 1, afterEntity - afterStore - 1));
    const std::string_view key = text.substr(afterEntity + 1);
    if (!entity || key.size() < 2 || (key[0] != 'p' && key[0] != 't')) return std::nullopt;
    const bool temporary = key[0] == 't';
    if (storeName != (temporary ? std::string_view() : std::string_view(*store_->identifier())))
        return std::nullopt;
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(key.data() + 1, key.data() + key.size(), number);
    if (failure != std::errc() || end != key.data() + key.size() || number <= 0) return std::nullopt;
    return ManagedObjectID(entity, store_->identifier(), temporary ? -number : number);
}

}  // namespace orvane
