#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>

#include "foundation/date.h"
#include "persistence/shared_text.h"

namespace orvane {

class ManagedObject;
class IdentifierSet;

// The members of a managed object's row. Each holds one property in as little room as it can, absence
// included, and is filled straight from the file. Objects touch them only through `ManagedObject`'s
// accessors, which bring faults to life and announce changes.

enum class SlotKind : std::uint8_t {
    boolean,
    integer32,
    integer64,
    real,
    decimal,
    date,
    text,
    data,
    toOne,
    toMany
};

struct BooleanSlot {
    std::int8_t value = -1;  ///< -1: absent
    std::optional<bool> get() const { return value < 0 ? std::nullopt : std::optional<bool>(value != 0); }
    void set(std::optional<bool> newValue) {
        value = newValue ? static_cast<std::int8_t>(*newValue) : std::int8_t{-1};
    }
};

struct IntegerSlot {
    std::optional<std::int64_t> value;
    std::optional<std::int64_t> get() const { return value; }
    void set(std::optional<std::int64_t> newValue) { value = newValue; }
};

struct DecimalSlot {
    std::optional<DecimalSeconds> value;
    std::optional<DecimalSeconds> get() const { return value; }
    void set(std::optional<DecimalSeconds> newValue) { value = newValue; }
};

/// Double precision number; NaN stands for absent, since NaN cannot be stored.
struct RealSlot {
    double value = std::numeric_limits<double>::quiet_NaN();
    std::optional<double> get() const { return std::isnan(value) ? std::nullopt : std::optional(value); }
    void set(std::optional<double> newValue) {
        value = newValue.value_or(std::numeric_limits<double>::quiet_NaN());
    }
};

/// Seconds since the epoch; NaN stands for absent.
struct DateSlot {
    double seconds = std::numeric_limits<double>::quiet_NaN();
    std::optional<Date> get() const {
        return std::isnan(seconds) ? std::nullopt : std::optional(dateFromSecondsSinceEpoch(seconds));
    }
    void set(std::optional<Date> date) {
        seconds = date ? secondsSinceEpoch(*date) : std::numeric_limits<double>::quiet_NaN();
    }
};

/// Text or bytes shared through the context's pool.
class TextSlot {
  public:
    TextSlot() = default;
    TextSlot(const TextSlot&) = delete;
    TextSlot& operator=(const TextSlot&) = delete;
    ~TextSlot() { clear(); }

    std::optional<std::string_view> get() const {
        return text_ ? std::optional(text_->view()) : std::nullopt;
    }
    void set(TextPool& pool, std::optional<std::string_view> text) {
        SharedText* acquired = text ? pool.acquire(*text) : nullptr;
        clear();
        text_ = acquired;
    }
    void clear() {
        if (!text_) return;
        if (--text_->references_ == 0) text_->pool_->release(text_);
        text_ = nullptr;
    }

  private:
    friend class TextBatch;

    SharedText* text_ = nullptr;
};

/// The object at the other end, held strongly; or none.
class ORVANE_EXPORT ToOneSlot {
  public:
    ToOneSlot() = default;
    ToOneSlot(const ToOneSlot&) = delete;
    ToOneSlot& operator=(const ToOneSlot&) = delete;
    ~ToOneSlot() {
        if (target_) set(nullptr);
    }

    ManagedObject* get() const { return target_; }
    void set(ManagedObject* target);

  private:
    ManagedObject* target_ = nullptr;
};

/// Identifiers of the objects at the other end; none while they have not been read.
struct ORVANE_EXPORT ToManySlot {
    std::unique_ptr<IdentifierSet> identifiers;

    ToManySlot();
    ~ToManySlot();
};

/// Where a property lies in its class's row.
struct RowSlot {
    std::string_view name;
    SlotKind kind;
    std::size_t offset;
};

}  // namespace orvane
