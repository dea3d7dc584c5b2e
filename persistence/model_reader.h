#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/error.h"
#include "foundation/internal.h"
#include "persistence/model.h"

namespace orvane {

/// Reads the text of a model's version. Every member must be known and of the right type, every name an
/// identifier
/// ([A-Za-z][A-Za-z0-9_]*) that differs from its neighbours by more than case, since SQLite does not tell
/// case apart.
///
/// Default values stand as JSON of the attribute's kind: dates as seconds since the epoch, decimals as text
/// ("1.500000"), data as text in hexadecimal digits.
class ModelReader {
  public:
    /// Properties an entity can have: a changed property is one bit of a 64-bit word, with some to spare.
    static constexpr std::size_t maximumProperties = 60;

    /// None, with `modelMalformedError` naming source, entity and property, when the text is no such version.
    static std::shared_ptr<const ManagedObjectModel> read(std::string_view text, std::string_view sourceName,
                                                          Error* error);

    struct Title {
        std::string name;
        int version;
    };
    /// Name and version alone. They can be read even when the rest was written in a form of later days.
    static std::optional<Title> readTitle(std::string_view text);
};

}  // namespace orvane
