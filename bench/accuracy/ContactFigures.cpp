#include <bench/accuracy/Figures.h>

#include <tests/bullet/Solid.h>

#include <algorithm>

namespace tessarin::bench {

using namespace dynamics::bullet;

namespace {

std::string material(double friction, double restitution) {
    const auto element = [](const std::string& name, double value) {
        return "<" + name + ">" + std::to_string(value) + "</" + name + ">";
    };
    return "<physics_material><technique_common>" + element("dynamic_friction", friction) +
           element("restitution", restitution) + element("static_friction", friction) +
           "</technique_common></physics_material>";
}

/// The ground, turned about Y, of a material.
ColladaScene slope(double degrees, const std::string& materialOfIt) {
    ColladaScene scene("0 0 -9.81");
    scene.add("ground", "<rotate>0 1 0 " + std::to_string(degrees) + "</rotate>", ground + materialOfIt);
    return scene;
}

double speedOf(const LoadedWorld& loaded, const std::string& name) {
    return vectorOf(dynamic_cast<BulletBodyControl&>(loaded.body(name)).getLinearVelocity()).z();
}

/// The highest that a ball gets between two of its bounces, over the ground.
double peakAfter(LoadedWorld& loaded, int bounces, double radius) {
    int count = 0;
    double peak = 0;
    double before = 0;
    for (int i = 0; i < 1200 && count <= bounces; ++i) {
        loaded.run(1);
        const double speed = speedOf(loaded, "ball");
        count += before < 0 && speed > 0 ? 1 : 0;
        peak = count == bounces ? std::max(peak, loaded.at("ball", 2) - radius) : peak;
        before = speed;
    }
    return peak;
}

ColladaScene drop(double radius, double height, double restitution) {
    const std::string both = material(0.5, restitution);
    return slope(0, both).add("ball", translate(0, 0, height + radius), ball(radius) + both);
}

/// Of all heights and sizes the one that is farthest off.
Figure worstBounce() {
    const double restitution = 0.8;
    double worst = restitution;
    for (const double radius : {0.05, 0.2, 0.5, 1.0, 2.0}) {
        for (int i = 0; i < 12; ++i) {
            const double height = radius * (1 + 0.37 * i) + 0.5;
            LoadedWorld loaded(drop(radius, height, restitution));
            const double found = std::sqrt(peakAfter(loaded, 1, radius) / height);
            worst = std::abs(found - restitution) > std::abs(worst - restitution) ? found : worst;
        }
    }
    return {"bounce: sixty drops of balls of radius 0.05 to 2, the worst", "e", restitution, worst};
}

Figure thirdPeak() {
    LoadedWorld loaded(drop(0.2, 5, 0.8));
    return {"bounce: height after the third, from 5 m", "h e⁶", 5 * std::pow(0.8, 6), peakAfter(loaded, 3, 0.2)};
}

Figure roll(double degrees) {
    const double angle = degrees * pi / 180;
    ColladaScene scene = slope(degrees, material(0.5, 0));
    const double radius = 0.3;
    scene.add("ball", translate(radius * std::sin(angle), 0, radius * std::cos(angle)),
              ball(radius) + material(0.5, 0));
    LoadedWorld loaded(scene);
    const Pose start = loaded.pose("ball");
    loaded.run(120);
    const Pose end = loaded.pose("ball");
    return {"roll: way of a ball in 2 s, down " + std::to_string(static_cast<int>(degrees)) + "°", "5/14 g sin α t²",
            5.0 / 14 * 9.81 * std::sin(angle) * 4, std::hypot(end(0, 3) - start(0, 3), end(2, 3) - start(2, 3))};
}

Figure slideDown() {
    const double angle = 30 * pi / 180;
    ColladaScene scene = slope(30, material(0.3, 0));
    scene.add("crate", translate(0.25 * std::sin(angle), 0, 0.25 * std::cos(angle)) + "<rotate>0 1 0 30</rotate>",
              box("0.5 0.5 0.25") + material(0.3, 0));
    LoadedWorld loaded(scene);
    loaded.run(60);
    const Pose start = loaded.pose("crate");
    loaded.run(60);
    const Pose end = loaded.pose("crate");
    return {"slide: way of a crate in the second second, down 30°, friction 0.3", "3/2 g (sin α - μ cos α)",
            1.5 * 9.81 * (std::sin(angle) - 0.3 * std::cos(angle)),
            std::hypot(end(0, 3) - start(0, 3), end(2, 3) - start(2, 3))};
}

Figure slideToRest() {
    ColladaScene scene = slope(0, material(0.5, 0));
    scene.add("crate", translate(0, 0, 0.25), box("0.5 0.5 0.25") + material(0.5, 0), "<velocity>8 0 0</velocity>");
    LoadedWorld loaded(scene);
    loaded.run(300);
    return {"slide: way of a crate from 8 m/s, friction 0.5", "v² / 2 μ g", 64 / (2 * 0.5 * 9.81),
            loaded.at("crate", 0)};
}

Figure stack() {
    ColladaScene scene = slope(0, "");
    for (int i = 0; i < 10; ++i) {
        scene.add("brick" + std::to_string(i), translate(0, 0, i + 0.5), "<mass>2</mass>" + box("0.5 0.5 0.5"));
    }
    LoadedWorld loaded(scene);
    loaded.run(1200);
    return {"stack: height of ten bricks of 1 m after 20 s", "n h", 10, loaded.at("brick9", 2) + 0.5};
}

} // namespace

std::vector<Figure> contactFigures() {
    return {worstBounce(), thirdPeak(), roll(3), roll(10), slideDown(), slideToRest(), stack()};
}

} // namespace tessarin::bench
