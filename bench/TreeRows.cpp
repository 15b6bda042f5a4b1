// Building and deleting agents, and what they take in memory, beside the OpenSceneGraph objects of such a tree alone.

#include <bench/ChildProcess.h>
#include <bench/Row.h>
#include <bench/Trees.h>

#include <algorithm>
#include <cstdio>
#include <random>

#include <unistd.h>

namespace tessarin::bench {

using agent::AgentNode;

namespace {

constexpr std::int64_t scattered = 10000;

/// Small trees are built again and again, so that there is something to measure.
std::int64_t roundsFor(std::int64_t size) {
    return std::max<std::int64_t>(treeSize / size, 1);
}

double buildAndDeleteAgents(std::int64_t size) {
    const std::int64_t rounds = roundsFor(size);
    const Stopwatch watch;
    for (std::int64_t round = 0; round < rounds; ++round) {
        delete makeAgents(size).front();
    }
    return watch.stop() * 1e9 / static_cast<double>(rounds * size);
}

double buildAndDropTransforms(std::int64_t size) {
    const std::int64_t rounds = roundsFor(size);
    const Stopwatch watch;
    for (std::int64_t round = 0; round < rounds; ++round) {
        osg::ref_ptr<osg::MatrixTransform> root;
        makeTransforms(size, root);
    }
    return watch.stop() * 1e9 / static_cast<double>(rounds * size);
}

double residentBytes() {
    long pages = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*d %ld", &pages) != 1) {
            pages = 0;
        }
        std::fclose(file);
    }
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// The list of pointers that comes with a new tree is gone when the memory is read.
double bytesOfAgents(std::int64_t size) {
    makeAgents(1);
    const double before = residentBytes();
    AgentNode* const root = makeAgents(size).front();
    benchmark::DoNotOptimize(root);
    return (residentBytes() - before) / static_cast<double>(size);
}

double bytesOfTransforms(std::int64_t size) {
    osg::ref_ptr<osg::MatrixTransform> first;
    makeTransforms(1, first);
    const double before = residentBytes();
    osg::ref_ptr<osg::MatrixTransform> root;
    makeTransforms(size, root);
    return (residentBytes() - before) / static_cast<double>(size);
}

const MeasurementRegistration measurements[] = {
    {"build_agents", buildAndDeleteAgents},
    {"build_transforms", buildAndDropTransforms},
    {"bytes_of_agents", bytesOfAgents},
    {"bytes_of_transforms", bytesOfTransforms},
};

void inChild(benchmark::State& state, const char* measurement) {
    for (auto _ : state) {
        setValue(state, measureInChild(measurement, treeSize) * static_cast<double>(treeSize));
    }
}

void growthOf(benchmark::State& state, const char* measurement) {
    for (auto _ : state) {
        setValue(state, measureInChild(measurement, 1000000) / measureInChild(measurement, 1000));
    }
}

void agentsInChild(benchmark::State& state) {
    inChild(state, "build_agents");
}

void transformsInChild(benchmark::State& state) {
    inChild(state, "build_transforms");
}

void agentsGrowth(benchmark::State& state) {
    growthOf(state, "build_agents");
}

void transformsGrowth(benchmark::State& state) {
    growthOf(state, "build_transforms");
}

void agentsMemory(benchmark::State& state) {
    inChild(state, "bytes_of_agents");
}

void transformsMemory(benchmark::State& state) {
    inChild(state, "bytes_of_transforms");
}

void removeAgents(benchmark::State& state) {
    static const std::vector<std::int64_t> leaves = pickLeaves(treeSize, scattered);
    for (auto _ : state) {
        const std::vector<AgentNode*> agents = makeAgents(treeSize);
        const Stopwatch watch;
        for (const std::int64_t leaf : leaves) {
            AgentNode* const agent = agents[static_cast<std::size_t>(leaf)];
            agent->getParent()->removeChild(agent);
            delete agent;
        }
        state.SetIterationTime(watch.stop());
        delete agents.front();
    }
}

void removeTransforms(benchmark::State& state) {
    static const std::vector<std::int64_t> leaves = pickLeaves(treeSize, scattered);
    for (auto _ : state) {
        osg::ref_ptr<osg::MatrixTransform> root;
        const std::vector<osg::MatrixTransform*> transforms = makeTransforms(treeSize, root);
        const Stopwatch watch;
        for (const std::int64_t leaf : leaves) {
            osg::MatrixTransform* const transform = transforms[static_cast<std::size_t>(leaf)];
            transform->getParent(0)->removeChild(transform);
        }
        state.SetIterationTime(watch.stop());
    }
}

constexpr int wide = 20000;

// What leaves in the middle moves OpenSceneGraph's array of children, so its own groups' time is the measure.
void removeFromWideParent(benchmark::State& state) {
    for (auto _ : state) {
        AgentNode parent;
        std::vector<AgentNode*> children;
        for (int i = 0; i < wide; ++i) {
            children.push_back(parent.addChild(nameOfNode(i)));
        }
        std::shuffle(children.begin(), children.end(), std::mt19937(1));
        const Stopwatch watch;
        for (AgentNode* const child : children) {
            parent.removeChild(child);
        }
        state.SetIterationTime(watch.stop());
        for (AgentNode* const child : children) {
            delete child;
        }
    }
}

void removeFromWideGroup(benchmark::State& state) {
    for (auto _ : state) {
        const osg::ref_ptr<osg::MatrixTransform> group = new osg::MatrixTransform;
        std::vector<osg::ref_ptr<osg::Node>> children;
        for (int i = 0; i < wide; ++i) {
            group->addChild(children.emplace_back(new osg::MatrixTransform));
        }
        std::shuffle(children.begin(), children.end(), std::mt19937(1));
        const Stopwatch watch;
        for (const osg::ref_ptr<osg::Node>& child : children) {
            group->removeChild(child);
        }
        state.SetIterationTime(watch.stop());
    }
}

const RowRegistration rows[] = {
    RowRegistration({"build_destroy", 1.2, agentsInChild, transformsInChild, treeSize, true, Unit::nanoseconds, 1}),
    RowRegistration({"destroy_scattered", 1.5, removeAgents, removeTransforms, scattered, true, Unit::nanoseconds, 1}),
    RowRegistration({"destroy_wide", 1.0, removeFromWideParent, removeFromWideGroup, wide, true, Unit::nanoseconds, 1}),
    RowRegistration({"growth", 1.0, agentsGrowth, transformsGrowth, 1, true, Unit::times, 1}),
    RowRegistration({"memory", 1.4, agentsMemory, transformsMemory, treeSize, true, Unit::bytes, 1}),
};

} // namespace

} // namespace tessarin::bench
