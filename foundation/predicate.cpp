#include "foundation/predicate.h"

#include <glib.h>

#include <charconv>
#include <cmath>

#include "foundation/predicate_parser.h"

namespace orvane {
namespace {

constexpr const char* predicateErrorDomain = "OrvanePredicateErrorDomain";
constexpr int syntaxErrorCode = 1;

bool continuesCodePoint(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// One line of valid UTF-8, whatever the bytes.
std::string printable(std::string_view text) {
    std::string line(text);
    for (char& c : line)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    gchar* valid = g_utf8_make_valid(line.data(), static_cast<gssize>(line.size()));
    line = valid;
    g_free(valid);
    return line;
}

/// The neighbourhood of the position with a caret line under it.
std::string excerpt(std::string_view format, std::size_t position) {
    constexpr std::size_t reach = 60;
    std::size_t begin = position > reach ? position - reach : 0;
    while (begin > 0 && begin < format.size() && continuesCodePoint(format[begin])) --begin;
    std::size_t end = std::min(format.size(), position + reach);
    while (end < format.size() && continuesCodePoint(format[end])) ++end;

    std::string before = printable(format.substr(begin, position - begin));
    if (begin > 0) before.insert(0, "…");
    std::string result = before + printable(format.substr(position, end - position));
    if (end < format.size()) result += "…";
    result += '\n';
    for (const char c : before)
        if (!continuesCodePoint(c)) result += ' ';
    return result + "^";
}

std::string quotedText(std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (c == '\n') {
            result += "\\n";
        } else if (c == '\t') {
            result += "\\t";
        } else if (static_cast<unsigned char>(c) < 0x20) {
            result += "\\u00";
            result += digits[c >> 4];
            result += digits[c & 15];
        } else {
            result += c;
        }
    }
    return result + '"';
}

/// A constant as one would write it, where it can be written at all.
std::string constantText(const Value& value) {
    if (value.isNone()) return "NULL";
    if (const bool* truth = value.asBool()) return *truth ? "TRUE" : "FALSE";
    if (const std::string* text = value.asString()) return quotedText(*text);
    if (const double* real = value.asDouble(); real && std::isfinite(*real)) {
        char buffer[32];
        std::string text(buffer, std::to_chars(buffer, buffer + sizeof buffer, *real).ptr);
        // Read again, it must not become an integer.
        return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
    }
    if (const Value::Array* elements = value.asArray()) {
        std::string result;
        for (const Value& element : *elements) result += (result.empty() ? "" : ", ") + constantText(element);
        return "{" + result + "}";
    }
    return value.description();
}

std::string operandText(const PredicateOperand& operand) {
    switch (operand.kind) {
        case PredicateOperand::Kind::constant:
            return constantText(operand.constant);
        case PredicateOperand::Kind::keyPath:
            return keyPathNeedsSelf(operand.keyPath) ? "SELF." + operand.keyPath : operand.keyPath;
        case PredicateOperand::Kind::self:
            return "SELF";
        case PredicateOperand::Kind::list:
            break;
    }
    std::string result;
    for (const PredicateOperand& element : operand.list)
        result += (result.empty() ? "" : ", ") + operandText(element);
    return "{" + result + "}";
}

std::string_view operatorText(ComparisonOperator comparison) {
    switch (comparison) {
        case ComparisonOperator::equal:
            return "==";
        case ComparisonOperator::notEqual:
            return "!=";
        case ComparisonOperator::less:
            return "<";
        case ComparisonOperator::lessOrEqual:
            return "<=";
        case ComparisonOperator::greater:
            return ">";
        case ComparisonOperator::greaterOrEqual:
            return ">=";
        case ComparisonOperator::between:
            return "BETWEEN";
        case ComparisonOperator::in:
            return "IN";
        case ComparisonOperator::contains:
            return "CONTAINS";
        case ComparisonOperator::beginsWith:
            return "BEGINSWITH";
        case ComparisonOperator::endsWith:
            return "ENDSWITH";
        case ComparisonOperator::like:
            break;
    }
    return "LIKE";
}

std::string nodeText(const PredicateNode& node);

std::string junctionText(const PredicateNode& node, std::string_view joint) {
    std::string result;
    for (const PredicateNode& child : node.children) {
        if (!result.empty()) result += joint;
        const bool isJunction =
            child.kind == PredicateNode::Kind::conjunction || child.kind == PredicateNode::Kind::disjunction;
        result += isJunction ? "(" + nodeText(child) + ")" : nodeText(child);
    }
    return result;
}

std::string nodeText(const PredicateNode& node) {
    switch (node.kind) {
        case PredicateNode::Kind::always:
            return "TRUEPREDICATE";
        case PredicateNode::Kind::never:
            return "FALSEPREDICATE";
        case PredicateNode::Kind::conjunction:
            return junctionText(node, " AND ");
        case PredicateNode::Kind::disjunction:
            return junctionText(node, " OR ");
        case PredicateNode::Kind::negation:
            return "NOT (" + nodeText(node.children.front()) + ")";
        case PredicateNode::Kind::comparison:
            break;
    }
    std::string result = operandText(node.left) + " ";
    result += operatorText(node.comparison);
    if (node.ignoreCase || node.ignoreDiacritics) {
        result += '[';
        if (node.ignoreCase) result += 'c';
        if (node.ignoreDiacritics) result += 'd';
        result += ']';
    }
    return result + " " + operandText(node.right);
}

}  // namespace

PredicateSyntaxError::PredicateSyntaxError(std::string_view format, std::size_t position,
                                           std::string_view problem)
    : std::invalid_argument(excerpt(format, position) + "\n" + std::string(problem)), position_(position) {}

Predicate Predicate::withFormat(std::string_view format, std::initializer_list<Value> arguments) {
    return withFormat(format, std::span<const Value>(arguments.begin(), arguments.size()));
}

Predicate Predicate::withFormat(std::string_view format, std::span<const Value> arguments) {
    return Predicate(std::make_shared<const PredicateNode>(parsePredicate(format, arguments)));
}

std::optional<Predicate> Predicate::parse(std::string_view format, std::span<const Value> arguments,
                                          Error* error) {
    try {
        return withFormat(format, arguments);
    } catch (const PredicateSyntaxError& problem) {
        assignError(error, Error(predicateErrorDomain, syntaxErrorCode, std::string(problem.what())));
        return std::nullopt;
    }
}

std::string Predicate::description() const { return nodeText(*root_); }

}  // namespace orvane
