#include "persistence/model_writer.h"

#include <nlohmann/json.hpp>

namespace orvane {

namespace {

using Json = nlohmann::ordered_json;

Json defaultValue(const Value& value) {
    if (const bool* boolean = value.asBool()) return *boolean;
    if (const std::int64_t* integer = value.asInteger()) return *integer;
    if (const double* real = value.asDouble()) return *real;
    if (const Date* date = value.asDate()) return secondsSinceEpoch(*date);
    if (const DecimalSeconds* decimal = value.asDecimal()) return decimalText(*decimal);
    if (const std::string* text = value.asString()) return *text;
    std::string hexadecimal;
    for (const std::uint8_t byte : *value.asData()) {
        hexadecimal += "0123456789abcdef"[byte >> 4];
        hexadecimal += "0123456789abcdef"[byte & 15];
    }
    return hexadecimal;
}

template <class Description>
void writeRenaming(Json& json, const Description& description) {
    if (description.renamingIdentifier != description.name)
        json["renamedFrom"] = description.renamingIdentifier;
}

Json attributeJson(const AttributeDescription& attribute) {
    Json json = {{"name", attribute.name}, {"type", nameOfType(attribute.type)}};
    if (!attribute.optional) json["optional"] = false;
    if (!attribute.defaultValue.isNone()) json["default"] = defaultValue(attribute.defaultValue);
    writeRenaming(json, attribute);
    return json;
}

Json relationshipJson(const RelationshipDescription& relationship) {
    Json json = {{"name", relationship.name},
                 {"destination", relationship.destination},
                 {"inverse", relationship.inverse}};
    if (relationship.toMany) json["toMany"] = true;
    if (!relationship.optional) json["optional"] = false;
    if (relationship.deleteRule == DeleteRule::cascade) json["deleteRule"] = "cascade";
    writeRenaming(json, relationship);
    return json;
}

Json entityJson(const EntityDescription& entity) {
    Json json = {{"name", entity.name}};
    if (!entity.className.empty()) json["class"] = entity.className;
    writeRenaming(json, entity);
    for (const AttributeDescription& attribute : entity.attributes)
        json["attributes"].push_back(attributeJson(attribute));
    for (const RelationshipDescription& relationship : entity.relationships)
        json["relationships"].push_back(relationshipJson(relationship));
    for (const IndexDescription& index : entity.indexes) json["indexes"].push_back(index.properties);
    for (const IntervalDescription& interval : entity.intervals)
        json["intervals"].push_back({{"start", interval.start}, {"end", interval.end}});
    return json;
}

}  // namespace

const char* nameOfType(AttributeType type) {
    switch (type) {
        case AttributeType::boolean:
            return "boolean";
        case AttributeType::integer32:
            return "integer32";
        case AttributeType::integer64:
            return "integer64";
        case AttributeType::real:
            return "real";
        case AttributeType::decimal:
            return "decimal";
        case AttributeType::date:
            return "date";
        case AttributeType::text:
            return "text";
        case AttributeType::data:
            return "data";
    }
    return "";
}

std::string modelText(const ManagedObjectModel& model) {
    Json json = {{"name", model.name()}, {"version", model.version()}, {"entities", Json::array()}};
    for (const EntityDescription& entity : model.entities()) json["entities"].push_back(entityJson(entity));
    return json.dump();
}

}  // namespace orvane
