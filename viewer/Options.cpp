#include <viewer/Options.h>

#include <viewer/ViewerError.h>

#include <osg/ApplicationUsage>
#include <osg/ArgumentParser>

#include <charconv>
#include <cmath>
#include <string_view>
#include <tuple>
#include <utility>

namespace tessarin::viewer {

namespace {

const char* const hint = " (tessarin_viewer --help lists the options)";

/// The whole text as a number of at least `least`; nothing if it is anything else.
template <class Number>
std::optional<Number> readNumber(std::string_view text, Number least) {
    Number number{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || stop != text.data() + text.size() || number < least)
        return std::nullopt;
    return number;
}

long readFrames(const std::string& text) {
    if (const std::optional<long> frames = readNumber(text, 0L))
        return *frames;
    throw ViewerError("--frames " + text + ": not a number of frames" + hint);
}

/// Two whole numbers with a character between them.
std::optional<std::pair<int, int>> readPair(std::string_view text, char between, int least) {
    const std::size_t place = text.find(between);
    if (place == std::string_view::npos)
        return std::nullopt;
    const std::optional<int> first = readNumber(text.substr(0, place), least);
    const std::optional<int> second = readNumber(text.substr(place + 1), least);
    if (!first || !second)
        return std::nullopt;
    return std::pair(*first, *second);
}

Options::Point readPoint(const std::string& text) {
    if (const auto pair = readPair(text, ',', 0))
        return {pair->first, pair->second};
    throw ViewerError("--point " + text + ": not a place like 640,360" + hint);
}

void readSize(const std::string& text, Options& options) {
    constexpr int largest = 16384;
    const auto size = readPair(text, 'x', 1);
    if (size && size->first <= largest && size->second <= largest) {
        std::tie(options.width, options.height) = *size;
        return;
    }
    throw ViewerError("--size " + text + ": not a size like 1280x720" + hint);
}

int readLogLevel(const std::string& text) {
    struct Level {
        const char* name;
        int priority;
    };
    // The numbers are log4cpp's; below 300 nothing is ever logged.
    constexpr Level levels[] = {{"off", 0}, {"error", 300}, {"warn", 400}, {"info", 600}, {"debug", 700}};
    for (const Level& level : levels)
        if (text == level.name)
            return level.priority;
    throw ViewerError("--log " + text + ": not one of off, error, warn, info and debug" + hint);
}

double readLimits(const std::string& text) {
    const std::optional<double> factor = readNumber(text, 0.0);
    if (factor && std::isfinite(*factor))
        return *factor;
    throw ViewerError("--limits " + text + ": not a number like 10" + hint);
}

using Setter = void (*)(Options&, const std::string& value);

/// What to do with the value of an option; null if there is no such option.
Setter findSetter(std::string_view name) {
    static constexpr std::pair<std::string_view, Setter> setters[] = {
        {"--frames", [](Options& options, const std::string& value) { options.frames = readFrames(value); }},
        {"--snapshot", [](Options& options, const std::string& value) { options.snapshot = value; }},
        {"--write", [](Options& options, const std::string& value) { options.document = value; }},
        {"--patch", [](Options& options, const std::string& value) { options.patches.emplace_back(value); }},
        {"--watch", [](Options& options, const std::string& value) { options.watched = value; }},
        {"--bindings", [](Options& options, const std::string& value) { options.bindings = value; }},
        {"--write-bindings", [](Options& options, const std::string& value) { options.bindingsToWrite = value; }},
        {"--point", [](Options& options, const std::string& value) { options.point = readPoint(value); }},
        {"--limits", [](Options& options, const std::string& value) { options.limits = readLimits(value); }},
        {"--size", [](Options& options, const std::string& value) { readSize(value, options); }},
        {"--log", [](Options& options, const std::string& value) { options.logLevel = readLogLevel(value); }}};
    for (const auto& [option, setter] : setters)
        if (option == name)
            return setter;
    return nullptr;
}

} // namespace

Options Options::parse(osg::ArgumentParser& arguments) {
    Options options;
    if (arguments.read("--help") || arguments.read("-h"))
        options.task = Task::SHOW_HELP;
    else if (arguments.read("--version"))
        options.task = Task::SHOW_VERSION;
    if (options.task != Task::RUN)
        return options;

    // From left to right, so that no option can be taken for another one's value.
    for (int i = 1; i < arguments.argc();) {
        const std::string argument = arguments[i];
        if (!arguments.isOption(i)) {
            ++i;
            continue;
        }
        if (argument == "--digest") {
            options.digest = true;
            arguments.remove(i);
            continue;
        }
        const Setter set = findSetter(argument);
        if (!set)
            throw ViewerError(argument + ": unknown option" + hint);
        if (i + 1 >= arguments.argc() || arguments.isOption(i + 1) || *arguments[i + 1] == '\0')
            throw ViewerError(argument + " needs a value" + hint);
        set(options, arguments[i + 1]);
        arguments.remove(i, 2);
    }
    if (!options.bindingsToWrite.empty()) {
        options.task = Task::WRITE_BINDINGS;
        return options;
    }
    if (arguments.argc() < 2)
        throw ViewerError(std::string("no file to show") + hint);
    if (arguments.argc() > 2)
        throw ViewerError(std::string(arguments[2]) + ": there can be only one file" + hint);
    options.file = arguments[1];
    if (!options.watched.empty() && options.frames)
        throw ViewerError(std::string("--watch and --frames don't go together; --patch applies a document once") +
                          hint);
    return options;
}

void Options::describe(osg::ApplicationUsage& usage) {
    usage.setApplicationName("tessarin_viewer");
    usage.setDescription("tessarin_viewer runs an agent document, or a model with its physics, and shows it.");
    usage.setCommandLineUsage("tessarin_viewer [options] FILE");
    usage.addCommandLineOption("--frames N",
                               "Run N frames of 1/60 s and end, without waiting for the clock. Where there is no "
                               "display, nothing is drawn.");
    usage.addCommandLineOption("--snapshot FILE.png",
                               "Leave a picture: of the last frame, or without --frames of the first.");
    usage.addCommandLineOption("--write FILE.xml", "Leave the agents as they stand at the end as a document.");
    usage.addCommandLineOption("--digest",
                               "Print a line at the end: a hash over the names and the poses of all agents, to the "
                               "last bit, as 16 hexadecimal digits.");
    usage.addCommandLineOption("--patch FILE.xml",
                               "Apply a document to the root agent before the first frame. May be repeated.");
    usage.addCommandLineOption("--watch FILE.xml",
                               "Apply a document to the root agent each time it is saved while the scene runs.");
    usage.addCommandLineOption("--bindings FILE.xml",
                               "Keys, buttons and axes of the virtual inputs, over the defaults.");
    usage.addCommandLineOption("--write-bindings FILE.xml",
                               "Leave the bindings, those of --bindings included, as a file to edit, and end.");
    usage.addCommandLineOption("--point X,Y",
                               "Move the cursor there at first, in pixels from the upper left corner. With --frames, "
                               "which otherwise takes no notice of the person, agents are found under it.");
    usage.addCommandLineOption("--size WxH", "Size of the picture in pixels. The default is 1280x720.");
    usage.addCommandLineOption("--limits N",
                               "Let models become N times as large as usual: 200,000 nodes, 50,000 bodies and 20 "
                               "million triangles.");
    usage.addCommandLineOption("--log LEVEL", "What to log: off, error, warn, info or debug. The default is error.");
    usage.addCommandLineOption("-h or --help", "Print this help and end.");
    usage.addCommandLineOption("--version", "Print the version and end.");
}

} // namespace tessarin::viewer
