#include <bench/accuracy/Figures.h>

#include <tests/bullet/Solid.h>

#include <algorithm>
#include <cmath>

namespace tessarin::bench {

using namespace dynamics::bullet;

namespace {

const double gravity = 9.81;

/// Two bodies on a slider that turn in space.
std::vector<Figure> slider() {
    ColladaScene scene("0 0 0");
    const std::vector<Solid> solids = {{"a", 2, {0.8, 0.5, 0.6}}, {"b", 1, {0.3, 0.35, 0.1}}};
    solids[0].addTo(scene, "", turning({1, 0.7, 1.5}));
    solids[1].addTo(scene, translate(1, 0.5, 0), turning({1, 0.7, 1.5}));
    addConstraint(scene, "rail", {refAttachment("a", translate(1, 0.5, 0)), attachment("b"), "-INF 0 0", "INF 0 0"});
    LoadedWorld loaded(scene);
    loaded.run(1);
    const Motion start(loaded, solids);
    loaded.run(3599);
    const Motion end(loaded, solids);
    return {{"slider: energy of two bodies in space after 60 s", "constant", start.energy, end.energy},
            {"slider: their angular momentum", "constant", start.angular.length(), end.angular.length()}};
}

/// A small ball on a rod of two metres, let go at 60 degrees.
std::vector<Figure> pendulum() {
    ColladaScene scene("0 0 -9.81");
    const double angle = 60 * pi / 180;
    scene.add("bob", translate(2 * std::sin(angle), 0, -2 * std::cos(angle)) + "<rotate>0 1 0 -60</rotate>",
              "<mass>2</mass>" + ball(0.1));
    addHinge(scene, origin, attachment("bob", translate(0, 0, 2)), "0 1 0", "0 -1 0");
    LoadedWorld loaded(scene);
    std::vector<double> times;
    double before = 0;
    double highest = 0;
    for (int i = 1; i <= 3600; ++i) {
        loaded.run(1);
        const double now = jointOf(loaded).getPosition(JointAxis::rotationY);
        if (before < 0 && now >= 0) {
            times.push_back((i - now / (now - before)) / 60);
        }
        before = now;
        highest = i > 3400 ? std::max(highest, std::abs(now)) : 0;
    }
    const double period = 4 * std::sqrt((4 + 0.4 * 0.01) / (gravity * 2)) * std::comp_ellint_1(std::sin(angle / 2));
    return {{"pendulum: period at 60°, of one minute", "4 √(I / m g l) K(sin α/2)", period,
             (times.back() - times.front()) / static_cast<double>(times.size() - 1)},
            {"pendulum: swing in degrees after one minute", "constant", 60, highest * 180 / pi}};
}

/// Where the links of a chain hang between two points: each leans as the forces at its ends tell.
struct Chain {
    int count = 20;
    double apart = 12;

    double slope(int link, double pull) const { return (link - (count - 1) / 2.0) / pull; }

    double width(double pull) const {
        double sum = 0;
        for (int i = 0; i < count; ++i) {
            sum += 1 / std::hypot(1, slope(i, pull));
        }
        return sum;
    }

    /// At the ends, against the weight of a link.
    double pull() const {
        double low = 1e-3;
        double high = 1e3;
        for (int i = 0; i < 100; ++i) {
            const double middle = std::sqrt(low * high);
            (width(middle) < apart ? low : high) = middle;
        }
        return low;
    }
};

/// Links of a metre that begin where they belong, the ends held by the world.
std::vector<Figure> chain() {
    const Chain form;
    const double pull = form.pull();
    ColladaScene scene("0 0 -9.81");
    double x = 0;
    double z = 0;
    double sag = 0;
    for (int i = 0; i < form.count; ++i) {
        const double angle = std::atan(form.slope(i, pull));
        const std::string name = "link" + std::to_string(i);
        scene.add(name,
                  translate(x + std::cos(angle) / 2, 0, z + std::sin(angle) / 2) + "<rotate>0 1 0 " +
                      std::to_string(-angle * 180 / pi) + "</rotate>",
                  "<mass>1</mass>" + box("0.45 0.05 0.05"));
        const std::string before = i > 0 ? refAttachment("link" + std::to_string(i - 1), translate(0.5, 0, 0)) : origin;
        addConstraint(scene, "joint" + std::to_string(i),
                      {before, attachment(name, translate(-0.5, 0, 0)), "0 0 0", "0 0 0", "0 -INF 0", "0 INF 0"});
        x += std::cos(angle);
        z += std::sin(angle);
        sag = std::max(sag, -z);
    }
    addConstraint(scene, "end",
                  {"<ref_attachment>" + translate(x, 0, z) + "</ref_attachment>",
                   attachment("link" + std::to_string(form.count - 1), translate(0.5, 0, 0)), "0 0 0", "0 0 0",
                   "0 -INF 0", "0 INF 0"});
    LoadedWorld loaded(scene);
    loaded.run(1200);
    double longest = 0;
    for (std::size_t i = 0; i < loaded.joints.size(); ++i) {
        longest = std::max(longest, gapOf(jointOf(loaded, i)));
    }
    const Pose end = jointOf(loaded, static_cast<std::size_t>(form.count / 2)).getFirstFrame();
    return {{"chain: sag of twenty links of 1 m over 12 m after 20 s", "tan α = V / H of each link", sag, -end(2, 3)},
            {"chain: widest gap in it, in metres", "0", 0, longest}};
}

} // namespace

std::vector<Figure> jointFigures() {
    std::vector<Figure> all = slider();
    for (const auto& figures : {pendulum(), chain()}) {
        all.insert(all.end(), figures.begin(), figures.end());
    }
    return all;
}

} // namespace tessarin::bench
