#include "foundation/keyed_object.h"

#include "foundation/observer_list.h"

namespace orvane {

namespace {

struct SplitPath {
    std::string_view key;
    std::optional<std::string_view> rest;
};

SplitPath split(std::string_view keyPath) {
    const std::size_t dot = keyPath.find('.');
    if (dot == std::string_view::npos) return {keyPath, std::nullopt};
    return {keyPath.substr(0, dot), keyPath.substr(dot + 1)};
}

Value eachValueForKey(const Value::Array& elements, std::string_view key) {
    Value::Array answers;
    answers.reserve(elements.size());
    for (const Value& element : elements) {
        Value answer = valueForKeyPath(element, key);
        if (!answer.isNone()) answers.push_back(std::move(answer));
    }
    return answers;
}

}  // namespace

KeyedObject::KeyedObject() = default;

KeyedObject::~KeyedObject() {
    if (observers_) observers_->objectGone();
}

Value KeyedObject::valueForKey(std::string_view key) const {
    const Key* found = keyTable().find(key);
    if (!found) throw UnknownKeyError(keyTable().className(), key);
    return found->get(*this);
}

void KeyedObject::setValueForKey(const Value& value, std::string_view key) {
    const Key* found = keyTable().find(key);
    if (!found || !found->set) throw UnknownKeyError(keyTable().className(), key);
    found->set(*this, value);
}

Value KeyedObject::valueForKeyPath(std::string_view keyPath) const {
    const auto [key, rest] = split(keyPath);
    if (rest && rest->starts_with('@')) {
        const auto [operation, operand] = split(*rest);
        if (auto answer = valueForCollectionOperator(key, operation.substr(1), operand.value_or("")))
            return *std::move(answer);
    }
    Value value = valueForKey(key);
    return rest ? orvane::valueForKeyPath(value, *rest) : value;
}

void KeyedObject::setValueForKeyPath(const Value& value, std::string_view keyPath) {
    const std::size_t last = keyPath.rfind('.');
    if (last == std::string_view::npos) return setValueForKey(value, keyPath);
    // Nobody is there to take the value when the path leads to none.
    if (const Ref<KeyedObject> owner = valueForKeyPath(keyPath.substr(0, last)).asObject())
        owner->setValueForKey(value, keyPath.substr(last + 1));
}

std::optional<Value> KeyedObject::valueForCollectionOperator(std::string_view, std::string_view,
                                                             std::string_view) const {
    return std::nullopt;
}

void KeyedObject::willChangeValueForKey(std::string_view key) {
    if (observers_) observers_->willChange(key);
}

void KeyedObject::didChangeValueForKey(std::string_view key) {
    if (!observers_) return;
    // A handler may let go of the last handle. An object that has none yet, or none any more, is its maker's.
    const Ref<KeyedObject> held(referenceCount() > 0 ? this : nullptr);
    observers_->didChange(key);
}

ObserverList& KeyedObject::observerList() {
    if (!observers_) observers_ = std::make_unique<ObserverList>(*this);
    return *observers_;
}

void KeyedObject::dropObserverList() { observers_.reset(); }

Value valueForKeyPath(const Value& root, std::string_view keyPath) {
    if (root.isNone()) return {};
    if (const Ref<KeyedObject> object = root.asObject()) return object->valueForKeyPath(keyPath);
    const auto [key, rest] = split(keyPath);
    const Value::Array* elements = root.asArray();
    if (elements && key.starts_with('@'))
        return collectionOperator(key.substr(1), *elements, rest.value_or(""));
    Value value;
    if (elements)
        value = eachValueForKey(*elements, key);
    else if (const Dictionary* dictionary = root.asDictionary())
        value = (*dictionary)[key];
    else
        throw UnknownKeyError(root.kindName(), key);
    return rest ? valueForKeyPath(value, *rest) : value;
}

}  // namespace orvane
