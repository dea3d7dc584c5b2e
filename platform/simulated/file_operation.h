#pragma once

namespace orvane {

/// What a database does to its files.
enum class FileOperation { open, read, write, truncate, sync, remove };

}  // namespace orvane
