#include "persistence/model.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "persistence/model_reader.h"
#include "persistence/persistence_errors.h"

namespace orvane {

namespace {

template <class Description>
const Description* named(const std::vector<Description>& descriptions, std::string_view name) {
    const auto found = std::ranges::find(descriptions, name, &Description::name);
    return found == descriptions.end() ? nullptr : &*found;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::optional<std::string> contentsOf(const std::filesystem::path& path, Error* error) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
    std::string result;
    bool whole = false;
    if (file) {
        char block[4096];
        while (const std::size_t count = std::fread(block, 1, sizeof block, file.get()))
            result.append(block, count);
        whole = std::ferror(file.get()) == 0;  // a folder opens, but does not read
    }
    if (whole) return result;
    assignError(error, Error(persistenceErrorDomain, modelMissingError,
                             "The data model file \"" + path.string() +
                                 "\" is missing or cannot be read. Install the application again."));
    return std::nullopt;
}

/// Name of the current version: the only one that is read; the others are kept to tell how the model came
/// about.
std::optional<std::string> currentVersion(std::string_view text, const std::filesystem::path& source,
                                          Error* error) {
    const auto malformed = [&](const std::string& what) {
        assignError(error, Error(persistenceErrorDomain, modelMalformedError, source.string() + ": " + what));
        return std::nullopt;
    };
    const auto json = nlohmann::json::parse(text, nullptr, false);
    if (json.is_discarded()) return malformed("is not JSON");
    if (!json.is_object() || json.size() != 2 || !json.contains("current") || !json.contains("versions"))
        return malformed("must hold \"current\" and \"versions\" and nothing else");
    const auto& current = json["current"];
    const auto& versions = json["versions"];
    if (!current.is_string() || !versions.is_array())
        return malformed("\"current\" must be a text, \"versions\" a list");
    for (const auto& version : versions) {
        if (!version.is_string()) return malformed("\"versions\" must hold texts");
        const std::string name = version.get<std::string>();
        if (name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos)
            return malformed("\"" + name + "\" is no name of a version");
        if (std::ranges::count(versions, version) > 1) return malformed("\"" + name + "\" is listed twice");
    }
    if (std::ranges::find(versions, current) == versions.end())
        return malformed("the current version \"" + current.get<std::string>() +
                         "\" is not listed in \"versions\"");
    return current.get<std::string>();
}

}  // namespace

const AttributeDescription* EntityDescription::attribute(std::string_view attributeName) const {
    return named(attributes, attributeName);
}

const RelationshipDescription* EntityDescription::relationship(std::string_view relationshipName) const {
    return named(relationships, relationshipName);
}

std::optional<std::size_t> EntityDescription::propertyIndex(std::string_view propertyName) const {
    if (const auto* found = attribute(propertyName))
        return static_cast<std::size_t>(found - attributes.data());
    if (const auto* found = relationship(propertyName))
        return attributes.size() + static_cast<std::size_t>(found - relationships.data());
    return std::nullopt;
}

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::modelWithContentsOfURL(
    const std::filesystem::path& folder, Error* error) {
    const std::filesystem::path list = folder / "versions.json";
    const auto listText = contentsOf(list, error);
    if (!listText) return nullptr;
    const auto current = currentVersion(*listText, list, error);
    if (!current) return nullptr;
    const std::filesystem::path file = folder / (*current + ".json");
    const auto text = contentsOf(file, error);
    return text ? ModelReader::read(*text, file.string(), error) : nullptr;
}

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::modelWithText(std::string_view json,
                                                                            std::string_view sourceName,
                                                                            Error* error) {
    return ModelReader::read(json, sourceName, error);
}

const EntityDescription* ManagedObjectModel::entity(std::string_view name) const {
    return named(entities_, name);
}

const EntityDescription& destinationOf(const ManagedObjectModel& model,
                                       const RelationshipDescription& relationship) {
    const EntityDescription* destination = model.entity(relationship.destination);
    if (!destination)
        throw std::logic_error("relationship " + relationship.name + " belongs to another model");
    return *destination;
}

}  // namespace orvane
