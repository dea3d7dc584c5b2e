#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/error.h"
#include "foundation/value.h"

namespace orvane {

enum class AttributeType { boolean, integer32, integer64, real, decimal, date, text, data };

/// What becomes of the objects at the other end when an object is deleted: they lose the relationship, or are
/// deleted with it.
enum class DeleteRule { nullify, cascade };

struct AttributeDescription {
    std::string name;
    AttributeType type = AttributeType::text;
    bool optional = true;
    Value defaultValue;  ///< given to new objects, and to old rows when the attribute is added as required
    std::string renamingIdentifier;  ///< name in the version before; its own name unless renamed

    friend bool operator==(const AttributeDescription&, const AttributeDescription&) = default;
};

struct RelationshipDescription {
    std::string name;
    std::string destination;  ///< name of the entity at the other end
    std::string inverse;      ///< name of the relationship that leads back; every relationship has one
    bool toMany = false;
    bool optional = true;
    DeleteRule deleteRule = DeleteRule::nullify;
    std::string renamingIdentifier;

    friend bool operator==(const RelationshipDescription&, const RelationshipDescription&) = default;
};

/// An index over attributes and to-one relationships, in this order.
struct IndexDescription {
    std::vector<std::string> properties;

    friend bool operator==(const IndexDescription&, const IndexDescription&) = default;
};

/// Two attributes of one type that span an interval: in nearly every row the start does not lie after the
/// end. A fetch that bounds the start from below and the end from above then reads only rows between the two
/// bounds, and the rare inverted rows through a small index of their own.
struct IntervalDescription {
    std::string start;
    std::string end;

    friend bool operator==(const IntervalDescription&, const IntervalDescription&) = default;
};

/// One kind of object: attributes first, then relationships, each in the order of the model file. The
/// position in this joint order is the property's index.
class ORVANE_EXPORT EntityDescription {
  public:
    std::string name;
    std::string className;  ///< of the C++ class; empty for objects without a class of their own
    std::string renamingIdentifier;
    std::vector<AttributeDescription> attributes;
    std::vector<RelationshipDescription> relationships;
    std::vector<IndexDescription> indexes;
    std::vector<IntervalDescription> intervals;

    const AttributeDescription* attribute(std::string_view name) const;
    const RelationshipDescription* relationship(std::string_view name) const;

    /// Index of an attribute or relationship; none when there is no such property.
    std::optional<std::size_t> propertyIndex(std::string_view name) const;
    std::size_t propertyCount() const { return attributes.size() + relationships.size(); }
    /// Position within the model's entities.
    std::size_t index = 0;

    friend bool operator==(const EntityDescription&, const EntityDescription&) = default;
};

/// A set of entities as one version of a model resource describes it.
class ORVANE_EXPORT ManagedObjectModel {
  public:
    /// Loads the current version of a model resource: a folder `NAME.momd` with `versions.json`
    /// (`{"current": "Orvane 1", "versions": ["Orvane 1"]}`, oldest first) and one `VERSION.json` a version.
    /// None when it is missing or unreadable; the error names file and place.
    static std::shared_ptr<const ManagedObjectModel> modelWithContentsOfURL(
        const std::filesystem::path& folder, Error* error = nullptr);
    /// Reads one version's text. `sourceName` stands in error messages.
    static std::shared_ptr<const ManagedObjectModel> modelWithText(std::string_view json,
                                                                   std::string_view sourceName,
                                                                   Error* error = nullptr);

    /// Name of the model, the same in every version; a file written with another name belongs to another
    /// application.
    const std::string& name() const { return name_; }
    /// Number of the version, growing from version to version.
    int version() const { return version_; }
    const std::vector<EntityDescription>& entities() const { return entities_; }
    const EntityDescription* entity(std::string_view name) const;

    /// The version as JSON text, as it is kept in the metadata of every store. Equal models have equal texts.
    const std::string& text() const { return text_; }

    friend bool operator==(const ManagedObjectModel&, const ManagedObjectModel&) = default;

  private:
    friend class ModelReader;

    std::string name_;
    int version_ = 1;
    std::vector<EntityDescription> entities_;
    std::string text_;  // written once, when the model is read: every opening of a store compares it
};

/// Destination and inverse of a relationship, looked up in its model.
ORVANE_EXPORT const EntityDescription& destinationOf(const ManagedObjectModel& model,
                                                     const RelationshipDescription& relationship);

}  // namespace orvane
