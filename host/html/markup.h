#pragma once

#include <string>
#include <string_view>

#include "foundation/date.h"

namespace orvane::host {

/// A piece of a page. What is stored, such as names and titles, comes in through `text` alone, so that none
/// of it can be taken for markup.
class Markup {
  public:
    /// Markup of this program's own, taken as it stands.
    Markup& html(std::string_view markup) {
        content_ += markup;
        return *this;
    }
    /// Text for an element's content or for an attribute in quotation marks. Control characters become
    /// blanks, ill-formed UTF-8 replacement characters, and overlong text ends in an ellipsis.
    Markup& text(std::string_view text);
    /// ` name="text"`.
    Markup& attribute(std::string_view name, std::string_view value);
    /// The duration as text with the exact seconds for programs.
    Markup& duration(DecimalSeconds duration, std::string_view shown);
    /// A share of a whole in per cent, with three decimals: "12.5%".
    Markup& percent(double share);

    const std::string& content() const { return content_; }

  private:
    std::string content_;
};

}  // namespace orvane::host
