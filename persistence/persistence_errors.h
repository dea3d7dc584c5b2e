#pragma once

namespace orvane {

inline constexpr const char* persistenceErrorDomain = "OrvanePersistenceErrorDomain";

/// Codes of `persistenceErrorDomain`. Every failure of a store, a model or a save carries one of them.
enum PersistenceErrorCode : int {
    storeCannotOpenError =
        1,  ///< the file cannot be opened: missing folder, a folder in its place, no permission
    storeNotDatabaseError = 2,  ///< the file is no SQLite database
    storeCorruptError = 3,      ///< the database is damaged or cut short
    storeForeignError = 4,      ///< a database of another application or of another model
    storeNewerError = 5,        ///< written by a newer version of the model
    storeLockedError = 6,       ///< another program holds a lock on it
    storeReadOnlyError = 7,     ///< it, or its folder, cannot be written
    storeFullError = 8,         ///< the disk is full
    storeInputOutputError = 9,  ///< reading or writing failed beneath the database
    storeOutOfMemoryError = 10,
    migrationNotAllowedError = 20,  ///< the file is of an older model and migration was not asked for
    migrationImpossibleError = 21,  ///< the change of the model cannot be inferred
    modelMissingError = 30,         ///< no model resource, or no readable version in it
    modelMalformedError = 31,       ///< a model file that is no JSON, lacks a member or names an unknown type
    validationMissingValueError = 40,  ///< an attribute or relationship that must have a value has none
    objectNotFoundError = 50,          ///< no object with that identifier exists any more
    contextUnusableError = 51,         ///< the context has no store, or its parent is gone
    storeOtherError = 99,
};

}  // namespace orvane
