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
    std::string rest = expanded(code);
    while (rest.size() > columnLimit) {
        // An empty pair of brackets is no place to break at.
        const std::size_t bracket = rest.rfind('(', columnLimit - 1);
        const std::size_t start = indentation(rest);
        const bool isBraced = rest[start] == '{';
        const std::size_t list = isBraced ? start : rest.find('<');
        const std::size_t comma =
            rest.rfind(", ", isBraced && bracket != std::string::npos ? bracket : columnLimit - 1);
        std::size_t end = std::string::npos;
        std::size_t margin = 0;
        if (!isBraced && bracket != std::string::npos && rest[bracket + 1] != ')') {
            end = bracket + 1;
            margin = start + 4;
        } else if (comma != std::string::npos) {
            end = comma + 1;
            margin = list < comma ? list + 1 : start;
        }
        if (end == std::string::npos) break;
        text_ += rest.substr(0, end) + "\n";
        rest = std::string(margin, ' ') + rest.substr(rest.find_first_not_of(' ', end));
    }
    text_ += rest + "\n";
}

void SourceText::function(std::string_view head, std::string_view body) {
    const std::string whole = expanded(head) + " { " + expanded(body) + " }";
    if (whole.size() <= columnLimit) {
        text_ += whole + "\n";
        return;
    }
    const std::string margin(indentation(head), ' ');
    breakable(std::string(head) + " {");
    breakable(margin + "    " + std::string(body));
    text_ += margin + "}\n";
}

void SourceText::constructor(std::string_view head, std::string_view initializer) {
    const std::string start = expanded(head);
    const std::string rest = ": " + expanded(initializer) + " {}";
    const bool fits = start.size() + 1 + rest.size() <= columnLimit;
    text_ += start + (fits ? " " : "\n" + std::string(indentation(head) + 4, ' ')) + rest + "\n";
}

}  // namespace orvane::codegen
