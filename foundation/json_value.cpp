#include "foundation/json_value.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace orvane {

using Json = nlohmann::ordered_json;

Value valueFromJson(const Json& json) {
    switch (json.type()) {
        case Json::value_t::boolean:
            return json.get<bool>();
        case Json::value_t::number_integer:
            return json.get<std::int64_t>();
        case Json::value_t::number_unsigned:
            if (json.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()})
                return json.get<double>();
            return json.get<std::int64_t>();
        case Json::value_t::number_float:
            return json.get<double>();
        case Json::value_t::string:
            return json.get_ref<const std::string&>();
        case Json::value_t::array: {
            Value::Array array;
            for (const Json& element : json) array.push_back(valueFromJson(element));
            return array;
        }
        case Json::value_t::object: {
            Dictionary dictionary;
            for (const auto& [key, element] : json.items()) dictionary.set(key, valueFromJson(element));
            return dictionary;
        }
        default:
            return {};
    }
}

}  // namespace orvane
