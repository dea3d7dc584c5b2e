#include "codegen/model_file.h"

#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include <nlohmann/json.hpp>

#include "codegen/names.h"

namespace orvane::codegen {

namespace {

using Json = nlohmann::json;

constexpr AttributeType attributeTypes[] = {
    {"boolean", "@BooleanSlot", "boolean", "std::optional<bool>", "std::optional<bool>", true, true},
    {"integer32", "@IntegerSlot", "integer32", "std::optional<std::int64_t>", "std::optional<std::int64_t>"},
    {"integer64", "@IntegerSlot", "integer64", "std::optional<std::int64_t>", "std::optional<std::int64_t>"},
    {"real", "@RealSlot", "real", "std::optional<double>", "std::optional<double>"},
    {"decimal", "@DecimalSlot", "decimal", "std::optional<@DecimalSeconds>",
     "std::optional<@DecimalSeconds>"},
    {"date", "@DateSlot", "date", "std::optional<@Date>", "std::optional<@Date>"},
    {"text", "@TextSlot", "text", "std::optional<std::string_view>", "std::optional<std::string_view>"},
    {"data", "@TextSlot", "data", "std::optional<@Data>", "const std::optional<@Data>&", false},
};

const AttributeType* attributeType(const std::string& name) {
    for (const AttributeType& type : attributeTypes)
        if (type.name == name) return &type;
    return nullptr;
}

Json readJson(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw ModelError(file.string() + ": cannot be read");
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw ModelError(file.string() + ": " + error.what());
    }
}

/// Reads one version; knows where it is for error messages.
class VersionReader {
  public:
    VersionReader(std::string file, const Json& json) : place_(std::move(file)), json_(json) {}

    Model read() {
        Model model{text(json_, "name"), {}};
        for (const Json& entity : list(json_, "entities")) noteEntity(entity);
        for (const Json& entity : list(json_, "entities"))
            if (!classes_.at(text(entity, "name")).empty()) model.entities.push_back(readEntity(entity));
        if (model.entities.empty()) fail("no entity has a class");
        return model;
    }

  private:
    [[noreturn]] void fail(const std::string& problem) const { throw ModelError(place_ + ": " + problem); }

    std::string text(const Json& json, const char* key) const {
        if (!json.is_object()) fail("expected an object where there is " + json.dump());
        const auto found = json.find(key);
        if (found == json.end()) fail("\"" + std::string(key) + "\" is missing");
        if (!found->is_string() || found->get_ref<const std::string&>().empty())
            fail("\"" + std::string(key) + "\" must be a text");
        return *found;
    }
    std::string textOr(const Json& json, const char* key, const std::string& absent) const {
        return json.is_object() && json.contains(key) ? text(json, key) : absent;
    }
    /// An absent list is empty.
    Json list(const Json& json, const char* key) const {
        if (!json.is_object()) fail("expected an object where there is " + json.dump());
        const auto found = json.find(key);
        if (found == json.end()) return Json::array();
        if (!found->is_array()) fail("\"" + std::string(key) + "\" must be a list");
        return *found;
    }

    void noteEntity(const Json& json) {
        const std::string name = text(json, "name");
        if (!std::regex_match(name, std::regex("[A-Za-z][A-Za-z0-9_]*")))
            fail("entity \"" + name + "\": names of entities are letters, digits and underscores");
        const std::string className = textOr(json, "class", "");
        if (!classes_.emplace(name, className).second) fail("two entities are named \"" + name + "\"");
        if (className.empty()) return;
        if (!std::regex_match(className, std::regex("[A-Z][A-Za-z0-9]*")))
            fail("entity \"" + name + "\": class \"" + className +
                 "\" must be letters and digits, the first a capital");
        if (!files_.insert(snakeCase(className)).second)
            fail("entity \"" + name +
                 "\": another class has the same name, or one that gives the same file name");
    }

    Entity readEntity(const Json& json) {
        Entity entity{text(json, "name"), textOr(json, "class", ""), {}, {}};
        const std::string outside = place_;
        place_ += ": entity \"" + entity.name + "\"";
        for (const Json& attribute : list(json, "attributes"))
            entity.attributes.push_back(readAttribute(attribute));
        for (const Json& relationship : list(json, "relationships"))
            entity.relationships.push_back(readRelationship(relationship));
        if (entity.attributes.empty() && entity.relationships.empty()) fail("it has no properties");
        if (const auto problem = problemWithNames(entity)) fail(*problem);
        place_ = outside;
        return entity;
    }

    Attribute readAttribute(const Json& json) const {
        const std::string name = text(json, "name");
        const std::string type = text(json, "type");
        const AttributeType* known = attributeType(type);
        if (!known) {
            std::string message =
                "attribute \"" + name + "\" has the unknown type \"" + type + "\"; types are";
            for (const AttributeType& each : attributeTypes) message += " " + std::string(each.name);
            fail(message);
        }
        return {name, known};
    }

    Relationship readRelationship(const Json& json) const {
        const std::string name = text(json, "name");
        const std::string destination = text(json, "destination");
        const auto found = classes_.find(destination);
        if (found == classes_.end())
            fail("relationship \"" + name + "\" leads to the unknown entity \"" + destination + "\"");
        const auto toMany = json.find("toMany");
        if (toMany != json.end() && !toMany->is_boolean()) fail("\"toMany\" must be true or false");
        return {name, toMany != json.end() && toMany->get<bool>(),
                found->second.empty() ? "@ManagedObject" : found->second};
    }

    std::string place_;
    const Json& json_;
    std::map<std::string, std::string> classes_;  // by entity; empty for entities without one
    std::set<std::string> files_;
};

}  // namespace

Model readModel(const std::filesystem::path& folder) {
    const std::filesystem::path versions = folder / "versions.json";
    const Json json = readJson(versions);
    const auto current = json.is_object() ? json.find("current") : json.end();
    if (current == json.end() || !current->is_string())
        throw ModelError(versions.string() + ": \"current\" must name a version");
    const std::filesystem::path file = folder / (current->get<std::string>() + ".json");
    const Json version = readJson(file);
    return VersionReader(file.string(), version).read();
}

std::string snakeCase(const std::string& className) {
    static const std::regex endOfCapitals("([A-Z]+)([A-Z][a-z])");
    static const std::regex startOfWord("([a-z0-9])([A-Z])");
    std::string result = std::regex_replace(className, endOfCapitals, "$1_$2");
    result = std::regex_replace(result, startOfWord, "$1_$2");
    for (char& letter : result) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return result;
}

std::string capitalized(std::string text) {
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}

}  // namespace orvane::codegen
