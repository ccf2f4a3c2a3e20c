#include "space/TreemapLayout.h"

#include <algorithm>
#include <limits>

namespace bv {
namespace {

// The worst aspect ratio of a row of areas laid along a side of length `side`.
double worst(double sum, double smallest, double largest, double side) {
    if (sum <= 0 || smallest <= 0) return std::numeric_limits<double>::infinity();
    const double s2 = side * side, sum2 = sum * sum;
    return std::max(s2 * largest / sum2, sum2 / (s2 * smallest));
}

} // namespace

std::vector<TreemapLayout::Rect> TreemapLayout::squarify(const std::vector<double>& weights, Rect bounds) {
    std::vector<Rect> out(weights.size(), Rect{bounds.x, bounds.y, 0, 0});
    double total = 0;
    std::vector<std::size_t> live;
    for (std::size_t i = 0; i < weights.size(); ++i)
        if (weights[i] > 0) {
            total += weights[i];
            live.push_back(i);
        }
    if (total <= 0 || bounds.width <= 0 || bounds.height <= 0) return out;
    const double scale = bounds.area() / total;

    Rect free = bounds;
    std::size_t next = 0;
    while (next < live.size()) {
        const double side = std::min(free.width, free.height);
        // Grow the row while that makes its worst tile squarer.
        std::size_t end = next;
        double sum = 0, smallest = 0, largest = 0, best = std::numeric_limits<double>::infinity();
        while (end < live.size()) {
            const double a = weights[live[end]] * scale;
            const double nSum = sum + a, nSmall = end == next ? a : std::min(smallest, a),
                         nLarge = std::max(largest, a);
            const double ratio = worst(nSum, nSmall, nLarge, side);
            if (end > next && ratio > best) break;
            best = ratio;
            sum = nSum;
            smallest = nSmall;
            largest = nLarge;
            ++end;
        }
        const bool last = end == live.size();
        if (free.width >= free.height) {
            // A column at the left.
            const double w = last ? free.width : sum / free.height;
            double y = free.y;
            for (std::size_t k = next; k < end; ++k) {
                const double h = k + 1 == end ? free.y + free.height - y : weights[live[k]] * scale / w;
                out[live[k]] = Rect{free.x, y, w, h};
                y += h;
            }
            free.x += w;
            free.width -= w;
        } else {
            // A row along the top.
            const double h = last ? free.height : sum / free.width;
            double x = free.x;
            for (std::size_t k = next; k < end; ++k) {
                const double w = k + 1 == end ? free.x + free.width - x : weights[live[k]] * scale / h;
                out[live[k]] = Rect{x, free.y, w, h};
                x += w;
            }
            free.y += h;
            free.height -= h;
        }
        next = end;
    }
    return out;
}

} // namespace bv
