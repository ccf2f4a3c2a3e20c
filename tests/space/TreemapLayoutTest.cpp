#include <gtest/gtest.h>

#include <cmath>

#include "space/TreemapLayout.h"

using namespace bv;
using R = TreemapLayout::Rect;

TEST(TreemapLayout, TilesTheBoundsWithAreasInProportion) {
    const std::vector<std::vector<double>> cases{
        {6, 6, 4, 3, 2, 2, 1}, {1}, {100, 1, 1, 1}, {5, 5, 5, 5}, {1e12, 3e11, 2e9, 7e6}};
    for (const R bounds : {R{0, 0, 600, 400}, R{10, 20, 300, 900}}) {
        for (const auto& weights : cases) {
            const auto rects = TreemapLayout::squarify(weights, bounds);
            ASSERT_EQ(rects.size(), weights.size());
            double total = 0, covered = 0;
            for (double w : weights) total += w;
            for (std::size_t i = 0; i < rects.size(); ++i) {
                const R& r = rects[i];
                covered += r.area();
                EXPECT_NEAR(r.area(), bounds.area() * weights[i] / total, bounds.area() * 1e-9);
                EXPECT_GE(r.x, bounds.x - 1e-9);
                EXPECT_GE(r.y, bounds.y - 1e-9);
                EXPECT_LE(r.x + r.width, bounds.x + bounds.width + 1e-6);
                EXPECT_LE(r.y + r.height, bounds.y + bounds.height + 1e-6);
                for (std::size_t j = 0; j < i; ++j) { // no two tiles overlap
                    const R& o = rects[j];
                    const double ox = std::min(r.x + r.width, o.x + o.width) - std::max(r.x, o.x);
                    const double oy = std::min(r.y + r.height, o.y + o.height) - std::max(r.y, o.y);
                    EXPECT_FALSE(ox > 1e-6 && oy > 1e-6) << i << " overlaps " << j;
                }
            }
            EXPECT_NEAR(covered, bounds.area(), bounds.area() * 1e-9);
        }
    }
    // Equal weights in a square come out square.
    const auto four = TreemapLayout::squarify({1, 1, 1, 1}, R{0, 0, 100, 100});
    for (const auto& r : four) EXPECT_NEAR(r.width / r.height, 1.0, 1e-9);
}

TEST(TreemapLayout, ZeroWeightsAndEmptyBounds) {
    const auto rects = TreemapLayout::squarify({3, 0, -2, 1}, R{0, 0, 40, 10});
    EXPECT_EQ(rects[1].area(), 0);
    EXPECT_EQ(rects[2].area(), 0);
    EXPECT_NEAR(rects[0].area() + rects[3].area(), 400, 1e-9);
    for (const auto& r : TreemapLayout::squarify({1, 2}, R{0, 0, 0, 50})) EXPECT_EQ(r.area(), 0);
    EXPECT_TRUE(TreemapLayout::squarify({}, R{0, 0, 10, 10}).empty());
}
