#include "atlas/pack/field.h"
#include "atlas/pack/layout.h"
#include "tests/atlas/pack_fixture.h"

#include <gtest/gtest.h>

using namespace tessora::atlas;
using namespace tessora::atlas::test;

namespace {

bool has(const Mask& mask, uint32_t x, uint32_t y) {
    return x < mask.width && y < mask.height && (mask.row_word(y, x / 64) >> (x % 64) & 1) != 0;
}

/// A simple reference implementation of Field.
struct PlainField {
    uint32_t width, height;
    std::vector<uint8_t> taken;

    PlainField(uint32_t w, uint32_t h) : width(w), height(h), taken(size_t(w) * h, 0) {}
    bool fits(const Mask& mask, uint32_t x, uint32_t y) const {
        if (x + mask.width > width || y + mask.height > height)
            return false;
        for (uint32_t j = 0; j < mask.height; ++j)
            for (uint32_t i = 0; i < mask.width; ++i)
                if (has(mask, i, j) && taken[size_t(y + j) * width + x + i] != 0)
                    return false;
        return true;
    }
    void place(const Mask& mask, uint32_t x, uint32_t y) {
        for (uint32_t j = 0; j < mask.height; ++j)
            for (uint32_t i = 0; i < mask.width; ++i)
                if (has(mask, i, j))
                    taken[size_t(y + j) * width + x + i] = 1;
    }
    Spot find(const Mask& mask, uint32_t bottom, uint32_t top) const {
        for (uint32_t y = bottom; y + mask.height <= top; ++y)
            for (uint32_t x = 0; x + mask.width <= width; ++x)
                if (fits(mask, x, y))
                    return {true, x, y};
        return {};
    }
};

Mask mask_of(const PackInput& set, uint32_t chart, Turn turn, double scale, double radius) {
    const ChartChains chains = chain_borders(set.face());
    Mask mask;
    MaskWork work;
    draw_mask(chains, chains.shapes[chart], turn, scale, radius, mask, work);
    return mask;
}

/// Whether a point, in cells, lies in the chart, by the even-odd rule.
bool inside(const PackInput& set, const Mask& mask, double scale, double x, double y) {
    bool odd = false;
    for (size_t e = 0; e < set.edges.size(); e += 2) {
        const auto point = [&](size_t end) {
            const double* p = &set.points[2 * set.edges[e + end]];
            return turned({p[0], p[1]}, {0.6 * scale, 0.8 * scale}) - mask.origin;
        };
        const Vec2 a = point(0), b = point(1);
        odd = odd != ((a.y <= y) != (b.y <= y) && a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x) > x);
    }
    return odd;
}

double distance_to_square(Point p, double x, double y) {
    const double dx = std::max(std::max(x - p.x, p.x - x - 1), 0.0);
    const double dy = std::max(std::max(y - p.y, p.y - y - 1), 0.0);
    return std::hypot(dx, dy);
}

} // namespace

TEST(PackMask, WidensABoxOfFourCellsByOneCell) {
    PackInput set;
    set.box(4, 4);
    const Mask mask = mask_of(set, 0, {}, 1, 0.999);
    EXPECT_EQ(mask.width, 6u);
    EXPECT_EQ(mask.height, 6u);
    EXPECT_TRUE(has(mask, 3, 3));
    EXPECT_EQ(mask.square_level, 2u);
}

TEST(PackMask, HolesStayFree) {
    PackInput set;
    set.loop(ring(30, 64));
    set.loop(ring(20, 64, true));
    set.close();
    const Mask mask = mask_of(set, 0, {}, 1, 2);
    EXPECT_FALSE(has(mask, mask.width / 2, mask.height / 2));
    EXPECT_TRUE(has(mask, mask.width / 2, 7));
}

TEST(PackMask, ChartWithoutEdgesIsEmpty) {
    PackInput set;
    set.close();
    const Mask mask = mask_of(set, 0, {}, 1, 2);
    EXPECT_EQ(mask.width, 0u);
    Mask turned;
    MaskWork work;
    turn_mask(mask, 1, turned, work);
    EXPECT_EQ(turned.width, 0u);
}

TEST(PackMaskProperty, SetsCellsWithinTheRadiusAndNoOthersFurtherAway) {
    for (uint32_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        PackInput set = random_charts(random, 1);
        const double radius = 0.3 + 0.2 * (random() % 15), scale = 20 + random() % 60;
        const Mask mask = mask_of(set, 0, {0.6, 0.8}, scale, radius);
        // Distance of every cell to densely sampled border points.
        std::vector<double> nearest(size_t(mask.width) * mask.height, 1e9);
        for (size_t e = 0; e < set.edges.size(); e += 2) {
            const double* a = &set.points[2 * set.edges[e]];
            const double* b = &set.points[2 * set.edges[e + 1]];
            const int steps = 1 + int(20 * scale * std::hypot(b[0] - a[0], b[1] - a[1]));
            for (int i = 0; i <= steps; ++i) {
                const double t = double(i) / steps;
                const Vec2 q = turned({a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1])},
                                      {0.6 * scale, 0.8 * scale}) -
                               mask.origin;
                const Point p{q.x, q.y};
                const int reach = int(radius) + 2;
                for (int y = std::max(0, int(p.y) - reach); y <= int(p.y) + reach; ++y)
                    for (int x = std::max(0, int(p.x) - reach); x <= int(p.x) + reach; ++x) {
                        const double d = distance_to_square(p, x, y);
                        if (x >= int(mask.width) || y >= int(mask.height)) {
                            EXPECT_GT(d, radius);
                            continue;
                        }
                        double& distance = nearest[size_t(y) * mask.width + size_t(x)];
                        distance = std::min(distance, d);
                    }
            }
        }
        for (uint32_t y = 0; y < mask.height; ++y)
            for (uint32_t x = 0; x < mask.width; ++x) {
                const double d = nearest[size_t(y) * mask.width + x];
                if (d <= radius) {
                    EXPECT_TRUE(has(mask, x, y)) << x << ' ' << y << ' ' << d;
                } else if (d > radius + 0.06) {
                    EXPECT_EQ(has(mask, x, y), inside(set, mask, scale, x + 0.5, y + 0.5));
                }
            }
    }
}

TEST(PackMaskProperty, QuarterTurnsMoveEveryCellCorrectly) {
    for (uint32_t seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const PackInput set = random_charts(random, 1);
        const Mask mask = mask_of(set, 0, {}, 5 + random() % 90, 1.5);
        for (uint32_t quarters = 1; quarters <= 3; ++quarters) {
            Mask turned_mask;
            MaskWork work;
            turn_mask(mask, quarters, turned_mask, work);
            ASSERT_EQ(turned_mask.cells, mask.cells);
            for (uint32_t y = 0; y < mask.height; ++y)
                for (uint32_t x = 0; x < mask.width; ++x) {
                    // The centre of the cell in the chart's frame, turned, in the new mask.
                    Vec2 p = Vec2{x + 0.5, y + 0.5} + mask.origin;
                    for (uint32_t i = 0; i < quarters; ++i)
                        p = {-p.y, p.x};
                    p = p - turned_mask.origin;
                    ASSERT_EQ(has(mask, x, y), has(turned_mask, uint32_t(p.x), uint32_t(p.y)));
                }
            const uint32_t size = 1u << turned_mask.square_level;
            for (uint32_t i = 0; i < size; ++i)
                for (uint32_t j = 0; j < size; ++j)
                    ASSERT_TRUE(
                        has(turned_mask, turned_mask.square_x + i, turned_mask.square_y + j));
        }
    }
}

TEST(PackFieldProperty, FindsTheSamePlaceAsALinearSearch) {
    for (uint32_t seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const uint32_t width = 40 + random() % 160, height = 40 + random() % 120;
        PlainField plain(width, height);
        Field field;
        field.reset(width, height, 8, 1 + random() % 7);
        for (int i = 0; i < 40; ++i) {
            const PackInput set = random_charts(random, 1);
            const Mask mask = mask_of(set, 0, {}, 3 + random() % 20, 0.6);
            const uint32_t top = random() % 4 == 0 ? height / 2 : height;
            const uint32_t bottom = random() % 4 == 0 ? random() % height : 0;
            const Spot want = plain.find(mask, bottom, top);
            const Spot got = field.find(mask, bottom, top);
            ASSERT_EQ(got.found, want.found);
            if (!want.found)
                continue;
            ASSERT_EQ(got.x, want.x);
            ASSERT_EQ(got.y, want.y);
            field.place(mask, got.x, got.y);
            plain.place(mask, got.x, got.y);
        }
    }
}

TEST(PackField, MaskLargerThanTheFieldFindsNoPlace) {
    PackInput set;
    set.box(10, 3);
    const Mask mask = mask_of(set, 0, {}, 1, 0.5);
    Field field;
    field.reset(8, 64, 4, 2);
    EXPECT_FALSE(field.find(mask, 0, 64).found);
    field.reset(64, 2, 4, 2);
    EXPECT_FALSE(field.find(mask, 0, 2).found);
}

TEST(PackLayout, ChartsWhoseMasksAreNotKeptLieWhereTheyDoOtherwise) {
    std::mt19937 random(3);
    const PackInput set = random_charts(random, 1300);
    const ChartChains chains = chain_borders(set.face());
    PackOptions options;
    options.width = options.height = 512;
    const Page page = make_page(room_of(options), chains, 1, 512, false);
    Plan plan;
    plan.fine_turn.assign(set.count(), 0);
    for (uint32_t i = 0; i < set.count(); ++i) {
        if (chains.shapes[i].chain_begin != chains.shapes[i].chain_end)
            plan.order.push_back(i);
        plan.fine_turn[i] = uint8_t(i % 3);
    }
    ASSERT_TRUE(MaskSet::are_passing(plan));
    MaskSet masks(chains);
    LayoutMaker maker([] { return true; });
    double area = 0;
    for (const ChartShape& shape : chains.shapes)
        area += shape.area;
    for (const double share : {0.1, 0.4, 3.0}) { // of the room; the last do not fit
        masks.reset(page, std::sqrt(share * 512 * 512 / area));
        const Layout passing = maker.make(masks, page, plan);
        const Layout kept = maker.make(masks, page, plan, 1e300); // its cost needs all masks before
        EXPECT_EQ(passing.complete, share < 1);
        EXPECT_EQ(passing.complete, kept.complete);
        EXPECT_EQ(passing.height, kept.height);
        for (size_t i = 0; i < set.count(); ++i) {
            ASSERT_EQ(passing.slots[i].x, kept.slots[i].x) << i;
            ASSERT_EQ(passing.slots[i].y, kept.slots[i].y) << i;
            ASSERT_EQ(passing.slots[i].quarter, kept.slots[i].quarter) << i;
        }
    }
}
