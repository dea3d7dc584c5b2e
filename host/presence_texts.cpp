#include "host/presence_texts.h"

#include "host/terminal.h"
#include "platform/platform.h"
#include "reporting/orvane_presence.h"

namespace orvane::host {

namespace {

/// Part of the local form of a date: characters of "2026-03-02 08:00".
ValueTransformers::Transformer part(std::size_t start, std::size_t length) {
    return [=](const Value& value) {
        const Date* date = value.asDate();
        return date ? localText(*date).substr(start, length) : std::string("-");
    };
}

}  // namespace

void usePresenceTexts() {
    ValueTransformers& transformers = Platform::current().valueTransformers();
    transformers.setValueTransformer(part(0, 10), shortDateTransformerName);
    transformers.setValueTransformer(part(11, 5), shortTimeTransformerName);
}

}  // namespace orvane::host
