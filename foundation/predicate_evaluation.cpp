#include <algorithm>

#include "foundation/predicate_node.h"

namespace orvane {
namespace {

/// What key paths are asked of: a value, or an object that no value holds.
class Subject {
  public:
    explicit Subject(const Value& value) : value_(&value), held_(value.asObject()), object_(held_.get()) {}
    explicit Subject(const KeyedObject& object) : object_(&object) {}

    Value valueForKeyPath(const std::string& keyPath) const {
        if (object_) return object_->valueForKeyPath(keyPath);
        return value_->isNone() ? Value() : orvane::valueForKeyPath(*value_, keyPath);
    }

    Value self() const {
        return value_ ? *value_ : Value(Ref<KeyedObject>(const_cast<KeyedObject*>(object_)));
    }

  private:
    const Value* value_ = nullptr;
    Ref<KeyedObject> held_;
    const KeyedObject* object_ = nullptr;
};

/// The operand's value: the constant itself, or what was read, which `storage` then holds.
const Value& operandValue(const PredicateOperand& operand, const Subject& subject, Value& storage) {
    switch (operand.kind) {
        case PredicateOperand::Kind::constant:
            return operand.constant;
        case PredicateOperand::Kind::keyPath:
            storage = subject.valueForKeyPath(operand.keyPath);
            break;
        case PredicateOperand::Kind::self:
            storage = subject.self();
            break;
        case PredicateOperand::Kind::list: {
            Value::Array elements;
            elements.reserve(operand.list.size());
            for (const PredicateOperand& element : operand.list) {
                Value elementStorage;
                elements.push_back(operandValue(element, subject, elementStorage));
            }
            storage = Value(std::move(elements));
            break;
        }
    }
    return storage;
}

bool evaluateNode(const PredicateNode& node, const Subject& subject) {
    const auto holds = [&](const PredicateNode& child) { return evaluateNode(child, subject); };
    switch (node.kind) {
        case PredicateNode::Kind::always:
            return true;
        case PredicateNode::Kind::never:
            return false;
        case PredicateNode::Kind::conjunction:
            return std::all_of(node.children.begin(), node.children.end(), holds);
        case PredicateNode::Kind::disjunction:
            return std::any_of(node.children.begin(), node.children.end(), holds);
        case PredicateNode::Kind::negation:
            return !holds(node.children.front());
        case PredicateNode::Kind::comparison:
            break;
    }
    Value leftStorage;
    Value rightStorage;
    return compareValues(node.comparison, node.ignoreCase, node.ignoreDiacritics,
                         operandValue(node.left, subject, leftStorage),
                         operandValue(node.right, subject, rightStorage));
}

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// Bytes of the code point at the beginning of a text that is not empty; a byte that begins none counts as
/// one.
std::size_t codePointLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 1;
    for (std::size_t i = 1; i < length; ++i)
        if (i == text.size() || !isContinuation(text[i])) return 1;
    return length;
}

/// Matches the whole text. Only the last star met is ever tried again, with a longer run: what the stars
/// before it took needs no second thought. The work stays within length times length.
bool matchesPattern(std::string_view text, std::string_view pattern) {
    constexpr std::size_t nowhere = std::string_view::npos;
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t afterStar = nowhere;
    std::size_t runEnd = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            afterStar = ++p;
            runEnd = t;
            continue;
        }
        if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            t += codePointLength(text.substr(t));
            continue;
        }
        if (p < pattern.size()) {
            const bool escapes = pattern[p] == '\\' && p + 1 < pattern.size();
            if (pattern[p + (escapes ? 1 : 0)] == text[t]) {
                p += escapes ? 2 : 1;
                ++t;
                continue;
            }
        }
        if (afterStar == nowhere) return false;
        runEnd += codePointLength(text.substr(runEnd));
        t = runEnd;
        p = afterStar;
    }
    return pattern.find_first_not_of('*', p) == nowhere;
}

bool satisfiesOrder(ComparisonOperator comparison, int order) {
    switch (comparison) {
        case ComparisonOperator::less:
            return order < 0;
        case ComparisonOperator::lessOrEqual:
            return order <= 0;
        case ComparisonOperator::greater:
            return order > 0;
        default:
            return order >= 0;
    }
}

/// How the comparison takes differences between texts.
struct Folding {
    bool ignoreCase;
    bool ignoreDiacritics;

    bool compare(ComparisonOperator comparison, std::string_view left, std::string_view right) const {
        if (!ignoreCase && !ignoreDiacritics) return compareTexts(comparison, left, right);
        return compareTexts(comparison, foldedText(left, ignoreCase, ignoreDiacritics),
                            foldedText(right, ignoreCase, ignoreDiacritics));
    }

    bool equal(const Value& left, const Value& right) const {
        const std::string* leftText = left.asString();
        const std::string* rightText = right.asString();
        if (leftText && rightText) return compare(ComparisonOperator::equal, *leftText, *rightText);
        return left == right;
    }

    bool anyEquals(const Value& list, const Value& value) const {
        const Value::Array* elements = list.asArray();
        return elements && std::any_of(elements->begin(), elements->end(),
                                       [&](const Value& element) { return equal(element, value); });
    }
};

}  // namespace

bool compareTexts(ComparisonOperator comparison, std::string_view left, std::string_view right) {
    switch (comparison) {
        case ComparisonOperator::equal:
            return left == right;
        case ComparisonOperator::notEqual:
            return left != right;
        case ComparisonOperator::contains:
            return left.find(right) != std::string_view::npos;
        case ComparisonOperator::beginsWith:
            return left.starts_with(right);
        case ComparisonOperator::endsWith:
            return left.ends_with(right);
        case ComparisonOperator::like:
            return matchesPattern(left, right);
        case ComparisonOperator::between:
        case ComparisonOperator::in:
            return false;
        default:
            return satisfiesOrder(comparison, left.compare(right));
    }
}

bool compareValues(ComparisonOperator comparison, bool ignoreCase, bool ignoreDiacritics, const Value& left,
                   const Value& right) {
    const Folding folding{ignoreCase, ignoreDiacritics};
    switch (comparison) {
        case ComparisonOperator::equal:
            return folding.equal(left, right);
        case ComparisonOperator::notEqual:
            return !folding.equal(left, right);
        case ComparisonOperator::in:
            return folding.anyEquals(right, left);
        case ComparisonOperator::between: {
            const Value::Array* bounds = right.asArray();
            return bounds && bounds->size() == 2 &&
                   compareValues(ComparisonOperator::greaterOrEqual, false, false, left, (*bounds)[0]) &&
                   compareValues(ComparisonOperator::lessOrEqual, false, false, left, (*bounds)[1]);
        }
        case ComparisonOperator::contains:
            if (left.asArray()) return folding.anyEquals(left, right);
            break;
        default:
            break;
    }
    const std::string* leftText = left.asString();
    const std::string* rightText = right.asString();
    if (leftText && rightText) return folding.compare(comparison, *leftText, *rightText);
    if (comparison < ComparisonOperator::less || comparison > ComparisonOperator::greaterOrEqual)
        return false;
    if (left.isNone() || right.isNone()) return false;
    const std::optional<int> order = left.compare(right);
    return order && satisfiesOrder(comparison, *order);
}

bool Predicate::evaluate(const Value& object) const { return evaluateNode(*root_, Subject(object)); }

bool Predicate::evaluate(const KeyedObject& object) const { return evaluateNode(*root_, Subject(object)); }

}  // namespace orvane
