#include "foundation/Json.h"

namespace bv {

std::string encodeJson(const Json& value) {
    // nlohmann's object type is an ordered std::map, so keys come out sorted.
    return value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<Json> parseJson(std::string_view text) {
    Json parsed = Json::parse(text.begin(), text.end(), nullptr, false);
    if (parsed.is_discarded()) return std::nullopt;
    return parsed;
}

void putDate(Json& object, const char* key, TimePoint date) { object[key] = isoDateText(date); }

void putDate(Json& object, const char* key, const std::optional<TimePoint>& date) {
    if (date) object[key] = isoDateText(*date);
}

TimePoint dateFromJson(const Json& value) {
    if (!value.is_string()) throw DecodeError("a date must be text");
    auto parsed = parseIsoDate(value.get_ref<const std::string&>());
    if (!parsed) throw DecodeError("a date is not ISO 8601");
    return *parsed;
}

std::string textFromJson(const Json& value) {
    if (!value.is_string()) throw DecodeError("expected text");
    return value.get<std::string>();
}

std::int64_t integerFromJson(const Json& value) {
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (value.is_number_float()) {
        const double d = value.get<double>();
        // Whole numbers written as 3.0 by other tools still count; fractions and values
        // beyond a 64-bit integer do not (casting those would be undefined).
        if (d >= -9.2e18 && d <= 9.2e18 && d == static_cast<double>(static_cast<std::int64_t>(d)))
            return static_cast<std::int64_t>(d);
    }
    throw DecodeError("expected a whole number");
}

JsonReader::JsonReader(const Json& object) : object_(object) {
    if (!object.is_object()) throw DecodeError("expected an object");
}

const Json* JsonReader::find(const char* key) const {
    auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return nullptr;
    return &*it;
}

bool JsonReader::has(const char* key) const { return find(key) != nullptr; }

const Json& JsonReader::at(const char* key) const {
    const Json* v = find(key);
    if (!v) throw DecodeError(std::string("missing key ") + key);
    return *v;
}

bool JsonReader::boolean(const char* key) const {
    const Json& v = at(key);
    if (!v.is_boolean()) throw DecodeError(std::string("expected true or false at ") + key);
    return v.get<bool>();
}

bool JsonReader::boolean(const char* key, bool fallback) const {
    return has(key) ? boolean(key) : fallback;
}

std::optional<bool> JsonReader::optionalBoolean(const char* key) const {
    if (!has(key)) return std::nullopt;
    return boolean(key);
}

std::int64_t JsonReader::integer(const char* key) const { return integerFromJson(at(key)); }

std::int64_t JsonReader::integer(const char* key, std::int64_t fallback) const {
    return has(key) ? integer(key) : fallback;
}

std::optional<std::int64_t> JsonReader::optionalInteger(const char* key) const {
    if (!has(key)) return std::nullopt;
    return integer(key);
}

double JsonReader::number(const char* key) const {
    const Json& v = at(key);
    if (!v.is_number()) throw DecodeError(std::string("expected a number at ") + key);
    return v.get<double>();
}

double JsonReader::number(const char* key, double fallback) const { return has(key) ? number(key) : fallback; }

std::string JsonReader::text(const char* key) const { return textFromJson(at(key)); }

std::string JsonReader::text(const char* key, const std::string& fallback) const {
    return has(key) ? text(key) : fallback;
}

std::optional<std::string> JsonReader::optionalText(const char* key) const {
    if (!has(key)) return std::nullopt;
    return text(key);
}

TimePoint JsonReader::date(const char* key) const { return dateFromJson(at(key)); }

std::optional<TimePoint> JsonReader::optionalDate(const char* key) const {
    if (!has(key)) return std::nullopt;
    return date(key);
}

std::vector<std::string> JsonReader::texts(const char* key) const {
    return decodeArray<std::string>(at(key), textFromJson);
}

std::vector<std::string> JsonReader::texts(const char* key, const std::vector<std::string>& fallback) const {
    return has(key) ? texts(key) : fallback;
}

} // namespace bv
