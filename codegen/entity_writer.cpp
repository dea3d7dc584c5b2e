#include "codegen/entity_writer.h"

#include <set>

#include "codegen/names.h"

namespace orvane::codegen {

EntityWriter::EntityWriter(const Model& model, const Entity& entity, const WriterOptions& options)
    : model_(model),
      entity_(entity),
      options_(options),
      base_("_" + entity.className),
      file_(snakeCase(entity.className)) {
    const bool within = options.nameSpace == "orvane" || options.nameSpace.starts_with("orvane::");
    qualification_ = within ? "" : "orvane::";
    exported_ = options.exportMacro.empty() ? "" : options.exportMacro + " ";
}

void EntityWriter::begin(SourceText& out) const {
    out.line("// Made by orvane-codegen from entity \"" + entity_.name + "\" of model \"" + model_.name +
             "\"; the next build writes it anew.");
}

void EntityWriter::include(SourceText& out, std::string_view ownFile) const {
    const std::string prefix = options_.includePrefix.empty() ? "" : options_.includePrefix + "/";
    out.line("#include \"" + prefix + std::string(ownFile) + "\"");
}

void EntityWriter::openNamespace(SourceText& out) const {
    out.line();
    out.line("namespace " + options_.nameSpace + " {");
    out.line();
}

void EntityWriter::closeNamespace(SourceText& out) const {
    out.line();
    out.line("}  // namespace " + options_.nameSpace);
}

std::string EntityWriter::objects(const Relationship& relationship) {
    const std::string handle = "@Ref<" + relationship.className + ">";
    return relationship.toMany ? "std::vector<" + handle + ">" : handle;
}

std::vector<std::string> EntityWriter::attributeNames() const {
    std::vector<std::string> names;
    for (const Attribute& attribute : entity_.attributes) names.push_back(attribute.name);
    return names;
}

std::vector<std::string> EntityWriter::relationshipNames() const {
    std::vector<std::string> names;
    for (const Relationship& relationship : entity_.relationships) names.push_back(relationship.name);
    return names;
}

void EntityWriter::forwardDeclarations(SourceText& out) const {
    std::set<std::string> classes{entity_.className};
    for (const Relationship& relationship : entity_.relationships)
        if (!relationship.className.starts_with('@')) classes.insert(relationship.className);
    for (const std::string& name : classes) out.line("class " + name + ";");
}

void EntityWriter::declareIdentifier(SourceText& out) const {
    const std::string name = entity_.className + "ID";
    out.line("/// Identifier of a stored `" + entity_.className + "`.");
    out.line("class " + exported_ + name + " : public @ManagedObjectID {");
    out.line("  public:");
    out.line("    " + name + "() = default;");
    out.constructor("    explicit " + name + "(@ManagedObjectID identifier)",
                    "@ManagedObjectID(std::move(identifier))");
    out.line("};");
}

void EntityWriter::declareAccessors(SourceText& out) const {
    if (!entity_.attributes.empty()) out.line("\n    // Attributes\n");
    for (const Attribute& attribute : entity_.attributes) {
        const std::string capital = capitalized(attribute.name);
        out.line("    " + std::string(attribute.type->cppType) + " " + attribute.name + "() const;");
        out.line("    void set" + capital + "(" + std::string(attribute.type->parameter) + " value);");
        if (!attribute.type->hasScalarAccess) continue;
        out.line("    /// The same with absent read as false.");
        out.line("    bool " + attribute.name + "Value() const;");
        out.line("    void set" + capital + "Value(bool value);");
        out.line(
            "    /// The stored value as it is: brings no fault to life, and setting it tells no observer.");
        out.line("    bool primitive" + capital + "Value() const;");
        out.line("    void setPrimitive" + capital + "Value(bool value);");
    }
    if (!entity_.relationships.empty()) out.line("\n    // Relationships; the other ends follow at once\n");
    for (const Relationship& relationship : entity_.relationships) {
        const std::string type = objects(relationship);
        const std::string parameter = relationship.toMany ? "objects" : "object";
        out.line("    " + type + " " + relationship.name + "() const;");
        out.line("    void set" + capitalized(relationship.name) + "(const " + type + "& " + parameter +
                 ");");
        if (!relationship.toMany) continue;
        out.line("    /// The live set: what is added to it or removed from it changes the relationship.");
        out.line("    @ToManySet<" + relationship.className + "> " + relationship.name + "Set();");
    }
}

void EntityWriter::declareRow(SourceText& out) const {
    out.line("  private:");
    out.line("    /// Where a property stands in the entity.");
    out.line("    struct Index {");
    out.line("        enum : std::size_t {");
    for (const std::string& name : attributeNames()) out.line("            " + name + ",");
    for (const std::string& name : relationshipNames()) out.line("            " + name + ",");
    out.line("        };");
    out.line("    };");
    out.line("    struct Row {");
    for (const Attribute& attribute : entity_.attributes)
        out.line("        " + std::string(attribute.type->slot) + " " + attribute.name + ";");
    for (const Relationship& relationship : entity_.relationships)
        out.line("        @" + std::string(relationship.toMany ? "ToManySlot" : "ToOneSlot") + " " +
                 relationship.name + ";");
    out.line("    };");
    out.line();
    out.line("    Row row_;");
}

std::string EntityWriter::baseHeader() const {
    const std::string& name = entity_.className;
    SourceText out(qualification_);
    begin(out);
    out.line("#pragma once\n");
    for (const char* header :
         {"cstddef", "cstdint", "optional", "set", "span", "string_view", "utility", "vector"})
        out.line("#include <" + std::string(header) + ">");
    out.line();
    if (options_.internal) {
        out.line("#include \"persistence/entity_class.h\"");
        out.line("#include \"persistence/managed_object.h\"");
        out.line("#include \"persistence/managed_object_id.h\"");
        out.line("#include \"persistence/row_slots.h\"");
    } else {
        out.line("#include <orvane/orvane.h>");
    }
    openNamespace(out);
    forwardDeclarations(out);
    out.line();
    declareIdentifier(out);
    out.line();
    out.line("/// Stored properties of `" + name + "`, which derives from this class.");
    out.line("///");
    out.line(
        "/// A text that an accessor returns stays valid until the attribute changes or the object becomes a "
        "fault.");
    // Stands in every generated header, so that whoever meets the name there finds the reason beside it.
    out.line(
        "// The underscore leaves the plain name to the class written by hand. The language reserves such "
        "names for");
    out.line("// its own library, whose names of that form begin with other words: the two cannot meet.");
    out.line("// NOLINTNEXTLINE(bugprone-reserved-identifier)");
    out.line("class " + exported_ + base_ + " : public @ManagedObject {");
    out.line("  public:");
    out.line("    static std::string_view entityName();");
    out.line("    static std::string_view className();");
    out.line("    /// A new object of the entity in the context.");
    out.line("    static @Ref<" + name + "> insertInManagedObjectContext(@ManagedObjectContext& context);");
    out.line("    /// The entity in the context's model; none while the context has no coordinator.");
    out.breakable(
        "    static const @EntityDescription* entityInManagedObjectContext(const "
        "@ManagedObjectContext& context);");
    out.line("    /// Key paths whose change changes the value of `key`, as the class declares them.");
    out.line(
        "    static std::set<std::string_view> keyPathsForValuesAffectingValueForKey(std::string_view key);");
    out.line();
    out.line("    " + name + "ID objectID() const;");
    declareAccessors(out);
    out.line("\n    // What key-value coding and contexts go by\n");
    out.line("    static const @KeyTable& classKeyTable();");
    out.line("    const @KeyTable& keyTable() const override;");
    out.line("    static std::span<const @RowSlot> rowSlots();");
    out.line("    void* rowAddress();");
    out.line("    /// None; a class that has some hides this.");
    out.function("    static std::span<const @DerivedSeconds> derivedSeconds()", "return {};");
    out.line();
    out.line("  protected:");
    out.line("    " + base_ + "();");
    out.line("    ~" + base_ + "() override;");
    out.line();
    declareRow(out);
    out.line("};");
    closeNamespace(out);
    return out.text();
}

void EntityWriter::defineAttribute(SourceText& out, const Attribute& attribute) const {
    const std::string& name = attribute.name;
    const std::string capital = capitalized(name);
    const std::string type(attribute.type->cppType);
    const std::string parameter(attribute.type->parameter);
    const auto head = [&](const std::string& result, const std::string& rest) {
        return result + " " + base_ + "::" + rest;
    };
    out.line();
    if (attribute.type->hasSlotAccess) {
        out.function(head(type, name + "() const"), "return read(row_." + name + ");");
        out.function(head("void", "set" + capital + "(" + parameter + " value)"),
                     "write(Index::" + name + ", row_." + name + ", value);");
    } else {
        out.line(head(type, name + "() const {"));
        out.line("    const @Value value = readProperty(Index::" + name + ");");
        out.line("    return value.isNone() ? std::nullopt : " + type + "(*value.asData());");
        out.line("}");
        out.function(head("void", "set" + capital + "(" + parameter + " value)"),
                     "writeProperty(Index::" + name + ", value);");
    }
    if (!attribute.type->hasScalarAccess) return;
    out.function(head("bool", name + "Value() const"), "return " + name + "().value_or(false);");
    out.function(head("void", "set" + capital + "Value(bool value)"), "set" + capital + "(value);");
    out.function(head("bool", "primitive" + capital + "Value() const"),
                 "return row_." + name + ".get().value_or(false);");
    out.function(head("void", "setPrimitive" + capital + "Value(bool value)"),
                 "setPrimitiveValue(value, \"" + name + "\");");
}

void EntityWriter::defineRelationship(SourceText& out, const Relationship& relationship) const {
    const std::string& name = relationship.name;
    const std::string& target = relationship.className;
    const std::string type = objects(relationship);
    const std::string setter = "void " + base_ + "::set" + capitalized(name) + "(const " + type + "& ";
    out.line();
    if (!relationship.toMany) {
        out.function(type + " " + base_ + "::" + name + "() const",
                     "return readToOne<" + target + ">(row_." + name + ");");
        out.function(setter + "object)", "writeToOne(Index::" + name + ", object.get());");
        return;
    }
    out.function(type + " " + base_ + "::" + name + "() const",
                 "return readToMany<" + target + ">(Index::" + name + ");");
    out.function(setter + "objects)", "writeToMany(Index::" + name + ", objects);");
    const std::string set = "@ToManySet<" + target + ">";
    out.line(set + " " + base_ + "::" + name + "Set() {");
    out.line("    willAccessValueForKey(\"" + name + "\");");
    out.line("    " + set + " set(*this, Index::" + name + ");");
    out.line("    didAccessValueForKey(\"" + name + "\");");
    out.line("    return set;");
    out.line("}");
}

void EntityWriter::defineKeyTable(SourceText& out) const {
    const auto key = [&](const std::string& name, const std::string& dependencies) {
        out.breakable("            @keys::readWrite<\"" + name + "\", &" + base_ + "::" + name + ", &" +
                      base_ + "::set" + capitalized(name) + ">(" + dependencies + "),");
    };
    out.line("const @KeyTable& " + base_ + "::classKeyTable() {");
    out.line("    static const @KeyTable table{");
    out.line("        \"" + entity_.className + "\",");
    out.line("        &@ManagedObject::classKeyTable(),");
    out.line("        {");
    for (const Attribute& attribute : entity_.attributes) {
        key(attribute.name, "");
        if (attribute.type->hasScalarAccess) key(attribute.name + "Value", "{\"" + attribute.name + "\"}");
    }
    for (const std::string& name : relationshipNames()) key(name, "");
    out.line("        }};");
    out.line("    return table;");
    out.line("}");
}

void EntityWriter::defineRowSlots(SourceText& out) const {
    const auto slot = [&](const std::string& name, std::string_view kind) {
        out.breakable("        {\"" + name + "\", @SlotKind::" + std::string(kind) + ", offsetof(Row, " +
                      name + ")},");
    };
    out.line("std::span<const @RowSlot> " + base_ + "::rowSlots() {");
    out.line("    static constexpr @RowSlot slots[] = {");
    for (const Attribute& attribute : entity_.attributes) slot(attribute.name, attribute.type->kind);
    for (const Relationship& relationship : entity_.relationships)
        slot(relationship.name, relationship.toMany ? "toMany" : "toOne");
    out.line("    };");
    out.line("    return slots;");
    out.line("}");
}

std::string EntityWriter::baseSource() const {
    const std::string& name = entity_.className;
    SourceText out(qualification_);
    begin(out);
    include(out, "_" + file_ + ".h");
    out.line();
    if (options_.internal) {
        out.line("#include \"foundation/key_conversion.h\"");
        out.line("#include \"persistence/managed_object_context.h\"");
    }
    std::set<std::string> headers{file_ + ".h"};
    for (const Relationship& relationship : entity_.relationships)
        if (!relationship.className.starts_with('@'))
            headers.insert(snakeCase(relationship.className) + ".h");
    for (const std::string& header : headers) include(out, header);
    openNamespace(out);

    out.line(base_ + "::" + base_ + "() = default;");
    out.line(base_ + "::~" + base_ + "() = default;");
    out.line();
    out.function("std::string_view " + base_ + "::entityName()", "return \"" + entity_.name + "\";");
    out.function("std::string_view " + base_ + "::className()", "return \"" + name + "\";");
    out.line();
    out.function(
        "@Ref<" + name + "> " + base_ + "::insertInManagedObjectContext(@ManagedObjectContext& context)",
        "return context.insert<" + name + ">();");
    out.line();
    out.breakable("const @EntityDescription* " + base_ +
                  "::entityInManagedObjectContext(const @ManagedObjectContext& context) {");
    out.line("    const auto& coordinator = context.persistentStoreCoordinator();");
    out.line("    return coordinator ? coordinator->model().entity(entityName()) : nullptr;");
    out.line("}");
    out.line();
    out.breakable("std::set<std::string_view> " + base_ +
                  "::keyPathsForValuesAffectingValueForKey(std::string_view key) {");
    out.line("    const auto paths = " + name + "::classKeyTable().keyPathsAffecting(key);");
    out.line("    return {paths.begin(), paths.end()};");
    out.line("}");
    out.line();
    out.function(name + "ID " + base_ + "::objectID() const",
                 "return " + name + "ID(@ManagedObject::objectID());");
    for (const Attribute& attribute : entity_.attributes) defineAttribute(out, attribute);
    for (const Relationship& relationship : entity_.relationships) defineRelationship(out, relationship);
    out.line();
    defineKeyTable(out);
    out.line();
    out.line("// Asked of the class written by hand, which may add keys of its own.");
    out.function("const @KeyTable& " + base_ + "::keyTable() const", "return " + name + "::classKeyTable();");
    out.line();
    defineRowSlots(out);
    out.line();
    out.function("void* " + base_ + "::rowAddress()", "return &row_;");
    closeNamespace(out);
    return out.text();
}

std::string EntityWriter::keysHeader() const {
    SourceText out(qualification_);
    begin(out);
    out.line("#pragma once\n");
    out.line("#include <string_view>");
    if (!options_.exportMacro.empty() && options_.internal) out.line("\n#include \"foundation/export.h\"");
    openNamespace(out);
    const auto table = [&](const std::string& kind, const std::vector<std::string>& names) {
        if (names.empty()) return;
        const std::string variable = entity_.className + kind;
        out.line("extern " + exported_ + "const struct " + variable + "Table {");
        for (const std::string& name : names) out.line("    std::string_view " + name + ";");
        out.line("} " + variable + ";");
    };
    out.line("// Keys of `" + entity_.className + "`: each field holds its own name.");
    out.line();
    table("Attributes", attributeNames());
    if (!entity_.attributes.empty() && !entity_.relationships.empty()) out.line();
    table("Relationships", relationshipNames());
    closeNamespace(out);
    return out.text();
}

std::string EntityWriter::keysSource() const {
    SourceText out(qualification_);
    begin(out);
    include(out, file_ + "_keys.h");
    openNamespace(out);
    const auto table = [&](const std::string& kind, const std::vector<std::string>& names) {
        if (names.empty()) return;
        const std::string variable = entity_.className + kind;
        out.line("constinit const " + variable + "Table " + variable + "{");
        for (const std::string& name : names) out.line("    ." + name + " = \"" + name + "\",");
        out.line("};");
    };
    table("Attributes", attributeNames());
    if (!entity_.attributes.empty() && !entity_.relationships.empty()) out.line();
    table("Relationships", relationshipNames());
    closeNamespace(out);
    return out.text();
}

}  // namespace orvane::codegen
