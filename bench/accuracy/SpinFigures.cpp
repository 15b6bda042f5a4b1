#include <bench/accuracy/Figures.h>

#include <tests/bullet/Solid.h>

#include <algorithm>
#include <cmath>

namespace tessarin::bench {

using namespace dynamics::bullet;
using osg::Vec3d;

namespace {

const double gravity = 9.81;
const double tilt = 20 * pi / 180;

/// The least and the greatest tilt of a top in 20 s, in degrees.
struct Nutation {
    double least = 90;
    double most = 0;

    Nutation(const Solid& top, LoadedWorld& loaded) {
        for (int i = 0; i < 1200; ++i) {
            loaded.run(1);
            const double now = std::acos(top.axisIn(loaded, 2).z()) * 180 / pi;
            least = std::min(least, now);
            most = std::max(most, now);
        }
    }
};

/// A top of 2 kg, its centre of mass half a metre above its tip, let go at 20 degrees.
std::vector<Figure> top() {
    const double speed = 100;
    const double height = 0.5;
    Solid body = {"top", 2, {0.1, 0.1, 0.12}, {0, 0, height}, {1, 0, 0}, 0, 0.02};
    const std::string turn = "<rotate>0 1 0 20</rotate>";
    const std::string motion = turning(Vec3d(std::sin(tilt), 0, std::cos(tilt)) * speed);
    ColladaScene held("0 0 -9.81");
    body.addTo(held, turn, motion);
    addConstraint(held, "tip", {origin, attachment("top"), "0 0 0", "0 0 0", "-INF -INF -INF", "INF INF INF"});
    LoadedWorld first(held);
    const Nutation ofHeld(body, first);

    ColladaScene standing("0 0 -9.81");
    standing.add("ground", "", ground);
    body.addTo(standing, translate(0, 0, body.radius) + turn, motion);
    LoadedWorld second(standing);
    const Nutation ofStanding(body, second);

    const double about = 0.1 + 2 * height * height;
    const double ratio = std::pow(0.12 * speed, 2) / (4 * about * 2 * gravity * height);
    const double lowest = std::acos(ratio - std::sqrt(ratio * ratio - 2 * ratio * std::cos(tilt) + 1)) * 180 / pi;
    const std::string formula = "λ - √(λ² - 2 λ cos α + 1), λ = L² / 4 I m g l";
    return {{"top: greatest tilt in degrees at 100 rad/s, in 20 s, tip held by a joint", formula, lowest, ofHeld.most},
            {"top: least tilt", "20°", 20, ofHeld.least},
            {"top: greatest tilt, tip on the ground, where it slips", formula, lowest, ofStanding.most},
            {"top: least tilt, tip on the ground", "20°", 20, ofStanding.least}};
}

/// A body that turns about its middle axis at 20 rad/s, nearly.
std::vector<Figure> handle() {
    const Solid body = {"handle", 1, {1, 2, 3}};
    const Vec3d velocity(0.2, 20, 0.1);
    ColladaScene scene("0 0 0");
    body.addTo(scene, "", turning(velocity));
    LoadedWorld loaded(scene);
    const Motion start(loaded, {body});
    const auto along = [&] { return body.axisIn(loaded, 1) * vectorOf(body.in(loaded).getAngularVelocity()); };
    std::vector<double> times;
    double before = along();
    for (int i = 1; i <= 1200; ++i) {
        loaded.run(1);
        const double now = along();
        if ((before < 0) != (now < 0)) {
            times.push_back((i - now / (now - before)) / 60);
        }
        before = now;
    }
    const Motion end(loaded, {body});

    // The velocity about the middle axis is Jacobi's sn, which changes its sign every two quarters of its period.
    const Vec3d& m = body.moments;
    const double square = start.angular.length2();
    const bool isWide = square > 2 * start.energy * m[1];
    const double one = m[isWide ? 0 : 2];
    const double other = m[isWide ? 2 : 0];
    const double excess = square - 2 * start.energy * one;
    const double rate = std::sqrt((other - m[1]) * excess / (m[0] * m[1] * m[2]));
    const double modulus = std::sqrt((m[1] - one) * (2 * start.energy * other - square) / ((other - m[1]) * excess));
    return {{"T-handle: seconds from flip to flip at 20 rad/s, of 20 s", "2 K(k) / ω",
             2 * std::comp_ellint_1(modulus) / rate,
             (times.back() - times.front()) / static_cast<double>(times.size() - 1)},
            {"T-handle: energy after 20 s", "constant", start.energy, end.energy},
            {"T-handle: angular momentum", "constant", start.angular.length(), end.angular.length()}};
}

} // namespace

std::vector<Figure> spinFigures() {
    std::vector<Figure> all = top();
    const std::vector<Figure> more = handle();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

} // namespace tessarin::bench
