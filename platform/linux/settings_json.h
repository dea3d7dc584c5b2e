#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/internal.h"
#include "foundation/value.h"

namespace orvane {

/// The text of a settings file: one JSON object (RFC 8259). Whatever else it holds is kept as it is when a
/// key is set.
class SettingsDocument {
  public:
    SettingsDocument();
    ~SettingsDocument();
    SettingsDocument(SettingsDocument&&) noexcept;
    SettingsDocument& operator=(SettingsDocument&&) noexcept;

    /// None, with what is wrong in `problem`, when the text is no settings file.
    static std::optional<SettingsDocument> parse(std::string_view text, std::string& problem);

    /// All keys with their values; null counts as not set.
    Dictionary values() const;
    /// Sets the key, or removes it when the value is none. False when JSON cannot hold the value.
    bool set(std::string_view key, const Value& value);
    /// The text, laid out for people.
    std::string text() const;

  private:
    struct Content;
    std::unique_ptr<Content> content_;
};

}  // namespace orvane
