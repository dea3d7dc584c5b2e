#include "codegen/source_text.h"

namespace orvane::codegen {

namespace {

std::size_t indentation(std::string_view code) {
    const std::size_t first = code.find_first_not_of(' ');
    return first == std::string_view::npos ? 0 : first;
}

}  // namespace

std::string SourceText::expanded(std::string_view text) const {
    std::string result;
    for (const char letter : text) {
        if (letter == '@')
            result += qualification_;
        else
            result += letter;
    }
    return result;
}

void SourceText::line(std::string_view text) { text_ += expanded(text) + "\n"; }

void SourceText::breakable(std::string_view code) {
    std::string whole = expanded(code);
    if (whole.size() > columnLimit) {
        // An empty pair of brackets is no place to break at.
        const std::size_t bracket = whole.rfind('(');
        if (bracket != std::string::npos && bracket < columnLimit && whole[bracket + 1] != ')') {
            whole.insert(bracket + 1, "\n" + std::string(indentation(whole) + 4, ' '));
        } else {
            const std::size_t comma = whole.rfind(", ", columnLimit - 1);
            const std::size_t list = whole.find('<');
            if (comma != std::string::npos && list < comma)
                whole.replace(comma + 1, 1, "\n" + std::string(list + 1, ' '));
        }
    }
    text_ += whole + "\n";
}

void SourceText::function(std::string_view head, std::string_view body) {
    const std::string whole = expanded(head) + (body.empty() ? " {}" : " { " + expanded(body) + " }");
    if (whole.size() <= columnLimit) {
        text_ += whole + "\n";
        return;
    }
    const std::string margin(indentation(head), ' ');
    breakable(std::string(head) + " {");
    breakable(margin + "    " + std::string(body));
    text_ += margin + "}\n";
}

}  // namespace orvane::codegen
