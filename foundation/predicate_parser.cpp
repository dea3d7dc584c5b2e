#include "foundation/predicate_parser.h"

#include <algorithm>

#include "foundation/predicate_scanner.h"

namespace orvane {
namespace {

/// Far more than any written predicate needs, and far less than any stack can hold.
constexpr int maximumDepth = 100;

using Word = PredicateWord;

class PredicateParser : private PredicateScanner {
  public:
    PredicateParser(std::string_view format, std::span<const Value> arguments)
        : PredicateScanner(format), arguments_(arguments) {}

    PredicateNode parse() {
        PredicateNode node = disjunction();
        skipSpace();
        if (position_ != format_.size()) fail("expected AND, OR or the end of the predicate");
        if (usedArguments_ != arguments_.size())
            fail("expected as many arguments as place holders: " + std::to_string(arguments_.size()) +
                 " for " + std::to_string(usedArguments_));
        return node;
    }

  private:
    /// Counts the levels of nesting that are open.
    class Level {
      public:
        explicit Level(PredicateParser& parser) : parser_(parser) {
            if (++parser_.depth_ > maximumDepth) parser_.fail("expected less nesting");
        }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        ~Level() { --parser_.depth_; }

      private:
        PredicateParser& parser_;
    };

    /// The reserved word that comes next, which moves behind it only when `wanted` says so.
    template <class Wanted>
    Word acceptWord(Wanted wanted) {
        std::size_t end = position_;
        const Word word = nextWord(end);
        if (word == Word::none || !wanted(word)) return Word::none;
        position_ = end;
        return word;
    }

    bool acceptJoint(std::string_view symbol, Word joint) {
        return accept(symbol) || acceptWord([&](Word word) { return word == joint; }) == joint;
    }

    PredicateNode disjunction() {
        PredicateNode first = conjunction();
        if (!acceptJoint("||", Word::disjunction)) return first;
        PredicateNode node;
        node.kind = PredicateNode::Kind::disjunction;
        node.children.push_back(std::move(first));
        do node.children.push_back(conjunction());
        while (acceptJoint("||", Word::disjunction));
        return node;
    }

    PredicateNode conjunction() {
        PredicateNode first = condition();
        if (!acceptJoint("&&", Word::conjunction)) return first;
        PredicateNode node;
        node.kind = PredicateNode::Kind::conjunction;
        node.children.push_back(std::move(first));
        do node.children.push_back(condition());
        while (acceptJoint("&&", Word::conjunction));
        return node;
    }

    PredicateNode condition() {
        const Word word =
            acceptWord([](Word w) { return w == Word::negation || w == Word::always || w == Word::never; });
        PredicateNode node;
        if (word == Word::always || word == Word::never) {
            node.kind = word == Word::always ? PredicateNode::Kind::always : PredicateNode::Kind::never;
            return node;
        }
        if (word == Word::negation || accept("!")) {
            const Level level(*this);
            node.kind = PredicateNode::Kind::negation;
            node.children.push_back(condition());
            return node;
        }
        if (accept("(")) {
            const Level level(*this);
            node = disjunction();
            if (!accept(")")) fail("expected AND, OR or \")\"");
            return node;
        }
        comparison(node);
        return node;
    }

    void comparison(PredicateNode& node) {
        node.kind = PredicateNode::Kind::comparison;
        operand(node.left);
        node.comparison = comparisonOperator();
        modifiers(node);
        skipSpace();
        const std::size_t place = position_;
        operand(node.right);
        if (node.comparison == ComparisonOperator::between && format_[place] == '{' &&
            elementCount(node.right) != 2)
            failAt(place, "expected a list of two, the lowest and the highest");
    }

    static std::size_t elementCount(const PredicateOperand& list) {
        return list.kind == PredicateOperand::Kind::list ? list.list.size() : list.constant.asArray()->size();
    }

    ComparisonOperator comparisonOperator() {
        skipSpace();
        if (accept("==")) return ComparisonOperator::equal;
        if (accept("<=") || accept("=<")) return ComparisonOperator::lessOrEqual;
        if (accept(">=") || accept("=>")) return ComparisonOperator::greaterOrEqual;
        if (accept("!=") || accept("<>")) return ComparisonOperator::notEqual;
        if (accept("=")) return ComparisonOperator::equal;
        if (accept("<")) return ComparisonOperator::less;
        if (accept(">")) return ComparisonOperator::greater;
        switch (acceptWord([](Word word) { return word >= Word::between; })) {
            case Word::between:
                return ComparisonOperator::between;
            case Word::in:
                return ComparisonOperator::in;
            case Word::contains:
                return ComparisonOperator::contains;
            case Word::beginsWith:
                return ComparisonOperator::beginsWith;
            case Word::endsWith:
                return ComparisonOperator::endsWith;
            case Word::like:
                return ComparisonOperator::like;
            default:
                fail("expected a comparison such as == or CONTAINS");
        }
    }

    void modifiers(PredicateNode& node) {
        skipSpace();
        const std::size_t place = position_;
        if (!accept("[")) return;
        if (node.comparison == ComparisonOperator::between)
            failAt(place, "expected a list: BETWEEN takes no modifier");
        while (!accept("]")) {
            const char letter = static_cast<char>(peek() | 0x20);
            bool* flag = letter == 'c' ? &node.ignoreCase : letter == 'd' ? &node.ignoreDiacritics : nullptr;
            if (!flag || *flag) fail("expected [c], [d] or [cd]");
            *flag = true;
            ++position_;
        }
    }

    void operand(PredicateOperand& result) {
        skipSpace();
        const char c = peek();
        if (c == '%') return placeHolder(result);
        if (atKey()) return keyPathOrWord(result);
        if (atText()) {
            result.constant = Value(text());
        } else if (c == '{') {
            list(result);
        } else if (atNumber()) {
            result.constant = number();
        } else {
            fail("expected a key path, a value or a place holder");
        }
    }

    void placeHolder(PredicateOperand& result) {
        const char kind = peek(1);
        if (kind != '@' && kind != 'K') fail("expected %@ or %K");
        if (usedArguments_ == arguments_.size())
            fail("expected an argument for this place holder, but only " + std::to_string(arguments_.size()) +
                 " were given");
        const Value& argument = arguments_[usedArguments_++];
        if (kind == '@') {
            result.constant = argument;
        } else {
            const std::string* path = argument.asString();
            if (!path || !isKeyPath(*path)) fail("expected an argument that holds a key path as text");
            result.kind = PredicateOperand::Kind::keyPath;
            result.keyPath = *path;
        }
        position_ += 2;
    }

    void keyPathOrWord(PredicateOperand& result) {
        const std::size_t start = position_;
        while (true) {
            const std::size_t end = keyEnd(format_, position_);
            if (end == position_) fail("expected a key");
            position_ = end;
            if (peek() != '.') break;
            ++position_;
        }
        std::string_view path = format_.substr(start, position_ - start);
        const std::size_t stop = path.find('.');
        const Word word = predicateWordOf(path.substr(0, stop));
        result.kind = PredicateOperand::Kind::keyPath;
        if (stop != std::string_view::npos) {
            if (word == Word::self) path.remove_prefix(stop + 1);
            result.keyPath = path;
            return;
        }
        switch (word) {
            case Word::none:
                result.keyPath = path;
                return;
            case Word::self:
                result.kind = PredicateOperand::Kind::self;
                return;
            case Word::yes:
                result.constant = true;
                break;
            case Word::no:
                result.constant = false;
                break;
            case Word::null:
                break;
            default:
                failAt(start, "expected a key path, a value or a place holder");
        }
        result.kind = PredicateOperand::Kind::constant;
    }

    void list(PredicateOperand& result) {
        const Level level(*this);
        ++position_;
        std::vector<PredicateOperand> elements;
        if (!accept("}")) {
            do operand(elements.emplace_back());
            while (accept(","));
            if (!accept("}")) fail("expected \",\" or \"}\"");
        }
        const bool isConstant = std::all_of(
            elements.begin(), elements.end(),
            [](const PredicateOperand& element) { return element.kind == PredicateOperand::Kind::constant; });
        if (!isConstant) {
            result.kind = PredicateOperand::Kind::list;
            result.list = std::move(elements);
            return;
        }
        Value::Array values;
        values.reserve(elements.size());
        for (PredicateOperand& element : elements) values.push_back(std::move(element.constant));
        result.constant = Value(std::move(values));
    }

    std::span<const Value> arguments_;
    std::size_t usedArguments_ = 0;
    int depth_ = 0;
};

}  // namespace

PredicateNode parsePredicate(std::string_view format, std::span<const Value> arguments) {
    return PredicateParser(format, arguments).parse();
}

bool isKeyPath(std::string_view text) {
    std::size_t position = 0;
    while (true) {
        const std::size_t end = keyEnd(text, position);
        if (end == position) return false;
        if (end == text.size()) return true;
        if (text[end] != '.') return false;
        position = end + 1;
    }
}

bool keyPathNeedsSelf(std::string_view keyPath) {
    const std::size_t stop = keyPath.find('.');
    const Word word = predicateWordOf(keyPath.substr(0, stop));
    return stop == std::string_view::npos ? word != Word::none : word == Word::self;
}

}  // namespace orvane
