#include "persistence/model_reader.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

#include "persistence/model_writer.h"
#include "persistence/persistence_errors.h"

namespace orvane {

namespace {

using Json = nlohmann::json;

/// Ends the reading of one text; caught where that began.
struct Malformed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string inQuotes(std::string_view name) { return "\"" + std::string(name) + "\""; }

/// One JSON object of a model text, with the place it stands at for messages.
class Node {
  public:
    Node(const Json& json, std::string place, std::initializer_list<std::string_view> knownMembers)
        : json_(json), place_(std::move(place)) {
        if (!json_.is_object()) fail("must be a JSON object");
        for (const auto& [member, value] : json_.items())
            if (std::ranges::find(knownMembers, member) == knownMembers.end())
                fail("the member " + inQuotes(member) + " is unknown");
    }

    [[noreturn]] void fail(const std::string& what) const { throw Malformed(place_ + what); }

    const Json* find(const char* member) const {
        const auto found = json_.find(member);
        return found == json_.end() ? nullptr : &*found;
    }
    const Json& need(const char* member) const {
        if (const Json* found = find(member)) return *found;
        fail("the member " + inQuotes(member) + " is missing");
    }
    std::string text(const char* member) const {
        const Json& value = need(member);
        if (!value.is_string()) fail(inQuotes(member) + " must be a text");
        return value.get<std::string>();
    }
    bool booleanOr(const char* member, bool absent) const {
        const Json* value = find(member);
        if (value && !value->is_boolean()) fail(inQuotes(member) + " must be true or false");
        return value ? value->get<bool>() : absent;
    }
    /// The elements of a list; none when the member is absent.
    std::vector<Json> listOr(const char* member) const {
        const Json* value = find(member);
        if (value && !value->is_array()) fail(inQuotes(member) + " must be a list");
        return value ? value->get<std::vector<Json>>() : std::vector<Json>();
    }
    std::string identifier(const char* member) const {
        std::string result = text(member);
        const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
        const auto isPart = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; };
        if (result.empty() || !isLetter(result[0]) || !std::ranges::all_of(result, isPart))
            fail(inQuotes(result) + " is no name: letters, digits and underscores, a letter first");
        return result;
    }
    std::string identifierOr(const char* member, const std::string& absent) const {
        return find(member) ? identifier(member) : absent;
    }

  private:
    const Json& json_;
    std::string place_;
};

std::string folded(std::string name) {
    for (char& c : name)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return name;
}

std::string nameForPlace(const Json& json) {
    const Json name = json.is_object() ? json.value("name", Json()) : Json();
    return name.is_string() ? inQuotes(name.get<std::string>()) : "without a name";
}

std::optional<AttributeType> typeNamed(std::string_view name) {
    for (const AttributeType type :
         {AttributeType::boolean, AttributeType::integer32, AttributeType::integer64, AttributeType::real,
          AttributeType::decimal, AttributeType::date, AttributeType::text, AttributeType::data})
        if (name == nameOfType(type)) return type;
    return std::nullopt;
}

/// Exactly the texts that `decimalText` writes.
std::optional<DecimalSeconds> decimalFromText(const std::string& text) {
    const std::size_t point = text.find('.');
    if (point == std::string::npos) return std::nullopt;
    const std::string digits = text.substr(0, point) + text.substr(point + 1);
    std::int64_t microseconds = 0;
    const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), microseconds);
    const DecimalSeconds result(microseconds);
    if (failure != std::errc() || end != digits.data() + digits.size() || decimalText(result) != text)
        return std::nullopt;
    return result;
}

std::optional<Data> dataFromText(const std::string& text) {
    if (text.size() % 2 != 0) return std::nullopt;
    Data result(text.size() / 2);
    for (std::size_t i = 0; i < result.size(); ++i) {
        const char* digits = text.data() + 2 * i;
        if (std::from_chars(digits, digits + 2, result[i], 16).ptr != digits + 2) return std::nullopt;
    }
    return result;
}

/// The default value; none when it is not of the attribute's type.
std::optional<Value> defaultOfType(const Json& json, AttributeType type) {
    switch (type) {
        case AttributeType::boolean:
            return json.is_boolean() ? std::optional<Value>(json.get<bool>()) : std::nullopt;
        case AttributeType::integer32:
        case AttributeType::integer64: {
            if (!json.is_number_integer()) return std::nullopt;
            const std::int64_t number = json.get<std::int64_t>();
            if (json.is_number_unsigned() && number < 0) return std::nullopt;  // beyond 63 bits
            if (type == AttributeType::integer32 && !std::in_range<std::int32_t>(number)) return std::nullopt;
            return Value(number);
        }
        case AttributeType::real:
            return json.is_number() ? std::optional<Value>(json.get<double>()) : std::nullopt;
        case AttributeType::date:
            return json.is_number() ? std::optional<Value>(dateFromSecondsSinceEpoch(json.get<double>()))
                                    : std::nullopt;
        case AttributeType::decimal:
            if (json.is_string())
                if (const auto decimal = decimalFromText(json.get<std::string>())) return Value(*decimal);
            return std::nullopt;
        case AttributeType::text:
            return json.is_string() ? std::optional<Value>(json.get<std::string>()) : std::nullopt;
        case AttributeType::data:
            if (json.is_string())
                if (auto data = dataFromText(json.get<std::string>())) return Value(std::move(*data));
            return std::nullopt;
    }
    return std::nullopt;
}

AttributeDescription attributeFrom(const Json& json, const std::string& entityPlace) {
    const Node node(json, entityPlace + "attribute " + nameForPlace(json) + ": ",
                    {"name", "type", "optional", "default", "renamedFrom"});
    AttributeDescription result;
    result.name = node.identifier("name");
    const std::string typeName = node.text("type");
    const auto type = typeNamed(typeName);
    if (!type) node.fail("the type " + inQuotes(typeName) + " is unknown");
    result.type = *type;
    result.optional = node.booleanOr("optional", true);
    if (const Json* given = node.find("default")) {
        const auto value = defaultOfType(*given, result.type);
        if (!value) node.fail("the default value " + given->dump() + " is not of type " + typeName);
        result.defaultValue = *value;
    }
    result.renamingIdentifier = node.identifierOr("renamedFrom", result.name);
    return result;
}

RelationshipDescription relationshipFrom(const Json& json, const std::string& entityPlace) {
    const Node node(json, entityPlace + "relationship " + nameForPlace(json) + ": ",
                    {"name", "destination", "inverse", "toMany", "optional", "deleteRule", "renamedFrom"});
    RelationshipDescription result;
    result.name = node.identifier("name");
    result.destination = node.identifier("destination");
    result.inverse = node.identifier("inverse");
    result.toMany = node.booleanOr("toMany", false);
    result.optional = node.booleanOr("optional", true);
    const std::string rule = node.find("deleteRule") ? node.text("deleteRule") : "nullify";
    if (rule != "nullify" && rule != "cascade")
        node.fail("the delete rule " + inQuotes(rule) + " is unknown");
    result.deleteRule = rule == "cascade" ? DeleteRule::cascade : DeleteRule::nullify;
    result.renamingIdentifier = node.identifierOr("renamedFrom", result.name);
    return result;
}

/// No two of the descriptions may share a name, nor go back to one name of the version before.
template <class Description>
void demandDistinct(const std::vector<Description>& descriptions, const char* kind,
                    std::set<std::string>& names, const std::string& place) {
    std::set<std::string> origins;
    for (const Description& description : descriptions) {
        if (!names.insert(folded(description.name)).second)
            throw Malformed(place + kind + " " + inQuotes(description.name) +
                            ": the name is taken (case does not tell names apart)");
        if (!origins.insert(folded(description.renamingIdentifier)).second)
            throw Malformed(place + kind + " " + inQuotes(description.name) + ": another one goes back to " +
                            inQuotes(description.renamingIdentifier) + " too");
    }
}

IndexDescription indexFrom(const Json& json, const EntityDescription& entity, const std::string& place) {
    IndexDescription result;
    if (!json.is_array() || json.empty())
        throw Malformed(place + "an index must be a list of property names");
    for (const Json& property : json) {
        if (!property.is_string()) throw Malformed(place + "an index must be a list of property names");
        const std::string name = property.get<std::string>();
        const RelationshipDescription* relationship = entity.relationship(name);
        if (!entity.attribute(name) && !relationship)
            throw Malformed(place + "index over the unknown property " + inQuotes(name));
        if (relationship && relationship->toMany)
            throw Malformed(place + "index over the to-many relationship " + inQuotes(name));
        if (std::ranges::count(json, property) > 1)
            throw Malformed(place + "an index names the property " + inQuotes(name) + " twice");
        result.properties.push_back(name);
    }
    return result;
}

IntervalDescription intervalFrom(const Json& json, const EntityDescription& entity,
                                 const std::string& entityPlace) {
    const Node node(json, entityPlace + "interval: ", {"start", "end"});
    IntervalDescription result{node.text("start"), node.text("end")};
    const AttributeDescription* start = entity.attribute(result.start);
    const AttributeDescription* end = entity.attribute(result.end);
    for (const auto& [name, attribute] : {std::pair(result.start, start), std::pair(result.end, end)}) {
        if (!attribute) node.fail("the attribute " + inQuotes(name) + " is unknown");
        if (attribute->type == AttributeType::boolean || attribute->type == AttributeType::text ||
            attribute->type == AttributeType::data)
            node.fail("the attribute " + inQuotes(name) + " is neither a date nor a number");
    }
    if (start == end) node.fail("start and end are the same attribute");
    if (start->type != end->type)
        node.fail(inQuotes(result.start) + " and " + inQuotes(result.end) + " are of different types");
    return result;
}

template <class Description>
void demandNoTwins(const std::vector<Description>& descriptions, const std::string& complaint) {
    for (auto i = descriptions.begin(); i != descriptions.end(); ++i)
        if (std::find(std::next(i), descriptions.end(), *i) != descriptions.end()) throw Malformed(complaint);
}

EntityDescription entityFrom(const Json& json, const std::string& source) {
    const std::string place = source + "entity " + nameForPlace(json) + ", ";
    const Node node(json, source + "entity " + nameForPlace(json) + ": ",
                    {"name", "class", "renamedFrom", "attributes", "relationships", "indexes", "intervals"});
    EntityDescription result;
    result.name = node.identifier("name");
    if (folded(result.name).starts_with("sqlite_"))
        node.fail("names that begin with \"sqlite_\" are reserved");
    result.className = node.identifierOr("class", {});
    result.renamingIdentifier = node.identifierOr("renamedFrom", result.name);
    for (const Json& attribute : node.listOr("attributes"))
        result.attributes.push_back(attributeFrom(attribute, place));
    for (const Json& relationship : node.listOr("relationships"))
        result.relationships.push_back(relationshipFrom(relationship, place));
    std::set<std::string> names;
    demandDistinct(result.attributes, "attribute", names, place);
    demandDistinct(result.relationships, "relationship", names, place);
    if (result.propertyCount() > ModelReader::maximumProperties)
        node.fail("has more than " + std::to_string(ModelReader::maximumProperties) + " properties");
    for (const Json& index : node.listOr("indexes"))
        result.indexes.push_back(indexFrom(index, result, place));
    for (const Json& interval : node.listOr("intervals"))
        result.intervals.push_back(intervalFrom(interval, result, place));
    demandNoTwins(result.indexes, place + "an index is given twice");
    demandNoTwins(result.intervals, place + "an interval is given twice");
    return result;
}

void checkRelationships(const ManagedObjectModel& model, const std::string& source) {
    for (const EntityDescription& entity : model.entities()) {
        for (const RelationshipDescription& relationship : entity.relationships) {
            const std::string place = source + "entity " + inQuotes(entity.name) + ", relationship " +
                                      inQuotes(relationship.name) + ": ";
            const EntityDescription* destination = model.entity(relationship.destination);
            if (!destination)
                throw Malformed(place + "the destination " + inQuotes(relationship.destination) +
                                " is no entity");
            const RelationshipDescription* inverse = destination->relationship(relationship.inverse);
            if (!inverse)
                throw Malformed(place + "the inverse " + inQuotes(relationship.inverse) +
                                " is no relationship of " + inQuotes(destination->name));
            if (inverse->destination != entity.name || inverse->inverse != relationship.name)
                throw Malformed(place + "its inverse " + inQuotes(relationship.inverse) +
                                " does not lead back to it");
            if (inverse == &relationship)
                throw Malformed(place + "a relationship that is its own inverse is not supported");
            if (relationship.toMany && inverse->toMany)
                throw Malformed(place + "to-many at both ends is not supported; put an entity in between");
        }
    }
}

/// Parses JSON in which no object has a member twice; the parser by itself would silently take the last.
Json parsed(std::string_view text, const std::string& source) {
    std::vector<std::set<std::string>> open;
    std::optional<std::string> twice;
    const auto watch = [&](int, Json::parse_event_t event, Json& value) {
        if (event == Json::parse_event_t::object_start) open.emplace_back();
        if (event == Json::parse_event_t::object_end) open.pop_back();
        if (event == Json::parse_event_t::key && !open.back().insert(value.get<std::string>()).second)
            twice = value.get<std::string>();
        return true;
    };
    try {
        Json json = Json::parse(text, watch);
        if (twice) throw Malformed(source + "the member " + inQuotes(*twice) + " stands twice in one object");
        return json;
    } catch (const Json::parse_error& failure) {
        throw Malformed(source + "is not JSON (at byte " + std::to_string(failure.byte) + ")");
    } catch (const Json::out_of_range&) {
        throw Malformed(source + "a number in it is out of range");
    }
}

}  // namespace

std::shared_ptr<const ManagedObjectModel> ModelReader::read(std::string_view text,
                                                            std::string_view sourceName, Error* error) {
    const std::string source = std::string(sourceName) + ": ";
    try {
        const Json json = parsed(text, source);
        const Node node(json, source, {"name", "version", "entities"});
        const auto model = std::make_shared<ManagedObjectModel>();
        model->name_ = node.identifier("name");
        const Json& version = node.need("version");
        if (!version.is_number_unsigned() || version.get<std::uint64_t>() == 0 ||
            !std::in_range<int>(version.get<std::uint64_t>()))
            node.fail("\"version\" must be a whole number from 1");
        model->version_ = version.get<int>();
        node.need("entities");
        for (const Json& entity : node.listOr("entities")) {
            model->entities_.push_back(entityFrom(entity, source));
            model->entities_.back().index = model->entities_.size() - 1;
        }
        std::set<std::string> names;
        demandDistinct(model->entities_, "entity", names, source);
        checkRelationships(*model, source);
        model->text_ = modelText(*model);
        return model;
    } catch (const Malformed& failure) {
        assignError(error, Error(persistenceErrorDomain, modelMalformedError, failure.what()));
        return nullptr;
    }
}

std::optional<ModelReader::Title> ModelReader::readTitle(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto name = json.find("name");
    const auto version = json.find("version");
    if (name == json.end() || version == json.end() || !name->is_string() || !version->is_number_unsigned() ||
        !std::in_range<int>(version->get<std::uint64_t>()))
        return std::nullopt;
    return Title{name->get<std::string>(), version->get<int>()};
}

}  // namespace orvane
