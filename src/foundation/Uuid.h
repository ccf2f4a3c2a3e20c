#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// A random (version 4) UUID. Written upper-case, read in either case.
class Uuid {
public:
    Uuid() = default; // the nil UUID
    [[nodiscard]] static Uuid generate();
    [[nodiscard]] static std::optional<Uuid> parse(std::string_view text);

    [[nodiscard]] std::string text() const;
    [[nodiscard]] bool isNil() const;

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace bv
