#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvane::trials {

/// What a database file holds, read past the library.
struct StoreContents {
    bool isReadable = false;     ///< false, with all else empty, when any of it could not be read
    std::string integrity = {};  ///< SQLite's own verdict, "ok" for a sound file
    /// Every recording, application and group with all they hold, as text that is equal for equal contents.
    std::string text = {};
    /// Identifiers that more than one application bears.
    std::string doubledApplications = {};
    int recordings = 0;
    double lastEnd = 0;  ///< seconds since the Unix epoch; 0 without recordings
};

/// `fileSystem` names the SQLite file system, empty for the usual one. Unfinished transactions are rolled
/// back, as when any program opens the file. A file without tables has a text of its own.
StoreContents readStore(const std::filesystem::path& file, const std::string& fileSystem);

/// Every line of the contents `part` that begins with the word is among those of `whole`.
bool holdsLines(const std::string& whole, const std::string& part, std::string_view word);

/// What a new store holds before anything was saved in it.
extern const char* const emptyStoreText;

}  // namespace orvane::trials
