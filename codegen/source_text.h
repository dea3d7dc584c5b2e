#pragma once

#include <string>
#include <string_view>

namespace orvane::codegen {

/// C++ text in the project's layout. A '@' in what is given stands for the qualification that names of the
/// library's need where the text is compiled.
class SourceText {
  public:
    explicit SourceText(std::string_view qualification) : qualification_(qualification) {}

    /// One line as it is.
    void line(std::string_view text = {});
    /// `code` as one line; when that is too long, broken after its last opening bracket or, with nothing in
    /// the brackets, between its first template's arguments; a braced list between its elements.
    void breakable(std::string_view code);
    /// `head { body }` on one line where it fits, else on three.
    void function(std::string_view head, std::string_view body);
    /// `head : initializer {}` on one line where it fits, else on two.
    void constructor(std::string_view head, std::string_view initializer);

    const std::string& text() const { return text_; }

  private:
    static constexpr std::size_t columnLimit = 110;
    std::string expanded(std::string_view text) const;

    std::string qualification_;
    std::string text_;
};

}  // namespace orvane::codegen
