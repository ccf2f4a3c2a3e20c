#pragma once
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "foundation/Dates.h"

namespace bv {

using Json = nlohmann::json;

// Thrown by record decoders when a file does not hold what its record needs. The whole
// file is then treated as absent by the caller.
struct DecodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The shared encoder: pretty printed, keys sorted, two-space indent, UTF-8 kept as is.
[[nodiscard]] std::string encodeJson(const Json& value);

// The shared decoder's first step. Gives nothing for text that is not JSON.
[[nodiscard]] std::optional<Json> parseJson(std::string_view text);

// Writes a date the one way every file stores it; an empty optional leaves the key out.
void putDate(Json& object, const char* key, TimePoint date);
void putDate(Json& object, const char* key, const std::optional<TimePoint>& date);

// Typed, strict access to one JSON object for a record decoder. Every getter without a
// default treats the key as required and throws DecodeError when it is missing or has the
// wrong type; getters with a default answer the default only when the key is absent (or
// null) and still throw on a wrong type. Dates must be ISO 8601 text.
class JsonReader {
public:
    explicit JsonReader(const Json& object); // throws unless object is a JSON object

    [[nodiscard]] bool has(const char* key) const;
    [[nodiscard]] const Json& at(const char* key) const; // required, any type

    [[nodiscard]] bool boolean(const char* key) const;
    [[nodiscard]] bool boolean(const char* key, bool fallback) const;
    [[nodiscard]] std::optional<bool> optionalBoolean(const char* key) const;

    [[nodiscard]] std::int64_t integer(const char* key) const;
    [[nodiscard]] std::int64_t integer(const char* key, std::int64_t fallback) const;
    [[nodiscard]] std::optional<std::int64_t> optionalInteger(const char* key) const;

    [[nodiscard]] double number(const char* key) const;
    [[nodiscard]] double number(const char* key, double fallback) const;

    [[nodiscard]] std::string text(const char* key) const;
    [[nodiscard]] std::string text(const char* key, const std::string& fallback) const;
    [[nodiscard]] std::optional<std::string> optionalText(const char* key) const;

    [[nodiscard]] TimePoint date(const char* key) const;
    [[nodiscard]] std::optional<TimePoint> optionalDate(const char* key) const;

    [[nodiscard]] std::vector<std::string> texts(const char* key) const;
    [[nodiscard]] std::vector<std::string> texts(const char* key, const std::vector<std::string>& fallback) const;

private:
    [[nodiscard]] const Json* find(const char* key) const;
    const Json& object_;
};

// Helpers for single values, usable inside array decoders.
[[nodiscard]] TimePoint dateFromJson(const Json& value);   // throws DecodeError
[[nodiscard]] std::string textFromJson(const Json& value); // throws DecodeError
[[nodiscard]] std::int64_t integerFromJson(const Json& value);

// Decodes a whole array with a record decoder; one bad element fails the array.
template <class T, class Decode>
[[nodiscard]] std::vector<T> decodeArray(const Json& value, Decode decode) {
    if (!value.is_array()) throw DecodeError("expected an array");
    std::vector<T> out;
    out.reserve(value.size());
    for (const Json& element : value) out.push_back(decode(element));
    return out;
}

} // namespace bv
