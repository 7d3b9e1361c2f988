// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "tools/scene_renderer/balloons.h"
#include "tools/scene_renderer/landscape.h"
#include "tools/scene_renderer/lighting.h"
#include "tools/scene_renderer/noise.h"
#include "tools/scene_renderer/shapes.h"

namespace tristop::scene {

/// What one line of sight sees.
struct Sample {
    Color radiance;
    /// Share of the radiance that the balloons changed: 1 on a balloon, less in its shadow, 0 elsewhere.
    float influence = 0;
    /// Tells surfaces apart, so that their edges get more samples.
    int surface = 0;
};

/// The dim room with its furniture, in front of the landscape.
class Room {
public:
    explicit Room(std::uint64_t seed);

    /// What is seen at `place`, see namespace perspective; `footprint` is the size of a pixel in the same
    /// units.
    Sample sample(Vec2 place, float footprint, const Balloons &balloons) const;

private:
    enum class Surface : std::uint8_t {
        outside, // seen through the window
        floor,
        backWall,
        sideWall,
        ceiling,
        recess, // of the window
        whitePaint,
        darkWood,
        tableWood,
        book,
        gilt,
        painting,
        brass,
        linen,
        lampShade,
        glaze,
        orange,
        terracotta,
        leaf,
        fur,
        globe,
        mug,
    };
    struct Object {
        Shape shape;
        Surface surface;
        Color tint;
        float variety; // a random number in [0, 1)
        Bounds bounds;
    };
    /// A thing that stands on or hangs at a surface and darkens it around itself.
    struct Contact {
        Bounds bounds;
        bool round;
    };

    void add(Shape shape, Surface surface, Color tint = {1, 1, 1});
    void addWindow();
    void addBookshelf();
    void addTable();
    void addChair();
    void addSillThings();
    void addWallThings();
    void sortIntoTiles();
    /// The wall, floor or recess that the ray meets before `hit`, outside when there is none.
    Surface findShell(const Ray &ray, Hit &hit) const;
    Surface findNearest(Vec2 place, const Ray &ray, Hit &hit, const Object *&object) const;
    /// Light that a material sends to the eye. `facing` is the normal of its shape and `normal` that of its
    /// fine relief, `openness` (0 to 1) the share of light that what is close by lets through; `shadows` may
    /// be null.
    Sample lit(const Material &m, Vec3 p, Vec3 facing, Vec3 normal, Vec3 direction, float openness,
               const Balloons *shadows) const;
    Material material(Surface surface, const Object *object, const Hit &hit, Vec3 p, Vec3 &normal,
                      float footprint) const;
    Material floorMaterial(Vec3 p, float footprint) const;
    Material wallMaterial(Vec3 p, float footprint) const;
    Material bookMaterial(const Object &book, Vec3 p, Vec3 &normal, float footprint) const;
    Material linenMaterial(const Hit &hit, Vec3 p, Vec3 &normal, float footprint) const;
    Color wood(float along, float across, float variety, float footprint, Color light, Color dark) const;
    float sunThroughLeaves(Vec3 p) const;
    static float occlusion(const std::vector<Contact> &contacts, Vec3 p);
    float occlusion(Surface surface, const Object *object, Vec3 p, Vec3 normal) const;

    Noise noise;
    Landscape landscape;
    std::vector<Object> objects;
    std::vector<Leaf> leaves; // those in the vase
    Bounds spray;             // around them
    std::vector<Contact> floorContacts, tableContacts, wallContacts;
    std::vector<std::vector<std::uint16_t>> tiles;
};

} // namespace tristop::scene
