// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/scene_renderer/room.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "tools/scene_renderer/perspective.h"

namespace tristop::scene {

using namespace layout;

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kTableTop = 0.735f, kSillTop = kWindowBottom, kPanelTop = 0.55f;
// The places from -0.8 to 0.8 in both directions are divided into tiles, each with a list of what it may
// show.
constexpr float kTileReach = 0.8f;
constexpr int kTiles = 128;

int tileOf(float place) {
    return floorToInt((place / kTileReach + 1) * 0.5f * kTiles);
}

// Furniture that both stands in the picture and throws shadows.
constexpr Box kSill = {{kWindowLeft - 0.09f, kSillTop - 0.035f, 3.9f},
                       {kWindowRight + 0.09f, kSillTop, kGlass - 0.025f}};
constexpr Box kTableBoard = {{0.6f, kTableTop - 0.03f, 2.58f}, {1.62f, kTableTop, 3.36f}};
constexpr Box kChairSeat = {{-1.84f, 0.42f, 3.08f}, {-1.4f, 0.455f, 3.52f}};
constexpr Box kBookshelf = {{1.27f, 0, 3.7f}, {2.42f, 2.12f, 4.0f}};
constexpr Turned kVase = {
    {0.735f, kSillTop, 4.0f}, 0.26f, {0.045f, 0.075f, 0.09f, 0.085f, 0.06f, 0.034f, 0.03f, 0.045f}};
constexpr Cat kCat = {{0.22f, kSillTop, 4.015f}};
constexpr Cone kPot = {{-0.98f, kSillTop, 4.03f}, 0.05f, 0.07f, 0.1f};
constexpr Turned kBowl = {
    {0.86f, kTableTop, 3.1f}, 0.095f, {0.05f, 0.045f, 0.06f, 0.09f, 0.115f, 0.132f, 0.142f, 0.147f}};
constexpr Cone kMug = {{1.13f, kTableTop, 2.86f}, 0.036f, 0.04f, 0.095f};

/// Samples of objects are told apart by numbers from here on, those of the room itself by smaller ones.
constexpr int kFirstObject = 100;

constexpr Color kWood = {0.42f, 0.24f, 0.11f}, kDeepWood = {0.2f, 0.095f, 0.04f};

/// Distance of `p` from a box, 0 inside.
float distanceTo(const Bounds &box, Vec3 p) {
    const auto gap = [](float low, float high, float x) { return std::max({low - x, x - high, 0.0f}); };
    return length(
        {gap(box.low.x, box.high.x, p.x), gap(box.low.y, box.high.y, p.y), gap(box.low.z, box.high.z, p.z)});
}

/// Distance of `p` from an upright cylinder that fills `box`, 0 inside.
float distanceToRound(const Bounds &box, Vec3 p) {
    const Vec3 centre = (box.low + box.high) * 0.5f;
    const float dx = p.x - centre.x, dz = p.z - centre.z;
    const float around = std::max(std::sqrt(dx * dx + dz * dz) - 0.5f * (box.high.x - box.low.x), 0.0f);
    const float above = std::max({box.low.y - p.y, p.y - box.high.y, 0.0f});
    return std::sqrt(around * around + above * above);
}

std::array<Box, 4> legsBelow(const Box &board, float inset, float thickness) {
    const float x0 = board.low.x + inset, x1 = board.high.x - inset - thickness;
    const float z0 = board.low.z + inset, z1 = board.high.z - inset - thickness;
    const auto leg = [&](float x, float z) {
        return Box{{x, 0, z}, {x + thickness, board.low.y, z + thickness}};
    };
    return {leg(x0, z0), leg(x1, z0), leg(x0, z1), leg(x1, z1)};
}

/// The light of the room does not depend on the seed: it is worked out once.
const Lighting &roomLighting() {
    static const Lighting lighting = [] {
        std::vector<Shape> blockers = {
            kSill,
            kTableBoard,
            kChairSeat,
            kBookshelf,
            Box{{-1.84f, 0.6f, 3.08f}, {-1.805f, 0.98f, 3.52f}},
            kCat,
            kVase,
            kPot,
            Ellipsoid{kBowl.base + Vec3{0, 0.08f, 0}, {0.145f, 0.06f, 0.145f}},
            kMug,
            Cone{{kLampBulb.x, kTableTop, kLampBulb.z}, 0.075f, 0.05f, 0.3f},
            Cone{{kLampBulb.x, kLampBulb.y - 0.12f, kLampBulb.z}, 0.17f, 0.1f, 0.24f}};
        for (const Box &leg : legsBelow(kTableBoard, 0.03f, 0.05f))
            blockers.push_back(leg);
        for (const Box &leg : legsBelow(kChairSeat, 0, 0.035f))
            blockers.push_back(leg);
        return Lighting(std::move(blockers));
    }();
    return lighting;
}

} // namespace

Room::Room(std::uint64_t seed) : noise(seed), landscape(seed) {
    addWindow();
    addWallThings();
    addBookshelf();
    addChair();
    addTable();
    addSillThings();
    sortIntoTiles();
}

void Room::add(Shape shape, Surface surface, Color tint) {
    const Bounds bounds = std::visit([](const auto &s) { return s.bounds(); }, shape);
    const Contact contact = {bounds, !std::holds_alternative<Box>(shape)};
    if (bounds.low.y < 0.02f)
        floorContacts.push_back(contact);
    if (std::abs(bounds.low.y - kTableTop) < 0.005f && bounds.high.z < kTableBoard.high.z)
        tableContacts.push_back(contact);
    if (bounds.high.z > kBackWall - 0.04f && bounds.low.z < kBackWall &&
        bounds.high.y - bounds.low.y > 0.02f &&
        (surface == Surface::gilt || surface == Surface::whitePaint || surface == Surface::linen ||
         surface == Surface::darkWood))
        wallContacts.push_back(contact);
    const float variety = noise.cell(static_cast<int>(objects.size()), -1);
    objects.push_back({std::move(shape), surface, tint, variety, bounds});
}

void Room::addWindow() {
    const auto bar = [&](float x0, float x1, float y0, float y1, float front, float back) {
        add(Box{{x0, y0, front}, {x1, y1, back}}, Surface::whitePaint);
    };
    // The frame fills what is between and around the panes.
    constexpr float kFront = 4.165f, kBack = 4.235f;
    bar(kWindowLeft, kPaneColumns[0].x, kWindowBottom, kWindowTop, kFront, kBack);
    bar(kPaneColumns[3].y, kWindowRight, kWindowBottom, kWindowTop, kFront, kBack);
    bar(kPaneColumns[0].x, kPaneColumns[3].y, kWindowBottom, kPaneRows[0].x, kFront, kBack);
    bar(kPaneColumns[0].x, kPaneColumns[3].y, kPaneRows[2].y, kWindowTop, kFront, kBack);
    bar(kPaneColumns[1].y, kPaneColumns[2].x, kPaneRows[0].x, kPaneRows[2].y, kFront - 0.012f, kBack);
    for (const std::size_t sash : {0u, 2u}) {
        bar(kPaneColumns[sash].y, kPaneColumns[sash + 1].x, kPaneRows[0].x, kPaneRows[2].y, 4.185f, 4.215f);
        for (const std::size_t row : {0u, 1u})
            bar(kPaneColumns[sash].x, kPaneColumns[sash + 1].y, kPaneRows[row].y, kPaneRows[row + 1].x,
                4.185f, 4.215f);
    }
    add(Ellipsoid{{-0.1f, 1.28f, 4.13f}, {0.012f, 0.05f, 0.014f}}, Surface::brass); // handle
    // Sill board and the moulding around the opening.
    add(kSill, Surface::whitePaint);
    add(Box{{kWindowLeft - 0.075f, kSillTop, 3.98f}, {kWindowLeft, kWindowTop, 4.0f}}, Surface::whitePaint);
    add(Box{{kWindowRight, kSillTop, 3.98f}, {kWindowRight + 0.075f, kWindowTop, 4.0f}}, Surface::whitePaint);
    add(Box{{kWindowLeft - 0.075f, kWindowTop, 3.975f}, {kWindowRight + 0.075f, kWindowTop + 0.08f, 4.0f}},
        Surface::whitePaint);
}

void Room::addWallThings() {
    add(Box{{kLeftWall, 0, 3.98f}, {kRightWall, 0.11f, 4.0f}}, Surface::whitePaint); // skirting
    add(Box{{kLeftWall, kPanelTop, 3.972f}, {kRightWall, kPanelTop + 0.035f, 4.0f}},
        Surface::whitePaint); // rail
    // Curtains on a rod.
    constexpr float kHang = 3.925f;
    add(Curtain{kHang, 2.31f, 0.2f, -1.46f, -0.93f, -1.27f, -1.16f}, Surface::linen);
    add(Curtain{kHang, 2.31f, 0.2f, 1.2f, 0.74f, 1.05f, 0.96f}, Surface::linen);
    add(Box{{-1.56f, 2.325f, kHang - 0.012f}, {1.24f, 2.347f, kHang + 0.01f}}, Surface::brass);
    add(Ellipsoid{{-1.58f, 2.336f, kHang}, {0.028f, 0.028f, 0.028f}}, Surface::brass);
    for (int i = 0; i < 7; ++i) {
        const float left = -1.45f + 0.082f * static_cast<float>(i),
                    right = 1.19f - 0.07f * static_cast<float>(i);
        for (const float x : {left, right})
            add(Box{{x, 2.305f, kHang - 0.016f}, {x + 0.008f, 2.352f, kHang - 0.012f}}, Surface::brass);
    }
    for (const float x : {-1.47f, 1.04f}) // ties
        add(Box{{x, 0.935f, kHang - 0.012f}, {x + 0.17f, 0.965f, kHang - 0.006f}}, Surface::gilt);
    // A framed painting.
    constexpr float kLeft = -2.0f, kRight = -1.6f, kBottom = 1.3f, kTop = 1.86f, kEdge = 0.045f;
    add(Box{{kLeft, kBottom, 3.985f}, {kRight, kTop, 3.995f}}, Surface::painting);
    add(Box{{kLeft, kBottom, 3.96f}, {kLeft + kEdge, kTop, 4.0f}}, Surface::gilt);
    add(Box{{kRight - kEdge, kBottom, 3.96f}, {kRight, kTop, 4.0f}}, Surface::gilt);
    add(Box{{kLeft + kEdge, kBottom, 3.96f}, {kRight - kEdge, kBottom + kEdge, 4.0f}}, Surface::gilt);
    add(Box{{kLeft + kEdge, kTop - kEdge, 3.96f}, {kRight - kEdge, kTop, 4.0f}}, Surface::gilt);
}

void Room::addBookshelf() {
    const auto [low, high] = kBookshelf;
    constexpr float kBoard = 0.024f;
    add(Box{low, {low.x + kBoard, high.y, high.z}}, Surface::darkWood);
    add(Box{{high.x - kBoard, low.y, low.z}, high}, Surface::darkWood);
    add(Box{{low.x, low.y, high.z - 0.015f}, {high.x, high.y, high.z - 0.005f}}, Surface::darkWood);
    static constexpr std::array<float, 7> kShelves = {0.07f, 0.44f, 0.79f, 1.12f, 1.45f, 1.78f, 2.1f};
    for (const float y : kShelves)
        add(Box{{low.x, y - kBoard, low.z + 0.004f}, {high.x, y, high.z}}, Surface::darkWood);
    static constexpr std::array<Color, 9> kBindings = {{{0.42f, 0.06f, 0.05f},
                                                        {0.07f, 0.16f, 0.32f},
                                                        {0.08f, 0.26f, 0.14f},
                                                        {0.5f, 0.3f, 0.1f},
                                                        {0.55f, 0.48f, 0.34f},
                                                        {0.12f, 0.08f, 0.07f},
                                                        {0.3f, 0.1f, 0.2f},
                                                        {0.1f, 0.3f, 0.34f},
                                                        {0.6f, 0.4f, 0.08f}}};
    for (int shelf = 0; shelf + 1 < static_cast<int>(kShelves.size()); ++shelf) {
        const auto draw = [&](int book, int what) { return noise.cell(100 * shelf + book, 50 + what); };
        const float bottom = kShelves[static_cast<std::size_t>(shelf)];
        float x = low.x + kBoard + 0.004f;
        for (int book = 0; x < high.x - kBoard - 0.06f; ++book) {
            // Runs of the same edition, single volumes, now and then a gap.
            const bool sameEdition = book > 0 && draw(book / 5, 9) < 0.5f;
            const int model = sameEdition ? 60 + book / 5 : book;
            const float thickness = mix(0.018f, 0.052f, draw(model, 0));
            const float height = mix(0.19f, 0.285f, draw(model, 1));
            if (draw(book, 2) < 0.05f) {
                x += 0.05f;
                continue;
            }
            const float recess = 0.03f + 0.02f * draw(sameEdition ? model : book, 3);
            const Color tint =
                kBindings[static_cast<std::size_t>(draw(model, 4) * 9)] * mix(0.75f, 1.2f, draw(book, 5));
            add(Box{{x, bottom, low.z + recess}, {x + thickness, bottom + height, low.z + recess + 0.19f}},
                Surface::book, tint);
            x += thickness + 0.0015f;
        }
    }
    add(Ellipsoid{{1.62f, high.y + 0.105f, 3.84f}, {0.1f, 0.1f, 0.1f}}, Surface::globe);
}

void Room::addChair() {
    add(kChairSeat, Surface::darkWood);
    for (const Box &leg : legsBelow(kChairSeat, 0, 0.035f))
        add(leg, Surface::darkWood);
    const Vec3 low = kChairSeat.low, high = kChairSeat.high;
    for (const float z : {low.z, high.z - 0.035f})
        add(Box{{low.x, high.y, z}, {low.x + 0.035f, 1.0f, z + 0.035f}}, Surface::darkWood);
    for (const float y : {0.62f, 0.76f, 0.9f})
        add(Box{{low.x + 0.006f, y, low.z + 0.035f}, {low.x + 0.026f, y + 0.07f, high.z - 0.035f}},
            Surface::darkWood);
    for (const float y : {0.15f, 0.24f}) {
        add(Box{{low.x + 0.035f, y, low.z + 0.006f}, {high.x - 0.035f, y + 0.022f, low.z + 0.028f}},
            Surface::darkWood);
        add(Box{{high.x - 0.028f, y + 0.03f, low.z + 0.035f}, {high.x - 0.006f, y + 0.052f, high.z - 0.035f}},
            Surface::darkWood);
    }
    add(Ellipsoid{{-1.61f, 0.475f, 3.3f}, {0.19f, 0.045f, 0.19f}}, Surface::linen,
        {0.5f, 0.12f, 0.1f}); // cushion
}

void Room::addTable() {
    add(kTableBoard, Surface::tableWood);
    for (const Box &leg : legsBelow(kTableBoard, 0.03f, 0.05f))
        add(leg, Surface::tableWood);
    const Vec3 low = kTableBoard.low, high = kTableBoard.high;
    add(Box{{low.x + 0.08f, low.y - 0.08f, low.z + 0.042f}, {high.x - 0.08f, low.y, low.z + 0.062f}},
        Surface::tableWood);
    add(Box{{low.x + 0.042f, low.y - 0.08f, low.z + 0.08f}, {low.x + 0.062f, low.y, high.z - 0.08f}},
        Surface::tableWood);

    const Vec3 foot = {kLampBulb.x, kTableTop, kLampBulb.z};
    add(Turned{foot, 0.36f, {0.085f, 0.05f, 0.062f, 0.075f, 0.06f, 0.03f, 0.016f, 0.014f}}, Surface::glaze,
        {0.05f, 0.16f, 0.2f});
    add(Cone{{foot.x, kLampBulb.y - 0.12f, foot.z}, 0.17f, 0.1f, 0.24f, true}, Surface::lampShade);

    add(kBowl, Surface::glaze, {0.62f, 0.6f, 0.54f});
    constexpr float kOrange = 0.042f;
    for (const Vec3 place :
         {Vec3{-0.062f, 0.092f, 0.02f}, Vec3{0.03f, 0.094f, -0.06f}, Vec3{0.058f, 0.09f, 0.035f},
          Vec3{-0.03f, 0.09f, -0.065f}, Vec3{0.0f, 0.145f, 0.0f}})
        add(Ellipsoid{kBowl.base + place, {kOrange, kOrange * 0.95f, kOrange}}, Surface::orange);
    add(kMug, Surface::mug);
    add(Box{{1.3f, kTableTop, 2.7f}, {1.52f, kTableTop + 0.035f, 2.9f}}, Surface::book,
        {0.45f, 0.08f, 0.06f});
    add(Box{{1.32f, kTableTop + 0.035f, 2.71f}, {1.51f, kTableTop + 0.06f, 2.86f}}, Surface::book,
        {0.08f, 0.2f, 0.34f});
    add(Box{{1.31f, kTableTop + 0.06f, 2.72f}, {1.49f, kTableTop + 0.1f, 2.88f}}, Surface::book,
        {0.5f, 0.36f, 0.12f});
}

void Room::addSillThings() {
    add(kCat, Surface::fur);
    add(kVase, Surface::glaze, {0.1f, 0.17f, 0.42f});
    const auto addLeaf = [&](const Leaf &leaf, Color tint) {
        add(leaf, Surface::leaf, tint);
        leaves.push_back(leaf);
    };
    // A spray of leaves out of the vase.
    const Vec3 mouth = kVase.base + Vec3{0, kVase.height - 0.01f, 0};
    for (int i = 0; i < 46; ++i) {
        const auto draw = [&](int what) { return noise.cell(i, 300 + what); };
        const float stem = mix(0.05f, 0.36f, std::sqrt(draw(0))), side = mix(-0.85f, 0.85f, draw(1));
        const Vec3 base =
            mouth + Vec3{stem * std::sin(side), stem * std::cos(side) * 0.85f, mix(-0.05f, 0.03f, draw(2))};
        const float turn = side + mix(-0.9f, 0.9f, draw(3)), size = mix(0.05f, 0.1f, draw(4));
        const Vec3 tip = base + Vec3{size * std::sin(turn), size * std::cos(turn), 0};
        addLeaf({base, tip, size * mix(0.35f, 0.5f, draw(5))},
                mix(Color{0.07f, 0.22f, 0.05f}, Color{0.2f, 0.36f, 0.06f}, draw(6)));
        if (i % 3 == 0) {
            const Vec3 root = {mouth.x, mouth.y, base.z + 0.002f};
            addLeaf({root, base + Vec3{0, 0, 0.002f}, 0.008f}, {0.1f, 0.16f, 0.05f});
        }
    }
    spray = leaves.front().bounds();
    for (const Leaf &leaf : leaves) {
        const auto [low, high] = leaf.bounds();
        spray.low = {std::min(spray.low.x, low.x), std::min(spray.low.y, low.y),
                     std::min(spray.low.z, low.z)};
        spray.high = {std::max(spray.high.x, high.x), std::max(spray.high.y, high.y),
                      std::max(spray.high.z, high.z)};
    }
    // A terracotta pot with a few leaves at the other end.
    add(kPot, Surface::terracotta);
    add(Cone{kPot.base + Vec3{0, kPot.height, 0}, 0.077f, 0.078f, 0.024f}, Surface::terracotta);
    for (int i = 0; i < 22; ++i) {
        const auto draw = [&](int what) { return noise.cell(i, 400 + what); };
        const float side = mix(-1.2f, 1.2f, draw(0)), size = mix(0.09f, 0.19f, draw(1));
        const Vec3 base = {kPot.base.x + 0.05f * side, kSillTop + 0.115f, mix(3.99f, 4.07f, draw(2))};
        add(Leaf{base, base + Vec3{size * std::sin(side), size * std::cos(side), 0}, size * 0.28f},
            Surface::leaf, mix(Color{0.1f, 0.26f, 0.12f}, Color{0.22f, 0.36f, 0.16f}, draw(3)));
    }
}

void Room::sortIntoTiles() {
    tiles.resize(kTiles * kTiles);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const Bounds &b = objects[i].bounds;
        Vec2 low = {2, 2}, high = {-2, -2};
        for (int corner = 0; corner < 8; ++corner) {
            const Vec2 p =
                perspective::project({(corner & 1) ? b.low.x : b.high.x, (corner & 2) ? b.low.y : b.high.y,
                                      (corner & 4) ? b.low.z : b.high.z});
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y)};
        }
        for (int row = std::max(tileOf(low.y), 0); row <= std::min(tileOf(high.y), kTiles - 1); ++row)
            for (int column = std::max(tileOf(low.x), 0); column <= std::min(tileOf(high.x), kTiles - 1);
                 ++column)
                tiles[static_cast<std::size_t>(row * kTiles + column)].push_back(
                    static_cast<std::uint16_t>(i));
    }
}

Room::Surface Room::findShell(const Ray &ray, Hit &hit) const {
    Surface found = Surface::outside;
    const auto plane = [&](float t, Vec3 normal, Surface surface) {
        if (t < hit.t) {
            hit = {t, normal, {}};
            found = surface;
        }
    };
    const Vec3 o = ray.origin, d = ray.direction; // d.z is 1
    const Vec3 atWall = ray.at(kBackWall);
    const bool intoWindow = atWall.x > kWindowLeft && atWall.x < kWindowRight && atWall.y > kWindowBottom &&
                            atWall.y < kWindowTop;
    if (intoWindow) {
        const float side = ((d.x > 0 ? kWindowRight : kWindowLeft) - o.x) / d.x;
        const float lid = ((d.y > 0 ? kWindowTop : kWindowBottom) - o.y) / d.y;
        if (side < kOutside)
            plane(side, {d.x > 0 ? -1.0f : 1.0f, 0, 0}, Surface::recess);
        if (lid < kOutside)
            plane(lid, {0, d.y > 0 ? -1.0f : 1.0f, 0}, Surface::recess);
        return found;
    }
    plane(kBackWall, {0, 0, -1}, Surface::backWall);
    plane(((d.x > 0 ? kRightWall : kLeftWall) - o.x) / d.x, {d.x > 0 ? -1.0f : 1.0f, 0, 0},
          Surface::sideWall);
    plane(((d.y > 0 ? kCeiling : 0) - o.y) / d.y, {0, d.y > 0 ? -1.0f : 1.0f, 0},
          d.y > 0 ? Surface::ceiling : Surface::floor);
    return found;
}

Room::Surface Room::findNearest(Vec2 place, const Ray &ray, Hit &hit, const Object *&object) const {
    const int column = tileOf(place.x), row = tileOf(place.y);
    if (column >= 0 && column < kTiles && row >= 0 && row < kTiles)
        for (const std::uint16_t index : tiles[static_cast<std::size_t>(row * kTiles + column)])
            if (std::visit([&](const auto &s) { return s.intersect(ray, hit); }, objects[index].shape))
                object = &objects[index];
    const Surface shell = findShell(ray, hit);
    if (shell != Surface::outside)
        object = nullptr;
    return object ? object->surface : shell;
}

Sample Room::sample(Vec2 place, float footprint, const Balloons &balloons) const {
    const Ray ray = {perspective::kEye, perspective::direction(place)};
    const float spread = footprint * perspective::kWidth;
    Hit hit;
    const Object *object = nullptr;
    const Surface surface = findNearest(place, ray, hit, object);
    Material m;
    Sample sample;
    if (balloons.intersect(ray, place, hit, m)) {
        const Vec3 p = ray.at(hit.t);
        sample = {lit(m, p, hit.normal, hit.normal, ray.direction, 1, nullptr).radiance, 1, -1};
    } else if (surface == Surface::outside) {
        return {landscape.radiance(ray.direction.x, ray.direction.y, spread), 0, 0};
    } else {
        const Vec3 p = ray.at(hit.t);
        Vec3 normal = hit.normal;
        m = material(surface, object, hit, p, normal, spread * hit.t);
        sample = lit(m, p, hit.normal, normal, ray.direction, occlusion(surface, object, p, hit.normal),
                     &balloons);
        sample.surface =
            object ? kFirstObject + static_cast<int>(object - objects.data()) : static_cast<int>(surface);
    }
    // Veiling glare of the lens around the lamp.
    const Vec2 bulb = perspective::project(kLampBulb);
    const float dx = place.x - bulb.x, dy = place.y - bulb.y;
    const float spreadSquared = (dx * dx + dy * dy) / (0.05f * 0.05f);
    sample.radiance += Color{0.016f, 0.01f, 0.0045f} * (1 / ((1 + spreadSquared) * (1 + spreadSquared)));
    return sample;
}

Sample Room::lit(const Material &m, Vec3 p, Vec3 facing, Vec3 normal, Vec3 direction, float openness,
                 const Balloons *shadows) const {
    const Lighting &lighting = roomLighting();
    Color light = lighting.ambient(p + facing * 0.07f, normal) * openness +
                  lighting.lamp(p, normal) * mix(1.0f, openness, 0.5f);
    Color sunlight = lighting.sun(p, normal);
    if (m.translucency > 0) {
        const Color behind = lighting.ambient(p - facing * 0.1f, -normal);
        light = mix(light, behind, m.translucency);
        sunlight =
            sunlight * (1 - 0.5f * m.translucency) + lighting.sun(p, -normal) * (0.7f * m.translucency);
    }
    Color lost;
    if (shadows && luminance(sunlight) > 0) {
        sunlight *= sunThroughLeaves(p);
        lost = sunlight * (1 - shadows->sunlight(p));
        sunlight = sunlight - lost;
    }
    Color total = m.emission + m.albedo * (light + sunlight);
    if (m.gloss > 0) {
        // Fresnel reflection after Schlick (1994), weaker at grazing angles on rough surfaces.
        const Vec3 sight = normalize(direction);
        const float grazing = 1 - saturate(-dot(sight, normal));
        const float fresnel =
            m.gloss + (1 - m.gloss) * grazing * grazing * grazing * grazing * grazing / (1 + 8 * m.roughness);
        total += lighting.mirrored(p, reflect(sight, normal), m.roughness) * (fresnel * openness);
    }
    const float removed = luminance(m.albedo * lost);
    return {total, removed / (luminance(total) + removed), 0};
}

float Room::sunThroughLeaves(Vec3 p) const {
    const Ray ray = {p, kTowardsSun};
    Hit hit;
    if (p.z > spray.low.z || !Box{spray.low, spray.high}.intersect(ray, hit))
        return 1;
    for (const Leaf &leaf : leaves)
        if (Hit shadow; leaf.intersect(ray, shadow))
            return 0.2f;
    return 1;
}

float Room::occlusion(const std::vector<Contact> &contacts, Vec3 p) {
    float light = 1;
    for (const Contact &contact : contacts) {
        const float d = contact.round ? distanceToRound(contact.bounds, p) : distanceTo(contact.bounds, p);
        if (d < 0.25f)
            light *= 1 - 0.55f * std::exp(-d * 18) * smoothStep(0.25f, 0.1f, d);
    }
    return light;
}

float Room::occlusion(Surface surface, const Object *object, Vec3 p, Vec3 normal) const {
    const auto corner = [](float distance) { return 1 - 0.4f * std::exp(-std::max(distance, 0.0f) * 9); };
    switch (surface) {
    case Surface::floor:
        return occlusion(floorContacts, p) * corner(kBackWall - p.z) * corner(p.x - kLeftWall);
    case Surface::backWall:
        return occlusion(wallContacts, p) * corner(p.y) * corner(p.x - kLeftWall);
    case Surface::sideWall:
        return corner(p.y) * corner(kBackWall - p.z);
    case Surface::tableWood:
        return normal.y > 0 ? occlusion(tableContacts, p) : 0.85f;
    case Surface::recess:
        return 1 - 0.3f * std::exp(-(kGlass - p.z) * 30);
    case Surface::book:
    case Surface::darkWood:
        if (object && p.x > kBookshelf.low.x && p.z > kBookshelf.low.z + 0.002f) { // deep in the bookshelf
            const float depth = p.z - kBookshelf.low.z;
            const float gap = object->surface == Surface::book
                                  ? std::min(p.x - object->bounds.low.x, object->bounds.high.x - p.x)
                                  : 0.01f;
            return std::exp(-depth * 9) * (0.55f + 0.45f * smoothStep(0, 0.006f, gap)) *
                   (normal.y > 0.5f ? 0.5f : 1.0f);
        }
        return 1;
    default:
        return 1;
    }
}

Color Room::wood(float along, float across, float variety, float footprint, Color light, Color dark) const {
    const float shift = variety * 53;
    const float warp = noise.fractal(along * 1.3f + shift, across * 6 + shift, 3, footprint * 6);
    const float rings = 0.5f + 0.5f * std::sin((across * 34 + 5 * warp + shift) * 2 * kPi * 0.5f);
    const float fibre = noise.fractal(along * 12 + shift, across * 260, 3, footprint * 260);
    const float pores = noise.fractal(along * 40, across * 420 + shift, 1, footprint * 420);
    return mix(dark, light, saturate(0.35f + 0.4f * rings + 0.5f * warp + 0.35f * fibre)) *
           ((0.82f + 0.36f * variety) * (1 - 0.35f * smoothStep(0.15f, 0.4f, pores)));
}

Material Room::floorMaterial(Vec3 p, float footprint) const {
    // The rug, woven in checks with a striped border and fringes.
    constexpr float kLeft = -1.02f, kRight = 0.5f, kNear = 2.2f, kFar = 3.42f, kCheck = 0.127f;
    const float ripple = 0.004f * noise.gradient(p.x * 5, p.z * 5);
    const float toSide = std::min(p.x - kLeft, kRight - p.x) + ripple,
                toEnd = std::min(p.z - kNear, kFar - p.z) + ripple;
    const float weave = noise.fractal(p.x * 240, p.z * 240, 2, footprint * 240) +
                        0.8f * noise.fractal(p.x * 40, p.z * 120, 3, footprint * 120);
    if (toSide > 0 && toEnd > 0) {
        const float edge = std::min(toSide, toEnd);
        const float cx = (p.x - kLeft - 0.13f) / kCheck, cz = (p.z - kNear - 0.13f) / kCheck;
        const bool odd = (floorToInt(cx) + floorToInt(cz)) & 1;
        const Color red = {0.36f, 0.05f, 0.04f}, cream = {0.47f, 0.39f, 0.27f}, blue = {0.05f, 0.09f, 0.2f};
        Color color = odd ? red : cream;
        const float diamond = std::abs(fraction(cx) - 0.5f) + std::abs(fraction(cz) - 0.5f);
        if (diamond < 0.3f)
            color = diamond < 0.14f ? (odd ? cream : red) : blue;
        if (edge < 0.13f)
            color = edge < 0.03f    ? blue
                    : edge < 0.055f ? cream
                    : edge < 0.11f  ? mix(red, cream, smoothStep(0.45f, 0.55f, triangle((p.x + p.z) * 12)))
                                    : blue;
        return {.albedo = color * (1 + 0.55f * weave),
                .gloss = 0,
                .roughness = 0,
                .translucency = 0,
                .emission = {}};
    }
    if (toEnd > 0 && toSide > -0.055f && triangle(p.z * 70 + weave * 0.5f + toSide * 9) > 0.42f)
        return {.albedo = Color{0.5f, 0.43f, 0.32f} * (1 + 0.4f * weave),
                .gloss = 0,
                .roughness = 0,
                .translucency = 0,
                .emission = {}};
    // Floorboards that run towards the window.
    constexpr float kBoard = 0.135f;
    const float place = p.x / kBoard;
    const int board = floorToInt(place);
    const float start = 2.1f * noise.cell(board, 900);
    const float run = (p.z + start) / 1.9f;
    const int piece = floorToInt(run);
    const float toJoint = std::min(0.5f * kBoard * (1 - std::abs(2 * fraction(place) - 1)),
                                   0.95f * (1 - std::abs(2 * fraction(run) - 1)));
    const float seam = smoothStep(0.0006f, 0.0035f, toJoint);
    const float variety = noise.cell(board, piece + 910);
    Color color =
        wood(p.z, p.x, variety, footprint, {0.5f, 0.3f, 0.15f}, {0.27f, 0.14f, 0.06f}) * (0.3f + 0.7f * seam);
    color *= 0.9f + 0.2f * noise.fractal(p.x * 2, p.z * 2, 3, footprint);
    return {.albedo = color,
            .gloss = 0.035f * seam,
            .roughness = 0.05f + 0.02f * noise.gradient(p.x * 9, p.z * 3),
            .translucency = 0,
            .emission = {}};
}

Material Room::wallMaterial(Vec3 p, float footprint) const {
    const float across = p.z < kBackWall - 0.001f ? p.z : p.x;
    const float grain = noise.fractal(across * 90, p.y * 90, 4, footprint * 90);
    Material m;
    if (p.y < kPanelTop) { // painted panels
        const float panel = fraction(across / 0.42f) * 0.42f;
        const float toEdge = std::min({panel - 0.05f, 0.37f - panel, p.y - 0.17f, kPanelTop - 0.07f - p.y});
        const float moulding = softBox(0.0f, 0.022f, 0.004f, toEdge);
        m.albedo = Color{0.56f, 0.54f, 0.48f} *
                   (1 - 0.3f * moulding + 0.16f * softBox(0.022f, 0.034f, 0.004f, toEdge)) *
                   (1 + 0.08f * grain);
        m.gloss = 0.02f;
        m.roughness = 0.3f;
        return m;
    }
    // Wallpaper: sprigs in staggered rows on a ground with fine stripes.
    constexpr float kRepeat = 0.15f;
    const float py = p.y / kRepeat, row = std::floor(py);
    const float px = across / (kRepeat * 0.8f) + 0.5f * (static_cast<int>(row) & 1);
    const float x = fraction(px) - 0.5f, y = fraction(py) - 0.5f;
    const float radius = std::sqrt(x * x + y * y), angle = std::atan2(y, x);
    const float bloom = 0.2f + 0.07f * std::cos(5 * angle + 1.6f);
    float motif = smoothStep(0.02f, -0.02f, radius - bloom) *
                  (0.45f + 0.55f * smoothStep(0.05f, 0.09f, std::abs(radius - 0.09f) + 0.04f));
    const float stem = std::abs(x - 0.1f * std::sin(y * 6.3f)) - 0.016f;
    motif = std::max(motif, 0.6f * smoothStep(0.012f, 0.0f, stem) * smoothStep(0.16f, 0.24f, radius));
    motif = std::max(
        motif,
        0.7f * smoothStep(0.02f, -0.02f,
                          std::hypot((x - 0.2f) * 0.8f + 0.35f * (y + 0.33f), (y + 0.33f) * 1.3f) - 0.075f));
    const float stripe = 0.5f + 0.5f * std::sin(across * 2 * kPi / 0.012f);
    const Color ground = Color{0.2f, 0.28f, 0.25f} * (1 + 0.1f * stripe * saturate(1.2f - footprint * 130));
    m.albedo = mix(ground, Color{0.46f, 0.47f, 0.36f}, 0.75f * motif) *
               (1 + 0.16f * grain + 0.12f * noise.fractal(across * 3, p.y * 3, 3, footprint * 3));
    return m;
}

Material Room::bookMaterial(const Object &book, Vec3 p, Vec3 &normal, float footprint) const {
    const Vec3 low = book.bounds.low, high = book.bounds.high;
    const float cloth =
        noise.fractal(p.x * 300 + 90 * book.variety, p.y * 300 + p.z * 300, 3, footprint * 300);
    Material m = {.albedo = book.tint * (1 + 0.35f * cloth),
                  .gloss = 0.02f,
                  .roughness = 0.15f,
                  .translucency = 0,
                  .emission = {}};
    const bool upright = high.y - low.y > high.x - low.x;
    if (upright && normal.y > 0.5f && p.z > low.z + 0.004f) { // the pages' upper edge
        m.albedo =
            Color{0.55f, 0.5f, 0.4f} * (0.8f + 0.3f * std::sin(p.x * 2500) * saturate(1 - footprint * 700));
        return m;
    }
    if (!upright || normal.z > -0.5f)
        return m;
    // A rounded spine with raised bands, gilt lines and a title.
    const float x = 2 * (p.x - low.x) / (high.x - low.x) - 1, y = (p.y - low.y) / (high.y - low.y);
    normal = normalize({0.75f * x, 0, -1});
    const Color gold = {0.6f, 0.42f, 0.14f};
    const float style = fraction(book.variety * 7);
    float gilt = 0;
    for (const float band : {0.08f, 0.12f + 0.2f * style, 0.93f - 0.1f * style, 0.95f})
        gilt = std::max(gilt, smoothStep(0.009f, 0.005f, std::abs(y - band)));
    if (std::abs(x) < 0.7f && y > 0.55f && y < 0.8f) {
        if (style > 0.5f)
            m.albedo =
                mix(m.albedo, style > 0.75f ? Color{0.1f, 0.05f, 0.04f} : Color{0.6f, 0.55f, 0.42f}, 0.85f);
        const float lines =
            triangle(y * 40) * smoothStep(0.0f, 0.15f,
                                          noise.fractal(p.x * 420, std::floor(y * 40) * 7 + 90 * book.variety,
                                                        2, footprint * 300));
        gilt = std::max(gilt, 0.8f * smoothStep(0.4f, 0.6f, lines));
    }
    m.albedo = mix(m.albedo, gold, gilt) * (0.75f + 0.25f * smoothStep(0, 0.04f, y));
    return m;
}

Material Room::linenMaterial(const Hit &hit, Vec3 p, Vec3 &normal, float footprint) const {
    const float threads = 0.5f * noise.fractal(p.x * 500, p.y * 60, 2, footprint * 500) +
                          0.5f * noise.fractal(p.x * 60, p.y * 500, 2, footprint * 500);
    Material m = {.albedo = Color{0.6f, 0.55f, 0.45f} * (1 + 0.25f * threads),
                  .gloss = 0,
                  .roughness = 0,
                  .translucency = 0,
                  .emission = {}};
    const float phase = hit.texture.x * 6.5f + 0.35f * noise.gradient(hit.texture.x * 4, hit.texture.y * 3);
    const float fold = std::sin(phase * 2 * kPi);
    normal = normalize({0.95f * std::cos(phase * 2 * kPi), 0.05f, -1});
    m.albedo *= 0.72f + 0.28f * fold;
    // What light shines through from the window, more where the cloth is single.
    const float behind = Lighting::glass(p.x, p.y, 0.15f);
    const Color through = Lighting::outside((p.y - 1.1f) * 0.6f) * (0.55f * behind * (0.65f + 0.35f * fold));
    m.emission = through * m.albedo;
    const float hem = softBox(0.012f, 0.02f, 0.002f, hit.texture.y);
    m.albedo *= 1 - 0.3f * hem;
    return m;
}

Material Room::material(Surface surface, const Object *object, const Hit &hit, Vec3 p, Vec3 &normal,
                        float footprint) const {
    const float variety = object ? object->variety : 0;
    const Color tint = object ? object->tint : Color{1, 1, 1};
    Material m;
    switch (surface) {
    case Surface::outside:
        break;
    case Surface::floor:
        return floorMaterial(p, footprint);
    case Surface::backWall:
    case Surface::sideWall:
        return wallMaterial(p, footprint);
    case Surface::ceiling:
        m.albedo = {0.6f, 0.58f, 0.53f};
        break;
    case Surface::recess:
    case Surface::whitePaint: {
        const float brush = noise.fractal(p.x * 40 + p.z * 90, p.y * 40 + p.z * 60, 4, footprint * 90);
        m.albedo = Color{0.66f, 0.64f, 0.58f} * (1 + 0.08f * brush);
        m.gloss = surface == Surface::whitePaint ? 0.03f : 0.0f;
        m.roughness = 0.15f;
        break;
    }
    case Surface::darkWood:
    case Surface::tableWood: {
        const Vec3 extent = object->bounds.high - object->bounds.low;
        const bool upright = extent.y > extent.x && extent.y > extent.z;
        const bool lengthwise = extent.z > extent.x;
        const float along = upright ? p.y : lengthwise ? p.z : p.x;
        const float across = upright ? p.x + p.z : (lengthwise ? p.x : p.z) + p.y;
        const bool table = surface == Surface::tableWood;
        m.albedo = wood(along, across * (table ? 0.6f : 1.0f), variety, footprint,
                        table ? kWood : kDeepWood * 1.3f, table ? kDeepWood : kDeepWood * 0.5f);
        m.gloss = 0.04f;
        m.roughness = table ? 0.035f : 0.1f;
        break;
    }
    case Surface::book:
        return bookMaterial(*object, p, normal, footprint);
    case Surface::gilt: {
        const float chasing = noise.fractal(p.x * 110, p.y * 110, 3, footprint * 110);
        normal = normalize(normal + Vec3{0.5f * noise.gradient(p.x * 160, p.y * 160),
                                         0.5f * noise.gradient(p.x * 160 + 40, p.y * 160), 0});
        m.albedo = Color{0.42f, 0.28f, 0.1f} * (1 + 0.7f * chasing);
        m.gloss = 0.12f;
        m.roughness = 0.3f;
        break;
    }
    case Surface::painting: {
        // The same country at another hour, in short strokes.
        const float strokeX = 0.006f * noise.gradient(p.x * 140, p.y * 260),
                    strokeY = 0.004f * noise.gradient(p.x * 120 + 9, p.y * 300);
        const Color scene = landscape.radiance((p.x + 1.8f + strokeX) * 1.1f + 0.06f,
                                               (p.y - 1.56f + strokeY) * 0.85f, 0.004f + footprint);
        m.albedo = scene / (scene + Color{1.1f, 1.25f, 1.7f}) * Color{0.9f, 0.72f, 0.5f};
        m.albedo *= 1 + 0.3f * noise.fractal(p.x * 200, p.y * 320, 2, footprint * 320);
        m.gloss = 0.02f;
        m.roughness = 0.1f;
        break;
    }
    case Surface::brass:
        m.albedo = {0.3f, 0.2f, 0.07f};
        m.gloss = 0.35f;
        m.roughness = 0.12f;
        break;
    case Surface::linen:
        if (std::holds_alternative<Curtain>(object->shape))
            return linenMaterial(hit, p, normal, footprint);
        m.albedo = tint *
                   (0.8f + 0.4f * smoothStep(0.3f, 0.6f, triangle(p.x * 14)) *
                               smoothStep(0.3f, 0.6f, triangle(p.z * 14))) *
                   (1 + 0.4f * noise.fractal(p.x * 200, p.z * 200, 2, footprint * 200));
        break;
    case Surface::lampShade: {
        const bool insideOfShade = normal.x * (p.x - kLampBulb.x) + normal.z * (p.z - kLampBulb.z) < 0;
        const float height = hit.texture.y;
        const float glow = (insideOfShade ? 2.2f : 1.0f) *
                           (0.55f + 0.75f * std::exp(-8 * (height - 0.45f) * (height - 0.45f)));
        const float cloth = 1 + 0.1f * noise.fractal(hit.texture.x * 180, height * 50, 3, footprint * 400) +
                            0.05f * std::sin(hit.texture.x * 2 * kPi * 40);
        const float trim = smoothStep(0.05f, 0.04f, std::min(height, 1 - height));
        m.albedo = {0.5f, 0.42f, 0.3f};
        m.emission = Color{1.15f, 0.66f, 0.25f} * (glow * cloth * (1 - 0.6f * trim));
        break;
    }
    case Surface::glaze: {
        const float band = smoothStep(0.04f, 0.02f, std::abs(hit.texture.y - 0.55f)) *
                           smoothStep(0.2f, 0.5f, triangle(hit.texture.x * 16));
        m.albedo = mix(tint, Color{0.65f, 0.62f, 0.55f}, 0.8f * band) *
                   (1 + 0.2f * noise.fractal(hit.texture.x * 30, hit.texture.y * 14, 4, footprint * 60));
        m.gloss = 0.05f;
        m.roughness = 0.015f;
        break;
    }
    case Surface::mug:
        m.albedo = fraction(hit.texture.y * 4) < 0.5f && normal.y < 0.5f ? Color{0.12f, 0.25f, 0.5f}
                                                                         : Color{0.65f, 0.63f, 0.58f};
        if (normal.y > 0.5f && std::hypot(p.x - kMug.base.x, p.z - kMug.base.z) < 0.033f)
            m.albedo = {0.06f, 0.025f, 0.01f};
        m.gloss = 0.05f;
        m.roughness = 0.02f;
        break;
    case Surface::orange: {
        const float pits =
            noise.gradient(p.x * 420 + p.z * 160, p.y * 420 + p.z * 300) * saturate(1.1f - footprint * 420);
        m.albedo = Color{0.72f, 0.27f, 0.03f} *
                   (1 + 0.15f * pits + 0.2f * noise.fractal(p.x * 30, p.y * 30, 2, footprint * 30));
        m.gloss = 0.04f;
        m.roughness = 0.12f;
        break;
    }
    case Surface::terracotta:
        m.albedo = Color{0.44f, 0.19f, 0.1f} *
                   (1 + 0.4f * noise.fractal(hit.texture.x * 40, p.y * 90, 4, footprint * 90));
        break;
    case Surface::leaf: {
        const float vein =
            smoothStep(0.03f, 0.1f, std::abs(hit.texture.y)) *
            (0.8f +
             0.2f * smoothStep(0.1f, 0.4f, triangle(hit.texture.x * 7 - std::abs(hit.texture.y) * 1.2f)));
        m.albedo = tint * (0.55f + 0.55f * vein) *
                   (1 + 0.3f * noise.fractal(p.x * 130, p.y * 130, 2, footprint * 130));
        m.translucency = 0.45f;
        m.gloss = 0.03f;
        m.roughness = 0.2f;
        break;
    }
    case Surface::fur: {
        const Vec3 q = p - kCat.base;
        const float hair = noise.fractal(q.x * 260, q.y * 110 + q.z * 60, 4, footprint * 260);
        const float bands =
            std::sin(q.y * 130 + 2.2f * std::cos(q.x * 26) + 3.2f * noise.gradient(q.x * 18, q.y * 18));
        m.albedo =
            mix(Color{0.46f, 0.22f, 0.08f}, Color{0.17f, 0.07f, 0.03f}, smoothStep(0.1f, 0.8f, bands)) *
            (1 + 0.5f * hair);
        normal = normalize(normal + Vec3{0.25f * noise.gradient(q.x * 150, q.y * 150),
                                         0.2f * noise.gradient(q.x * 150 + 7, q.y * 150), 0});
        // The tips of the hair around the outline catch the light of the window.
        const float rim = 1 - saturate(-normal.z);
        m.emission =
            Lighting::outside(-0.05f) * m.albedo * (1.6f * rim * rim * rim * smoothStep(-0.02f, 0.04f, q.y));
        break;
    }
    case Surface::globe: {
        const float land = noise.fractal(hit.texture.x * 9 + 3, hit.texture.y * 2.2f, 5, footprint * 30);
        m.albedo = mix(Color{0.1f, 0.24f, 0.36f}, Color{0.5f, 0.38f, 0.18f}, smoothStep(0.02f, 0.07f, land));
        m.gloss = 0.04f;
        m.roughness = 0.05f;
        break;
    }
    }
    return m;
}

} // namespace tristop::scene
