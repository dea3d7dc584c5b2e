#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "foundation/internal.h"

namespace orvane::sqlite {

// Reads a database file past SQLite, by https://www.sqlite.org/fileformat.html. Nothing in it is trusted.

using PageBytes = std::span<const unsigned char>;

/// The pages of a file, which nobody changes or shortens meanwhile. They count from 1.
class PageFile {
  public:
    /// Check `pageCount`: it is 0 when the file is empty or cannot be read.
    explicit PageFile(const std::filesystem::path& file);
    ~PageFile();
    PageFile(const PageFile&) = delete;
    PageFile& operator=(const PageFile&) = delete;

    /// Whether it begins as a database does.
    bool hasHeader() const { return hasHeader_; }
    /// Four bytes of the header, big end first.
    std::uint32_t headerField(std::size_t offset) const;
    std::size_t pageSize() const { return pageSize_; }
    /// Of a page without what is reserved for extensions.
    std::size_t usableSize() const { return usableSize_; }
    /// Pages that the file reaches to; the last one may be cut short.
    std::uint32_t pageCount() const { return pageCount_; }
    /// Pages that should be there, by the header, but lie behind the end.
    std::uint32_t missingPages() const;
    /// The usable bytes; empty when there is no such page.
    PageBytes page(std::uint32_t number) const;

  private:
    std::size_t guessedPageSize() const;

    const unsigned char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::size_t pageSize_ = 4096;
    std::size_t usableSize_ = 4096;
    std::uint32_t pageCount_ = 0;
    bool hasHeader_ = false;
    mutable std::vector<unsigned char> lastPage_;  ///< filled up with zeros, if it is cut short
};

/// A value as it lies in a row: none, integer, real, text or bytes.
struct StoredBytes {
    std::string_view bytes;
};
using StoredField = std::variant<std::monostate, std::int64_t, double, std::string_view, StoredBytes>;

struct StoredRecord {
    std::int64_t key = 0;
    std::vector<StoredField> fields;  ///< valid until the next record is read
};

/// A page of a table's tree.
class TreePage {
  public:
    enum class Kind { none, interior, leaf };

    TreePage(const PageFile& file, std::uint32_t number);

    /// `none` for pages of other kinds and for those whose head makes no sense.
    Kind kind() const { return kind_; }
    std::size_t cellCount() const { return cellCount_; }

    struct Child {
        std::uint32_t page = 0;
        std::int64_t lastKey = 0;
    };
    /// Of an interior page. False when the cell makes no sense.
    bool readChild(std::size_t cell, Child& child) const;
    std::uint32_t lastChild() const;
    /// Of a leaf. False when the cell makes no sense. `payload` keeps what lies scattered over pages.
    bool readRecord(std::size_t cell, StoredRecord& record, std::string& payload) const;

  private:
    PageBytes cellBytes(std::size_t cell) const;
    bool gather(PageBytes rest, std::uint64_t size, std::string& payload) const;

    const PageFile& file_;
    PageBytes page_;
    std::size_t head_ = 0;
    Kind kind_ = Kind::none;
    std::size_t cellCount_ = 0;
};

}  // namespace orvane::sqlite
