#pragma once
#include <vector>

namespace bv {

// Lays weights out as nested rectangles whose areas are proportional to them, keeping the
// tiles as close to square as the greedy "squarified" method can, so labels fit.
struct TreemapLayout {
    struct Rect {
        double x = 0, y = 0, width = 0, height = 0;
        [[nodiscard]] double area() const { return width * height; }
    };

    // One rectangle per weight, in the order given (callers pass them largest first for the
    // best shapes). Weights of 0 or below get an empty rectangle at the bounds' origin.
    // The rectangles tile `bounds` exactly when every weight is positive.
    [[nodiscard]] static std::vector<Rect> squarify(const std::vector<double>& weights, Rect bounds);
};

} // namespace bv
