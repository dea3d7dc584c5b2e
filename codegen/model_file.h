#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::codegen {

/// Something is wrong with the model; the message names file and place.
class ModelError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// How an attribute type of the model appears in C++. A '@' stands before every name of the library's.
struct AttributeType {
    std::string_view name;         ///< in model files
    std::string_view slot;         ///< member of the row
    std::string_view kind;         ///< enumerator of the library's slot kinds
    std::string_view cppType;      ///< what accessors return
    std::string_view parameter;    ///< what setters take
    bool hasSlotAccess = true;     ///< whether the slot holds just what accessors return
    bool hasScalarAccess = false;  ///< whether there are accessors that read absent as a plain value
};

struct Attribute {
    std::string name;
    const AttributeType* type;
};

struct Relationship {
    std::string name;
    bool toMany;
    std::string className;  ///< of the objects at the other end; '@' as above
};

/// An entity that has a class of its own.
struct Entity {
    std::string name;
    std::string className;
    std::vector<Attribute> attributes;
    std::vector<Relationship> relationships;
};

struct Model {
    std::string name;
    std::vector<Entity> entities;
};

/// Reads the current version of a model resource, in as much detail as the generator needs; names are known
/// to be usable in C++. Throws ModelError.
Model readModel(const std::filesystem::path& folder);

/// `OrvaneApp` as `orvane_app`. cmake/orvane_generate_entities.cmake must name files in the same way.
std::string snakeCase(const std::string& className);
/// The text with its first letter in upper case.
std::string capitalized(std::string text);

}  // namespace orvane::codegen
