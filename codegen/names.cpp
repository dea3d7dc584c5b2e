#include "codegen/names.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <string_view>

namespace orvane::codegen {

namespace {

constexpr std::string_view cppWords = R"(
alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t char16_t char32_t
class compl concept const consteval constexpr constinit const_cast continue co_await co_return co_yield
decltype default delete do double dynamic_cast else enum explicit export extern false float for friend
goto if inline int long mutable namespace new noexcept not not_eq nullptr operator or or_eq private
protected public register reinterpret_cast requires return short signed sizeof static static_assert
static_cast struct switch template this thread_local throw true try typedef typeid typename union
unsigned using virtual void volatile wchar_t while xor xor_eq
)";

/// Members of the generated class and of its bases, and namespaces that its code names. Accessors must not
/// hide them.
constexpr std::string_view takenNames = R"(
addToMany awakeFromInsert changedKeys classKeyTable className derivedSeconds didAccessValueForKey
didChangeValueForKey dispose dropObserverList entity entityInManagedObjectContext entityName
existingObserverList hasChanges insertInManagedObjectContext isDeleted isFault isInserted isObserved
isUpdated isUsable keyPathsForValuesAffectingValueForKey keys keyTable managedObjectContext objectID
objectInMainContext observerList orvane primitiveValueForKey read readProperty readToMany readToOne
referenceCount release removeFromMany retain rowAddress rowSlots setPrimitiveValue setValueForKey
setValueForKeyPath state std valueForCollectionOperator valueForKey valueForKeyPath
willAccessValueForKey willChangeValueForKey write writeProperty writeToMany writeToOne
)";

bool isAmong(std::string_view words, const std::string& word) {
    std::istringstream stream{std::string(words)};
    return std::find(std::istream_iterator<std::string>(stream), {}, word) !=
           std::istream_iterator<std::string>();
}

}  // namespace

std::vector<std::string> accessorsOf(const Attribute& attribute) {
    const std::string& name = attribute.name;
    const std::string capital = capitalized(name);
    std::vector<std::string> result{name, "set" + capital};
    if (attribute.type->hasScalarAccess)
        for (const std::string& scalar :
             {name + "Value", "set" + capital + "Value", "primitive" + capital + "Value",
              "setPrimitive" + capital + "Value"})
            result.push_back(scalar);
    return result;
}

std::vector<std::string> accessorsOf(const Relationship& relationship) {
    std::vector<std::string> result{relationship.name, "set" + capitalized(relationship.name)};
    if (relationship.toMany) result.push_back(relationship.name + "Set");
    return result;
}

std::optional<std::string> problemWithNames(const Entity& entity) {
    static const std::regex usable("([a-z]|[A-Z][A-Z0-9])[A-Za-z0-9]*(_[A-Za-z0-9]+)*");
    std::map<std::string, std::string> owners;
    const auto problemWith = [&](const std::vector<std::string>& accessors) -> std::optional<std::string> {
        const std::string& property = accessors.front();
        const std::string quoted = "property \"" + property + "\": ";
        if (!std::regex_match(property, usable))
            return quoted +
                   "names are letters, digits and single underscores, and begin in lower case or with an "
                   "abbreviation in capitals";
        if (isAmong(cppWords, property)) return quoted + "this is a word of C++";
        for (const std::string& accessor : accessors) {
            const auto [place, isNew] = owners.emplace(accessor, property);
            if (!isNew)
                return quoted + "its accessor " + accessor + "() is one of property \"" + place->second +
                       "\" too";
            if (isAmong(takenNames, accessor) || accessor == entity.className)
                return quoted + accessor + " means something else in every stored object's class";
        }
        return std::nullopt;
    };
    for (const Attribute& attribute : entity.attributes)
        if (auto problem = problemWith(accessorsOf(attribute))) return problem;
    for (const Relationship& relationship : entity.relationships)
        if (auto problem = problemWith(accessorsOf(relationship))) return problem;
    return std::nullopt;
}

}  // namespace orvane::codegen
