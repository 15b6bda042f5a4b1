// Reading, applying and writing documents, beside expat over the same text and snprintf of the same text.

#include <bench/Engine.h>
#include <bench/Row.h>
#include <bench/Trees.h>

#include <expat.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tessarin::bench {

using agent::AgentNode;

namespace {

constexpr std::int64_t flatSize = 10000;
constexpr std::int64_t smallFlatSize = 100;

void furnish(AgentNode& agent, std::int64_t index) {
    const auto number = static_cast<double>(index);
    agent.setPosition({number / 8, -number / 3, 1.5});
    const double angle = 0.01 * static_cast<double>(index % 300);
    agent.setRotation({0.0, 0.0, std::sin(angle), std::cos(angle)});
    auto* const engine = new Engine;
    engine->setName("Engine");
    engine->power = static_cast<double>(index % 1000) / 4;
    agent.addComponent(engine);
}

AgentNode* makeFurnishedTree() {
    Engine::registerClass();
    const std::vector<AgentNode*> agents = makeAgents(treeSize);
    for (std::size_t i = 0; i < agents.size(); ++i) {
        furnish(*agents[i], static_cast<std::int64_t>(i));
    }
    return agents.front();
}

std::string textOf(AgentNode& agent) {
    std::ostringstream text;
    agent.createXml(text);
    return text.str();
}

const std::string& treeText() {
    static const std::string text = [] {
        const std::unique_ptr<AgentNode> root(makeFurnishedTree());
        return textOf(*root);
    }();
    return text;
}

void onStart(void*, const XML_Char*, const XML_Char**) {}
void onEnd(void*, const XML_Char*) {}
void onText(void*, const XML_Char*, int) {}

void parseWithExpat(const std::string& text) {
    XML_Parser const parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
    XML_ParserFree(parser);
}

void readTree(benchmark::State& state) {
    const std::string& text = treeText();
    for (auto _ : state) {
        std::istringstream stream(text);
        const Stopwatch watch;
        const std::unique_ptr<AgentNode> root(AgentNode::createFromXml(stream));
        state.SetIterationTime(watch.stop());
        if (!root) {
            state.SkipWithError("The document was not read.");
            break;
        }
    }
}

void parseAndBuildTransforms(benchmark::State& state) {
    const std::string& text = treeText();
    for (auto _ : state) {
        osg::ref_ptr<osg::MatrixTransform> root;
        const Stopwatch watch;
        parseWithExpat(text);
        makeTransforms(treeSize, root);
        state.SetIterationTime(watch.stop());
    }
}

void patchTree(benchmark::State& state) {
    static const std::unique_ptr<AgentNode> root(makeFurnishedTree());
    const std::string& text = treeText();
    for (auto _ : state) {
        std::istringstream stream(text);
        root->modifyWithXml(stream);
    }
}

void parseTree(benchmark::State& state) {
    const std::string& text = treeText();
    for (auto _ : state) {
        parseWithExpat(text);
    }
}

/// Applies the document of so many agents under one parent to them; as many agents in all for each size.
template <std::int64_t size>
void patchFlat(benchmark::State& state) {
    Engine::registerClass();
    static const std::unique_ptr<AgentNode> root = [] {
        auto parent = std::make_unique<AgentNode>("parent");
        for (std::int64_t i = 0; i < size; ++i) {
            furnish(*parent->addChild(nameOfNode(i)), i);
        }
        return parent;
    }();
    static const std::string text = textOf(*root);
    for (auto _ : state) {
        for (std::int64_t done = 0; done < flatSize; done += size) {
            root->modifyWithXml(text);
        }
    }
}

/// An agent as a program knows it that writes this one kind of document and no other.
struct Record {
    std::string name;
    int depth;
    std::array<double, 7> pose;
    double power;
    int endsBehind; // how many elements end behind this one
};

void addRecords(AgentNode& agent, int depth, std::vector<Record>& records) {
    const gmtl::Vec<double, 3> position = agent.getPosition();
    const gmtl::Quat<double> rotation = agent.getRotation();
    records.push_back({agent.getName(),
                       depth,
                       {position[0], position[1], position[2], rotation[0], rotation[1], rotation[2], rotation[3]},
                       static_cast<Engine*>(agent.getComponent("Engine"))->power,
                       0});
    for (AgentNode* const child : agent.getChildren()) {
        addRecords(*child, depth + 1, records);
    }
    ++records.back().endsBehind;
}

void writeRecords(const std::vector<Record>& records, std::FILE* file) {
    std::array<char, 1024> text{};
    for (const Record& record : records) {
        const int indent = 2 * record.depth;
        const auto& p = record.pose;
        const int size = std::snprintf(
            text.data(), text.size(),
            "%*s<AgentNode name=\"%s\">\n%*s<Transform>\n%*s<Translate>%g %g %g</Translate>\n%*s<Rotate>%g %g %g "
            "%g</Rotate>\n%*s</Transform>\n%*s<Component class=\"Engine\" name=\"Engine\">\n%*s<field name=\"power\" "
            "value=\"%g\"/>\n%*s</Component>\n",
            indent, "", record.name.c_str(), indent + 2, "", indent + 4, "", p[0], p[1], p[2], indent + 4, "", p[3],
            p[4], p[5], p[6], indent + 2, "", indent + 2, "", indent + 4, "", record.power, indent + 2, "");
        std::fwrite(text.data(), 1, static_cast<std::size_t>(size), file);
        for (int i = 0; i < record.endsBehind; ++i) {
            const int end = std::snprintf(text.data(), text.size(), "%*s</AgentNode>\n", indent - 2 * i, "");
            std::fwrite(text.data(), 1, static_cast<std::size_t>(end), file);
        }
    }
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::string pathInTemporaryFolder(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

AgentNode& writtenTree() {
    static const std::unique_ptr<AgentNode> root(makeFurnishedTree());
    return *root;
}

void writeTree(benchmark::State& state) {
    const std::string path = pathInTemporaryFolder("tessarin_bench_ours.xml");
    AgentNode& root = writtenTree();
    for (auto _ : state) {
        std::ofstream file(path, std::ios::binary);
        root.createXml(file);
    }
    std::filesystem::remove(path);
}

void writeTreeBySnprintf(benchmark::State& state) {
    static const std::vector<Record> records = [] {
        std::vector<Record> all;
        addRecords(writtenTree(), 0, all);
        return all;
    }();
    const std::string path = pathInTemporaryFolder("tessarin_bench_floor.xml");
    for (auto _ : state) {
        std::FILE* const file = std::fopen(path.c_str(), "wb");
        writeRecords(records, file);
        std::fclose(file);
    }
    if (contentOf(path) != treeText()) {
        state.SkipWithError("The floor writes another text than the library.");
    }
    std::filesystem::remove(path);
}

const RowRegistration rows[] = {
    RowRegistration({"read", 1.4, readTree, parseAndBuildTransforms, treeSize, true, Unit::nanoseconds, 1}),
    RowRegistration({"patch", 1.8, patchTree, parseTree, treeSize}),
    RowRegistration({"patch_flat", 1.5, patchFlat<flatSize>, patchFlat<smallFlatSize>, flatSize}),
    RowRegistration({"write", 1.0, writeTree, writeTreeBySnprintf, treeSize}),
};

} // namespace

} // namespace tessarin::bench
