#include "foundation/ByteText.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace bv {
namespace {

std::string withGrouping(long long whole) {
    std::string digits = std::to_string(whole);
    std::string out;
    const int n = static_cast<int>(digits.size());
    for (int i = 0; i < n; ++i) {
        out.push_back(digits[static_cast<size_t>(i)]);
        const int left = n - i - 1;
        if (left > 0 && left % 3 == 0) out.push_back(',');
    }
    return out;
}

std::string formatted(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(value * scale) / scale;
    const auto whole = static_cast<long long>(std::floor(rounded));
    std::string text = withGrouping(whole);
    if (decimals > 0) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.*f", decimals, rounded - static_cast<double>(whole));
        std::string frac = buf; // "0.50"
        frac = frac.substr(frac.find('.') + 1);
        while (!frac.empty() && frac.back() == '0') frac.pop_back();
        if (!frac.empty()) text += "." + frac;
    }
    return text;
}

} // namespace

std::string byteText(std::int64_t bytes) {
    if (bytes < 1) return "0 GB";
    if (bytes == 1) return "1 byte";
    if (bytes < 1000) return std::to_string(bytes) + " bytes";

    struct Unit { const char* name; double size; int decimals; };
    static constexpr std::array<Unit, 5> units{{{"KB", 1e3, 0}, {"MB", 1e6, 1}, {"GB", 1e9, 2},
                                                {"TB", 1e12, 2}, {"PB", 1e15, 2}}};
    const double b = static_cast<double>(bytes);
    for (size_t i = 0; i < units.size(); ++i) {
        const Unit& u = units[i];
        const double v = b / u.size;
        const double scale = std::pow(10.0, u.decimals);
        const double rounded = std::round(v * scale) / scale;
        // A value that rounds up to 1000 of this unit reads better as 1 of the next.
        if (rounded >= 1000.0 && i + 1 < units.size()) continue;
        return formatted(v, u.decimals) + " " + u.name;
    }
    return formatted(b / 1e15, 2) + " PB";
}

} // namespace bv
