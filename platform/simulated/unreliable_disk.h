#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "platform/simulated/file_operation.h"

namespace orvane {

/// What a disk does wrong.
enum class DiskFault {
    fails,     ///< the operation is refused and changes nothing
    cutShort,  ///< half of the bytes of a read or write are read or written before it fails
    powerCut,  ///< the power goes while it is under way
};

/// One of a disk's operations; opening a file is none.
struct DiskOperation {
    std::uint64_t number;  ///< counted from 1
    FileOperation kind;
    bool onJournal;  ///< on a file beside the database rather than on the database itself
};

/// A disk for databases, kept in memory, that fails at any operation or loses its power, and with it what was
/// not synced: such writes are there or not in any order, sector by sector, and so are files made or removed.
/// Name it when opening an SQLite database; two of them are two computers. Used by one thread at a time.
class ORVANE_EXPORT UnreliableDisk {
  public:
    /// By path.
    using Files = std::map<std::string, std::vector<std::uint8_t>>;

    /// The databases in this folder are kept on it. The folder must exist: an empty file there stands for
    /// each database.
    explicit UnreliableDisk(const std::string& folder);
    /// No database may be open through it any more.
    ~UnreliableDisk();
    UnreliableDisk(const UnreliableDisk&) = delete;
    UnreliableDisk& operator=(const UnreliableDisk&) = delete;

    /// The name it is registered under as an SQLite file system; unlike that of any other.
    const std::string& name() const;

    /// Number of operations so far: reads, writes, truncations, syncs and removals.
    std::uint64_t operations() const;
    /// The operation of that number goes wrong, all others do not. 0: none does.
    void failAt(std::uint64_t operation, DiskFault fault);
    /// Is told of every operation when it was asked for and nothing of it is done yet. It must not use a
    /// database on this disk.
    void setObserver(std::function<void(const DiskOperation&)> observer);

    /// What would be left if the power went now; while an observer is told of an operation, any part of that
    /// may be done. The same seed gives the same.
    Files afterPowerCut(std::uint64_t seed) const;
    /// From now on every operation fails. The seed chooses what is left, here and at a `DiskFault::powerCut`.
    void cutPower();
    void setSeed(std::uint64_t seed);
    bool hasPower() const;
    /// Power is there again, with what was left. Throws std::logic_error while a database is open: no program
    /// outlives a loss of power.
    void powerOn();
    /// Makes these files all there are, and safe; power is there. Throws as `powerOn` does.
    void setFiles(Files files);

  private:
    class Shim;

    std::unique_ptr<Shim> shim_;
};

}  // namespace orvane
