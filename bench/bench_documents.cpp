// Reading and writing documents beside expat alone. Figures are per agent and per byte of text.

#include <agent/AgentNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

using namespace tessarin::agent;

namespace {

std::unique_ptr<AgentNode> makeAgents(std::int64_t size) {
    auto root = std::make_unique<AgentNode>("root");
    AgentNode* group = root.get();
    for (std::int64_t i = 1; i < size; ++i) {
        if (i % 100 == 0)
            group = root->addChild("group " + std::to_string(i));
        group->addChild("agent " + std::to_string(i))->addComponent("GeometryComponent");
    }
    return root;
}

std::string makeText(std::int64_t size) {
    std::ostringstream text;
    makeAgents(size)->createXml(text);
    return text.str();
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

void count(benchmark::State& state, const std::string& text) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void floorExpat(benchmark::State& state) {
    const std::string text = makeText(state.range(0));
    for (auto _ : state) {
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                                  &XML_ParserFree);
        if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK)
            state.SkipWithError("not well formed");
    }
    count(state, text);
}
BENCHMARK(floorExpat)->Apply(sizes);

void readTree(benchmark::State& state) {
    const std::string text = makeText(state.range(0));
    for (auto _ : state) {
        tessarin::xml_parser::XMLNodeCreator reader;
        if (reader.parse(text, true) != tessarin::xml_parser::AbstractXMLReader::SUCCESS)
            state.SkipWithError("not well formed");
    }
    count(state, text);
}
BENCHMARK(readTree)->Apply(sizes);

void createAgentsFromText(benchmark::State& state) {
    const std::string text = makeText(state.range(0));
    for (auto _ : state) {
        const std::unique_ptr<AgentNode> agent(AgentNode::createFromXmlString(text));
        if (!agent)
            state.SkipWithError("no agent");
    }
    count(state, text);
}
BENCHMARK(createAgentsFromText)->Apply(sizes);

void writeAgents(benchmark::State& state) {
    const auto root = makeAgents(state.range(0));
    std::string text;
    for (auto _ : state) {
        std::ostringstream stream;
        root->createXml(stream);
        text = stream.str();
    }
    count(state, text);
}
BENCHMARK(writeAgents)->Apply(sizes);

} // namespace
