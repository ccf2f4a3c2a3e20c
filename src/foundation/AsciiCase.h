#pragma once
#include <string>
#include <string_view>

namespace bv {

// Byte-wise ASCII case folding for names the program compares by rule (file and folder
// names, ids, desktop ids): letters A-Z and a-z change, every other byte (UTF-8 included)
// stays as it is. Text a person reads goes through the locale-aware functions instead.
[[nodiscard]] inline std::string asciiLowercased(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

[[nodiscard]] inline std::string asciiUppercased(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

} // namespace bv
