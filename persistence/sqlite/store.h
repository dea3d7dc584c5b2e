#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/internal.h"
#include "persistence/entity_class.h"
#include "persistence/model.h"
#include "persistence/sqlite/schema.h"

namespace orvane::sqlite {

/// Statement texts of one entity.
struct EntityStatements {
    std::string columns;  ///< `t0."_id", t0."first", …`: key, then the stored properties in order
    std::string columnsWithoutTexts;  ///< the same without texts and data
    std::string fromTable;            ///< ` FROM "Entity" AS t0`
    std::string selectByKeys;         ///< all columns of the rows from one key to another
    std::string insert;               ///< key and all stored properties
    std::string remove;
    std::vector<std::string> columnNames;  ///< of the stored properties, in order
    std::unordered_map<std::uint64_t, std::string>
        updates;  ///< by the set of columns written, made as needed

    /// The statement that writes just these columns (bit i for the i-th stored property) of one row.
    const std::string& update(std::uint64_t written);
    std::string tableName;
};

/// The statement texts of a model's entities, made when they are first asked for. One thread.
class StatementTexts {
  public:
    /// The model must outlive this.
    explicit StatementTexts(const ManagedObjectModel& model)
        : model_(model), texts_(model.entities().size()) {}

    EntityStatements& of(std::size_t entityIndex);

  private:
    const ManagedObjectModel& model_;
    std::vector<EntityStatements> texts_;
};

/// An open store: the file, its identity and the connection that main-queue contexts share.
class Store {
  public:
    Store(std::filesystem::path file, PreparedStore prepared, PrepareOptions options,
          const ManagedObjectModel& model);

    const std::filesystem::path& file() const { return file_; }
    const std::shared_ptr<const std::string>& identifier() const { return identifier_; }
    Database& mainDatabase() { return *database_; }
    /// A further connection, with all functions registered, for a context on another thread.
    std::unique_ptr<Database> openConnection(Error* error) const;

    /// Begins a transaction ahead of the operations that are to share it. False, with an error, when that
    /// fails, as when the lock cannot be had.
    bool beginAhead(Transaction::Kind kind, Error* error);
    /// The transaction begun ahead, which ends with what is returned; none when there is none.
    std::unique_ptr<Transaction> takeTransaction() { return std::exchange(ahead_, nullptr); }

    /// Declares the derived values of an entity that can be summed in the file. Call before anything is
    /// fetched.
    bool declareDerived(const EntityDescription& entity, std::span<const DerivedSeconds> derived,
                        Error* error);

    /// Used by main-queue contexts alone: each thread of a child context keeps texts of its own.
    StatementTexts& statements() { return statements_; }

  private:
    struct Derived {
        std::string function;
        const DerivedSeconds* value;
    };
    bool registerDerived(Database& database, Error* error) const;

    std::filesystem::path file_;
    std::shared_ptr<const std::string> identifier_;
    PrepareOptions options_;
    std::unique_ptr<Database> database_;
    std::unique_ptr<Transaction> ahead_;
    StatementTexts statements_;
    std::vector<Derived> derived_;
};

/// Name of the aggregate function that sums a derived value over rows: its arguments are the value's inputs.
std::string sumFunction(const EntityDescription& entity, std::string_view derivedKey);

}  // namespace orvane::sqlite
