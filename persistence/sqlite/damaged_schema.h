#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "foundation/internal.h"
#include "persistence/model.h"
#include "persistence/sqlite/table_salvage.h"

namespace orvane::sqlite {

/// What a damaged file still tells of its tables. What it does not tell is taken from the model.
class DamagedSchema {
  public:
    struct Table {
        SalvagedTable salvaged;
        std::vector<std::string> columns;  ///< names that go with the kinds
    };

    /// `copy` is the file that `pages` reads.
    DamagedSchema(const PageFile& pages, const std::filesystem::path& copy, const ManagedObjectModel& model);

    /// No table at all is told of.
    bool isLost() const { return isLost_; }
    /// Some table of the model is told of.
    bool knowsTables() const { return knowsTables_; }
    /// The version of the model that the file was written with, when it tells and it is another than the
    /// given one.
    const std::shared_ptr<const ManagedObjectModel>& model() const { return model_; }
    /// Of an entity of the model above, or of the given one.
    const Table& table(const EntityDescription& entity) const { return tables_[entity.index]; }
    /// The last key that was given out; 0 when the file does not tell.
    std::int64_t lastKey(const EntityDescription& entity) const { return lastKeys_[entity.index]; }

  private:
    void ask(const std::filesystem::path& copy, const ManagedObjectModel& model);
    void readTables(const PageFile& pages, const ManagedObjectModel& model);

    bool isLost_ = true;
    bool knowsTables_ = false;
    std::shared_ptr<const ManagedObjectModel> model_;
    std::vector<Table> tables_;
    std::vector<std::int64_t> lastKeys_;
};

/// Where the entity's columns stand in the rows of the table, beside their names: those that both have.
std::vector<std::size_t> fieldsOf(const DamagedSchema::Table& table, const EntityDescription& entity,
                                  std::vector<std::string>& columns);

}  // namespace orvane::sqlite
