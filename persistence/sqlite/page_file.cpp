#include "persistence/sqlite/page_file.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::sqlite {

namespace {

constexpr std::size_t headerSize = 100;
constexpr std::string_view magic("SQLite format 3\0", 16);
constexpr unsigned char interiorTable = 0x05;
constexpr unsigned char leafTable = 0x0d;
constexpr std::size_t smallestUsable = 480;

std::uint32_t bigEndian(PageBytes bytes, std::size_t offset, std::size_t count) {
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < count; ++i) result = result << 8 | bytes[offset + i];
    return result;
}

/// Takes a number of up to nine bytes off the front. False when the bytes end before it does.
bool takeVarint(PageBytes& bytes, std::uint64_t& value) {
    value = 0;
    for (std::size_t i = 0; i < 9 && i < bytes.size(); ++i) {
        if (i == 8) {
            value = value << 8 | bytes[i];
        } else {
            value = value << 7 | (bytes[i] & 0x7f);
            if ((bytes[i] & 0x80) != 0) continue;
        }
        bytes = bytes.subspan(i + 1);
        return true;
    }
    return false;
}

/// Bytes that a value of the serial type takes; the first ones are numbers of these sizes.
std::uint64_t sizeOfSerialType(std::uint64_t type) {
    constexpr unsigned char sizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
    return type < 12 ? sizes[type] : (type - 12) / 2;
}

std::int64_t signedInteger(PageBytes bytes) {
    std::uint64_t value = !bytes.empty() && (bytes[0] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
    for (const unsigned char byte : bytes) value = value << 8 | byte;
    return static_cast<std::int64_t>(value);
}

/// False for a type that stands for nothing.
bool readField(std::uint64_t type, PageBytes bytes, StoredField& field) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (type == 0)
        field = std::monostate();
    else if (type <= 6)
        field = signedInteger(bytes);
    else if (type == 7)
        field = std::bit_cast<double>(signedInteger(bytes));
    else if (type <= 9)
        field = static_cast<std::int64_t>(type - 8);
    else if (type < 12)
        return false;
    else if (type % 2 == 1)
        field = text;
    else
        field = StoredBytes{text};
    return true;
}

bool readFields(PageBytes payload, std::vector<StoredField>& fields) {
    fields.clear();
    PageBytes types = payload;
    std::uint64_t headSize = 0;
    if (!takeVarint(types, headSize) || headSize > payload.size() || headSize < payload.size() - types.size())
        return false;
    types = types.first(static_cast<std::size_t>(headSize - (payload.size() - types.size())));
    PageBytes values = payload.subspan(static_cast<std::size_t>(headSize));
    while (!types.empty()) {
        std::uint64_t type = 0;
        if (!takeVarint(types, type)) return false;
        const std::uint64_t size = sizeOfSerialType(type);
        if (size > values.size()) return false;
        if (!readField(type, values.first(static_cast<std::size_t>(size)), fields.emplace_back()))
            return false;
        values = values.subspan(static_cast<std::size_t>(size));
    }
    return values.empty();
}

}  // namespace

PageFile::PageFile(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor >= 0 && ::fstat(descriptor, &status) == 0 && status.st_size > 0) {
        void* mapped =
            ::mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (mapped != MAP_FAILED) {
            bytes_ = static_cast<const unsigned char*>(mapped);
            size_ = static_cast<std::size_t>(status.st_size);
        }
    }
    if (descriptor >= 0) ::close(descriptor);
    if (size_ == 0) return;
    hasHeader_ = size_ >= headerSize && std::memcmp(bytes_, magic.data(), magic.size()) == 0;
    const std::size_t stated = size_ >= headerSize ? bigEndian({bytes_, size_}, 16, 2) : 0;
    const std::size_t size = stated == 1 ? 65536 : stated;
    const bool makesSense = hasHeader_ && std::has_single_bit(size) && size >= 512;
    pageSize_ = makesSense ? size : guessedPageSize();
    usableSize_ = pageSize_;
    if (makesSense && pageSize_ - bytes_[20] >= smallestUsable) usableSize_ = pageSize_ - bytes_[20];
    pageCount_ =
        static_cast<std::uint32_t>(std::min<std::size_t>((size_ + pageSize_ - 1) / pageSize_, 0xfffffffeU));
    if (const std::size_t rest = size_ % pageSize_; rest != 0) {
        lastPage_.assign(pageSize_, 0);
        std::memcpy(lastPage_.data(), bytes_ + (size_ - rest), rest);
    }
}

PageFile::~PageFile() {
    if (bytes_) ::munmap(const_cast<unsigned char*>(bytes_), size_);
}

std::uint32_t PageFile::headerField(std::size_t offset) const {
    return size_ >= headerSize ? bigEndian({bytes_, size_}, offset, 4) : 0;
}

std::uint32_t PageFile::missingPages() const {
    // The count is only kept by writers that also note the change they kept it at.
    const bool counted = hasHeader_ && headerField(24) == headerField(92);
    const std::uint32_t stated = counted ? headerField(28) : 0;
    return stated > pageCount_ ? stated - pageCount_ : 0;
}

PageBytes PageFile::page(std::uint32_t number) const {
    if (number == 0 || number > pageCount_) return {};
    const std::size_t start = (number - std::size_t{1}) * pageSize_;
    if (start + pageSize_ > size_) return PageBytes(lastPage_).first(usableSize_);
    return {bytes_ + start, usableSize_};
}

/// Pages of tables begin at every multiple of the size, and so at every multiple of a smaller one, but only
/// at some multiples of a larger one.
std::size_t PageFile::guessedPageSize() const {
    const auto pagesOfTables = [&](std::size_t size) {
        std::size_t found = 0;
        for (std::size_t start = 0; start + size <= size_; start += size) {
            const PageBytes page(bytes_ + start, size);
            const std::size_t cells = bigEndian(page, 3, 2);
            const std::size_t content = bigEndian(page, 5, 2);
            if (page[0] == leafTable && page[7] <= 60 && cells > 0 && 8 + 2 * cells <= content) ++found;
        }
        return found;
    };
    const std::size_t most = pagesOfTables(512);
    for (std::size_t size = 65536; most > 0 && size > 512; size /= 2)
        if (pagesOfTables(size) * 10 >= most * 9) return size;
    return most > 0 ? 512 : 4096;
}

TreePage::TreePage(const PageFile& file, std::uint32_t number)
    : file_(file), page_(file.page(number)), head_(number == 1 ? headerSize : 0) {
    if (page_.size() < head_ + 12) return;
    const unsigned char flag = page_[head_];
    if (flag != interiorTable && flag != leafTable) return;
    cellCount_ = bigEndian(page_, head_ + 3, 2);
    const std::size_t firstPointer = head_ + (flag == leafTable ? 8 : 12);
    // A cell takes up four bytes at the least, beside its pointer.
    if (firstPointer + cellCount_ * 6 > page_.size()) return;
    kind_ = flag == leafTable ? Kind::leaf : Kind::interior;
}

PageBytes TreePage::cellBytes(std::size_t cell) const {
    const std::size_t firstPointer = head_ + (kind_ == Kind::leaf ? 8 : 12);
    const std::size_t start = bigEndian(page_, firstPointer + cell * 2, 2);
    if (start < firstPointer + cellCount_ * 2 || start >= page_.size()) return {};
    return page_.subspan(start);
}

bool TreePage::readChild(std::size_t cell, Child& child) const {
    PageBytes bytes = cellBytes(cell);
    if (bytes.size() < 4) return false;
    child.page = bigEndian(bytes, 0, 4);
    bytes = bytes.subspan(4);
    std::uint64_t key = 0;
    if (!takeVarint(bytes, key)) return false;
    child.lastKey = static_cast<std::int64_t>(key);
    return true;
}

std::uint32_t TreePage::lastChild() const { return bigEndian(page_, head_ + 8, 4); }

bool TreePage::readRecord(std::size_t cell, StoredRecord& record, std::string& payload) const {
    PageBytes bytes = cellBytes(cell);
    std::uint64_t size = 0;
    std::uint64_t key = 0;
    if (!takeVarint(bytes, size) || !takeVarint(bytes, key)) return false;
    record.key = static_cast<std::int64_t>(key);
    const std::uint64_t usable = page_.size();
    if (size <= usable - 35)
        return size <= bytes.size() && readFields(bytes.first(static_cast<std::size_t>(size)), record.fields);
    return gather(bytes, size, payload) &&
           readFields({reinterpret_cast<const unsigned char*>(payload.data()), payload.size()},
                      record.fields);
}

/// Puts together a payload of which only the beginning lies in the cell.
bool TreePage::gather(PageBytes rest, std::uint64_t size, std::string& payload) const {
    const std::uint64_t usable = page_.size();
    if (size > std::uint64_t{file_.pageCount()} * usable) return false;
    const std::uint64_t least = (usable - 12) * 32 / 255 - 23;
    const std::uint64_t fitting = least + (size - least) % (usable - 4);
    const auto local = static_cast<std::size_t>(fitting <= usable - 35 ? fitting : least);
    if (rest.size() < local + 4) return false;
    payload.assign(reinterpret_cast<const char*>(rest.data()), local);
    std::uint32_t next = bigEndian(rest, local, 4);
    while (payload.size() < size) {
        const PageBytes page = file_.page(next);
        if (page.empty()) return false;
        const std::size_t count = std::min(page.size() - 4, static_cast<std::size_t>(size - payload.size()));
        payload.append(reinterpret_cast<const char*>(page.data()) + 4, count);
        next = bigEndian(page, 0, 4);
    }
    return true;
}

}  // namespace orvane::sqlite
