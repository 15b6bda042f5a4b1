// Balls bounce as high and roll as far as mechanics says, on whatever they do it, and come to rest.

#include <tests/bullet/ColladaScene.h>

#include <dynamics/PoseReader.h>
#include <dynamics/bullet/BulletBodyControl.h>

#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace tessarin::dynamics::bullet {

namespace {

constexpr double g = 9.81;

/// How long a metre is, and a ball of it.
struct Measure {
    double unit;
    double radius;
};

std::string text(double number) {
    return std::to_string(number);
}

/// A flat mesh of two triangles in each square.
std::string grid(double half, int count) {
    std::string positions;
    std::string triangles;
    const auto corner = [&](int i, int j) { return std::to_string(i * (count + 1) + j) + " "; };
    for (int i = 0; i <= count; ++i) {
        for (int j = 0; j <= count; ++j) {
            positions += text(half * (2.0 * i / count - 1)) + " " + text(half * (2.0 * j / count - 1)) + " 0 ";
            if (i < count && j < count) {
                triangles += corner(i, j) + corner(i + 1, j) + corner(i + 1, j + 1) + corner(i, j) +
                             corner(i + 1, j + 1) + corner(i, j + 1);
            }
        }
    }
    return geometry("grid", positions, faces("triangles", "<p>" + triangles + "</p>"));
}

/// What may be below a ball, with its surface at height 0.
const std::string floors[] = {"plane", "box", "mesh", "hull", "boxes"};

/// @param size of a ball for it.
ColladaScene onFloor(const std::string& kind, double size, const std::string& material, const std::string& gravity) {
    ColladaScene scene(gravity);
    const std::string wide = text(40 * size) + " " + text(40 * size) + " " + text(size);
    const std::string below = "<translate>0 0 " + text(-size) + "</translate>";
    if (kind == "mesh") {
        scene.geometries = grid(40 * size, 30);
    }
    if (kind == "hull") {
        scene.geometries = boxGeometry("grid", "1", "polylist", "convex_mesh");
    }
    const std::string transforms = kind == "hull" ? below + "<scale>" + wide + "</scale>" : "";
    const std::string shapes =
        kind == "plane"   ? shape("<plane><equation>0 0 1 0</equation></plane>")
        : kind == "box"   ? box(wide, below)
        : kind == "boxes" ? box(wide, below) + box("1 1 1", "<translate>0 0 " + text(-90 * size) + "</translate>")
                          : mesh("grid");
    return scene.add("floor", transforms, fixed + material + shapes);
}

/// The heights of a ball's bounces, which are between the poses that are seen.
std::vector<double> peaksOf(LoadedWorld& loaded, double floor, std::size_t count, int steps) {
    std::vector<double> peaks;
    double before = loaded.at("ball", 2);
    double now = before;
    bool rises = false;
    for (int i = 0; i < steps && peaks.size() < count; ++i) {
        loaded.run(1);
        const double next = loaded.at("ball", 2);
        if (rises && next < now) {
            const double bend = before - 2 * now + next;
            peaks.push_back(now - (next - before) * (next - before) / (8 * bend) - floor);
        }
        rises = next > now;
        before = now;
        now = next;
    }
    peaks.resize(count);
    return peaks;
}

BulletBodyControl& control(const LoadedWorld& loaded, const std::string& name) {
    return dynamic_cast<BulletBodyControl&>(loaded.body(name));
}

/// Steps until a body rests.
double secondsToRest(LoadedWorld& loaded, const std::string& name, double most) {
    PoseReader reader;
    reader.follow(dynamic_cast<PoseSource*>(&loaded.body(name)));
    for (int i = 0; i < most * 60; ++i) {
        loaded.run(1);
        if (!loaded.body(name).isActive()) {
            return i / 60.0;
        }
        reader.confirm();
    }
    return most;
}

} // namespace

TEST(Ball, BouncesAsHighAsItsMaterialSays) {
    std::mt19937 random(5);
    std::uniform_real_distribution<> part(0, 1);
    for (const std::string& floor : floors) {
        for (const auto& [unit, radius] : {Measure{1, 0.05}, {1, 0.3}, {1, 2}, {1000, 0.05}, {1000, 1}}) {
            for (const double restitution : {0.3, 0.5, 0.8, 1.0}) {
                for (int i = 0; i < 3; ++i) {
                    const double size = radius * unit;
                    const double height = (0.5 + 8 * part(random)) * unit;
                    const std::string material = surface(0.5, restitution);
                    ColladaScene scene = onFloor(floor, size, material, "0 0 " + text(-g * unit));
                    scene.add("ball", translate(size * part(random), size * part(random), size + height),
                              material + ball(size));
                    LoadedWorld loaded(scene);
                    const std::size_t count = restitution < 0.4 ? 1 : 3;
                    const std::vector<double> peaks = peaksOf(loaded, size, count, 900);
                    const std::string what = floor + ", radius " + text(size) + ", height " + text(height);
                    for (std::size_t j = 0; j < count; ++j) {
                        const double expected = height * std::pow(restitution, 2.0 * static_cast<double>(j + 1));
                        ASSERT_NEAR(std::sqrt(peaks[j] / expected), 1, 0.015) << what << ", e " << restitution;
                    }
                    // A flat floor throws nothing aside, a hull hardly.
                    const gmtl::Vec<double, 3> velocity = control(loaded, "ball").getLinearVelocity();
                    ASSERT_LT(std::hypot(velocity[0], velocity[1]), (floor == "hull" ? 0.1 : 0.02) * unit) << what;
                }
            }
        }
    }
}

TEST(Ball, MeetsAnotherOneAsItsMaterialSays) {
    for (const double speed : {0.5, 4.0, 20.0}) {
        for (const double restitution : {0.4, 1.0}) {
            for (const double mass : {0.2, 1.0, 6.0}) {
                for (const double place : {1.0, 1.37, 1.71}) {
                    ColladaScene scene("0 0 0");
                    const std::string material = surface(0.5, restitution);
                    scene.add("a", translate(-place, 0, 0), material + "<mass>1</mass>" + ball(0.2),
                              "<velocity>" + text(speed) + " 0 0</velocity>");
                    scene.add("b", translate(1, 0, 0), material + "<mass>" + text(mass) + "</mass>" + ball(0.2),
                              "<velocity>" + text(-speed / 2) + " 0 0</velocity>");
                    LoadedWorld loaded(scene);
                    loaded.run(static_cast<int>(120 / speed) + 2);
                    const double a = control(loaded, "a").getLinearVelocity()[0];
                    const double b = control(loaded, "b").getLinearVelocity()[0];
                    EXPECT_NEAR((b - a) / (1.5 * speed), restitution, 0.002) << speed << " " << mass << " " << place;
                    EXPECT_NEAR(a + mass * b, speed - mass * speed / 2, 1e-4 * speed * (1 + mass));
                }
            }
        }
    }
}

TEST(Ball, RollsAsItsInertiaSays) {
    for (const std::string floor : {"plane", "box", "mesh", "hull"}) {
        for (const auto& [unit, radius] : {Measure{1, 0.05}, {1, 2}, {1000, 0.3}}) {
            for (const bool isHollow : {false, true}) {
                const double size = radius * unit;
                const std::string it = surface(0.5, 0.3) + "<mass>30</mass>" +
                                       shape(std::string(isHollow ? "<hollow>true</hollow>" : "") + "<sphere><radius>" +
                                             text(size) + "</radius></sphere>");
                const double share = 1 / (1 + (isHollow ? 2.0 / 3 : 0.4));
                for (const double degrees : {1.0, 4.0, 15.0}) {
                    const double sine = std::sin(degrees * 3.14159265358979 / 180);
                    const double down = -std::sqrt(1 - sine * sine);
                    ColladaScene scene =
                        onFloor(floor, unit, surface(0.5, 0.3), text(g * unit * sine) + " 0 " + text(g * unit * down));
                    LoadedWorld loaded(scene.add("ball", translate(0, 0.1 * unit, size), it));
                    loaded.run(150);
                    const double way = share * g * unit * sine * 2.5 * 2.5 / 2;
                    EXPECT_NEAR(loaded.at("ball", 0), way, 0.01 * way)
                        << floor << ", radius " << size << ", " << degrees << (isHollow ? ", hollow" : "");
                    EXPECT_NEAR(loaded.at("ball", 1), 0.1 * unit, 0.002 * way);
                }
                // Thrown, it slides until it rolls, and rolls on for a while as if nothing held it back.
                ColladaScene scene = onFloor(floor, unit, surface(0.5, 0.3), "0 0 " + text(-g * unit));
                scene.add("ball", translate(-20 * unit, 0, size), it,
                          "<velocity>" + text(3 * unit) + " 0 0</velocity>");
                LoadedWorld loaded(scene);
                loaded.run(60);
                EXPECT_NEAR(control(loaded, "ball").getLinearVelocity()[0], 3 * unit * share, 0.01 * unit) << floor;
                loaded.run(120);
                EXPECT_NEAR(control(loaded, "ball").getLinearVelocity()[0], 3 * unit * share, 0.03 * unit) << floor;
                const double rest = secondsToRest(loaded, "ball", 40);
                EXPECT_LT(rest, 25) << floor << ", radius " << size;
                EXPECT_GT(loaded.at("ball", 0), -5 * unit);
            }
        }
    }
}

TEST(Ball, AndBoxThatBounceComeToRest) {
    for (const double size : {0.05, 0.5, 2.0}) {
        for (const double restitution : {0.3, 0.8}) {
            const std::string material = surface(0.5, restitution);
            ColladaScene scene = onFloor("plane", size, material, "0 0 -9.81");
            scene.add("ball", translate(0, 0, size + 1.5), material + ball(size));
            scene.add("box", translate(50 * size, 0, size + 1.5) + "<rotate>1 2 3 40</rotate>",
                      material + box(text(size) + " " + text(size) + " " + text(size)));
            for (int i = 0; i < 5; ++i) {
                scene.add("stacked" + std::to_string(i), translate(-50 * size, 0, 2.02 * size * (i + 0.5)),
                          material + box(text(size) + " " + text(size) + " " + text(size)));
            }
            LoadedWorld loaded(scene);
            for (const std::string name : {"ball", "box", "stacked4"}) {
                EXPECT_LT(secondsToRest(loaded, name, 30), 29) << name << " of " << size << ", e " << restitution;
            }
            EXPECT_NEAR(loaded.at("ball", 2), size, 0.005 * size);
            EXPECT_NEAR(loaded.at("stacked4", 2), 9 * size, 0.02 * size);
        }
    }
}

} // namespace tessarin::dynamics::bullet
