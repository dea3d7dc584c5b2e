#pragma once

#include <string>
#include <string_view>

#include "codegen/model_file.h"
#include "codegen/source_text.h"

namespace orvane::codegen {

struct WriterOptions {
    std::string nameSpace = "orvane";
    std::string exportMacro;
    std::string includePrefix;
    bool internal = false;  ///< within the library's own tree
};

/// Writes the files of one entity's class.
class EntityWriter {
  public:
    EntityWriter(const Model& model, const Entity& entity, const WriterOptions& options);

    /// The generated base class and the typed identifier.
    std::string baseHeader() const;
    std::string baseSource() const;
    /// The tables that name the keys of attributes and relationships.
    std::string keysHeader() const;
    std::string keysSource() const;

  private:
    void begin(SourceText& out) const;
    void include(SourceText& out, std::string_view ownFile) const;
    void openNamespace(SourceText& out) const;
    void closeNamespace(SourceText& out) const;

    void forwardDeclarations(SourceText& out) const;
    void declareIdentifier(SourceText& out) const;
    void declareAccessors(SourceText& out) const;
    void declareRow(SourceText& out) const;
    void defineAttribute(SourceText& out, const Attribute& attribute) const;
    void defineRelationship(SourceText& out, const Relationship& relationship) const;
    void defineKeyTable(SourceText& out) const;
    void defineRowSlots(SourceText& out) const;

    /// Types of a relationship's accessors.
    static std::string objects(const Relationship& relationship);
    /// The names in one table of keys.
    std::vector<std::string> attributeNames() const;
    std::vector<std::string> relationshipNames() const;

    const Model& model_;
    const Entity& entity_;
    const WriterOptions& options_;
    std::string qualification_;  // of the library's names within the namespace
    std::string base_;           // name of the generated class
    std::string file_;           // of the hand-written class, without extension
    std::string exported_;       // export macro and blank, or nothing
};

}  // namespace orvane::codegen
