#include <cstdlib>
#include <unordered_set>

#include "foundation/keyed_object.h"

namespace orvane {

namespace {

/// What each element answers, absent answers left out.
Value::Array answersOf(const Value::Array& elements, std::string_view keyPath) {
    Value::Array answers;
    answers.reserve(elements.size());
    for (const Value& element : elements) {
        Value answer = keyPath.empty() ? element : valueForKeyPath(element, keyPath);
        if (!answer.isNone()) answers.push_back(std::move(answer));
    }
    return answers;
}

/// Sums of integers stay integers and sums of decimals decimals for as long as they fit; all else is added up
/// in double precision.
Value sum(const Value::Array& numbers) {
    std::int64_t exact = 0;
    bool allIntegers = true;
    bool allDecimals = !numbers.empty();
    bool fits = true;
    double approximate = 0;
    for (const Value& number : numbers) {
        if (!number.isNumber()) throw WrongValueError("@sum", "element", "number", number);
        allDecimals &= number.asDecimal() != nullptr;
        allIntegers &= number.asInteger() || number.asBool();
        const std::int64_t whole = number.asDecimal() ? number.asDecimal()->count() : number.integerValue();
        fits = fits && !__builtin_add_overflow(exact, whole, &exact);
        approximate += number.doubleValue();
    }
    // An empty list holds no decimals, so its sum is the integer 0.
    if (fits && allDecimals) return DecimalSeconds(exact);
    if (fits && allIntegers) return exact;
    return approximate;
}

Value average(const Value::Array& numbers) {
    if (numbers.empty()) return 0.0;
    const Value total = sum(numbers);
    const auto count = static_cast<std::int64_t>(numbers.size());
    if (const DecimalSeconds* decimal = total.asDecimal()) {
        // Rounded to the nearest microsecond, halves away from zero.
        const std::int64_t rest = decimal->count() % count;
        const std::int64_t up = std::abs(rest) >= count - std::abs(rest) ? (rest < 0 ? -1 : 1) : 0;
        return DecimalSeconds(decimal->count() / count + up);
    }
    return total.doubleValue() / static_cast<double>(count);
}

Value extreme(const Value::Array& values, int sign) {
    Value best;
    for (const Value& value : values) {
        if (best.isNone() || value.compare(best).value_or(0) * sign > 0) best = value;
    }
    return best;
}

Value::Array distinct(const Value::Array& values) {
    struct Hash {
        std::size_t operator()(const Value* value) const { return value->hash(); }
    };
    struct Equal {
        bool operator()(const Value* left, const Value* right) const { return *left == *right; }
    };
    Value::Array result;
    std::unordered_set<const Value*, Hash, Equal> seen;
    for (const Value& value : values)
        if (seen.insert(&value).second) result.push_back(value);
    return result;
}

}  // namespace

Value collectionOperator(std::string_view operation, const Value::Array& elements, std::string_view rest) {
    if (operation == "count" && rest.empty()) return static_cast<std::int64_t>(elements.size());
    const Value::Array answers = answersOf(elements, rest);
    if (operation == "sum") return sum(answers);
    if (operation == "avg") return average(answers);
    if (operation == "max") return extreme(answers, 1);
    if (operation == "min") return extreme(answers, -1);
    if (operation == "unionOfObjects") return answers;
    if (operation == "distinctUnionOfObjects") return distinct(answers);
    throw UnknownKeyError("list", "@" + std::string(operation));
}

}  // namespace orvane
