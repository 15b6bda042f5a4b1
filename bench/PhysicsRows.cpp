// Steps of the world beside the same bodies in Bullet as it comes, with its own defaults, in one step of 1/60 s.
//
// Bodies of both lie still and are kept from falling asleep, so that the rows tell what it costs that somebody lies
// there; the row for sleeping ones begins when all sleep in both.

#include <bench/PlainWorld.h>
#include <bench/Row.h>

#include <tests/bullet/JointScene.h>

#include <array>
#include <string>
#include <vector>

/// Bullet's switch for falling asleep, which stands in none of its headers.
extern bool gDisableDeactivation;

namespace tessarin::bench {

using dynamics::bullet::ColladaScene;
using dynamics::bullet::LoadedWorld;

namespace {

constexpr int stepsToSettle = 60;
constexpr int stepsToSleep = 600;

/// Ours, built by the same calls as the plain one.
class OurWorld {
public:
    OurWorld() : scene("0 0 -10") { scene.add("ground", "", dynamics::bullet::ground); }

    void addBox(double x, double y, double z) {
        left = {x - 0.5, y, z};
        scene.add("box" + std::to_string(++count), dynamics::bullet::translate(x, y, z),
                  "<mass>1</mass>" + dynamics::bullet::box("0.5 0.5 0.5"));
    }

    void hangLastBox() {
        using namespace dynamics::bullet;
        const std::string first = count == 1
                                      ? "<ref_attachment>" + translate(left[0], left[1], left[2]) + "</ref_attachment>"
                                      : refAttachment("box" + std::to_string(count - 1), translate(0.5, 0, 0));
        addConstraint(scene, "joint" + std::to_string(count),
                      {first, attachment("box" + std::to_string(count), translate(-0.5, 0, 0)), "0 0 0", "0 0 0",
                       "-INF -INF -INF", "INF INF INF", "<interpenetrate>true</interpenetrate>"});
    }

    void step() {
        if (loaded.bodies.empty()) {
            loaded.load(scene.text());
        }
        loaded.world->step(1.0 / 60);
    }

private:
    ColladaScene scene;
    LoadedWorld loaded;
    int count = 0;
    std::array<double, 3> left{};
};

template <class World>
void lieOnTheGround(World& world) {
    for (int i = 0; i < 1000; ++i) {
        world.addBox(1.5 * (i % 32), 1.5 * (i / 32), 0.5);
    }
}

template <class World>
void lieSideBySide(World& world) {
    for (int i = 0; i < 1000; ++i) {
        world.addBox(i % 32, i / 32, 0.5);
    }
}

template <class World>
void makePyramid(World& world) {
    for (int layer = 0; layer < 10; ++layer) {
        for (int i = 0; i < 10 - layer; ++i) {
            world.addBox(i + 0.5 * layer, 0, layer + 0.5);
        }
    }
}

template <class World>
void makeChain(World& world) {
    for (int i = 0; i < 20; ++i) {
        world.addBox(i + 0.5, 0, 40);
        world.hangLastBox();
    }
}

template <class World>
void measureSteps(benchmark::State& state, void (*build)(World&), int stepsBefore = stepsToSettle) {
    gDisableDeactivation = stepsBefore < stepsToSleep;
    World world;
    build(world);
    for (int i = 0; i < stepsBefore; ++i) {
        world.step();
    }
    for (auto _ : state) {
        const Stopwatch watch;
        world.step();
        state.SetIterationTime(watch.stop());
    }
    gDisableDeactivation = false;
}

template <class World>
void stepApart(benchmark::State& state) {
    measureSteps<World>(state, lieOnTheGround<World>);
}

template <class World>
void stepTouching(benchmark::State& state) {
    measureSteps<World>(state, lieSideBySide<World>);
}

template <class World>
void stepPyramid(benchmark::State& state) {
    measureSteps<World>(state, makePyramid<World>);
}

template <class World>
void stepChain(benchmark::State& state) {
    measureSteps<World>(state, makeChain<World>);
}

template <class World>
void stepSleeping(benchmark::State& state) {
    measureSteps<World>(state, lieSideBySide<World>, stepsToSleep);
}

Row makeRow(const char* name, double bound, void (*ours)(benchmark::State&), void (*floor)(benchmark::State&),
            int iterations) {
    return {name, bound, ours, floor, 1, true, Unit::nanoseconds, iterations};
}

const RowRegistration rows[] = {
    RowRegistration(makeRow("physics_step_apart", 2, stepApart<OurWorld>, stepApart<PlainWorld>, 60)),
    RowRegistration(makeRow("physics_step_touching", 2, stepTouching<OurWorld>, stepTouching<PlainWorld>, 30)),
    RowRegistration(makeRow("physics_step_sleeping", 2, stepSleeping<OurWorld>, stepSleeping<PlainWorld>, 60)),
    RowRegistration(makeRow("physics_step_pyramid", 2, stepPyramid<OurWorld>, stepPyramid<PlainWorld>, 200)),
    RowRegistration(makeRow("physics_step_chain", 6, stepChain<OurWorld>, stepChain<PlainWorld>, 200)),
};

} // namespace

} // namespace tessarin::bench
