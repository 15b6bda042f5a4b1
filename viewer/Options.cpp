#include <viewer/Options.h>

#include <viewer/ViewerError.h>

#include <osg/ApplicationUsage>
#include <osg/ArgumentParser>

#include <charconv>
#include <string_view>

namespace tessarin::viewer {

namespace {

const char* const hint = " (tessarin_viewer --help lists the options)";

/// Takes an option with its value out of the command line. False if it isn't there.
bool takeValue(osg::ArgumentParser& arguments, const std::string& option, std::string& value) {
    const int position = arguments.find(option);
    if (position < 0)
        return false;
    if (position + 1 >= arguments.argc() || arguments.isOption(position + 1))
        throw ViewerError(option + " needs a value" + hint);
    value = arguments[position + 1];
    arguments.remove(position, 2);
    return true;
}

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

void readSize(const std::string& text, Options& options) {
    constexpr int largest = 16384;
    const std::size_t cross = text.find('x');
    if (cross != std::string::npos) {
        const std::optional<int> width = readNumber(std::string_view(text).substr(0, cross), 1);
        const std::optional<int> height = readNumber(std::string_view(text).substr(cross + 1), 1);
        if (width && height && *width <= largest && *height <= largest) {
            options.width = *width;
            options.height = *height;
            return;
        }
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

void readFile(osg::ArgumentParser& arguments, Options& options) {
    for (int i = 1; i < arguments.argc(); ++i)
        if (arguments.isOption(i))
            throw ViewerError(std::string(arguments[i]) + ": unknown option" + hint);
    if (arguments.argc() < 2)
        throw ViewerError(std::string("no file to show") + hint);
    if (arguments.argc() > 2)
        throw ViewerError(std::string(arguments[2]) + ": there can be only one file" + hint);
    options.file = arguments[1];
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

    std::string value;
    while (takeValue(arguments, "--frames", value))
        options.frames = readFrames(value);
    while (takeValue(arguments, "--snapshot", value))
        options.snapshot = value;
    while (takeValue(arguments, "--write", value))
        options.document = value;
    while (takeValue(arguments, "--patch", value))
        options.patches.emplace_back(value);
    while (takeValue(arguments, "--size", value))
        readSize(value, options);
    while (takeValue(arguments, "--log", value))
        options.logLevel = readLogLevel(value);
    readFile(arguments, options);
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
    usage.addCommandLineOption("--patch FILE.xml",
                               "Apply a document to the root agent before the first frame. May be repeated.");
    usage.addCommandLineOption("--size WxH", "Size of the picture in pixels. The default is 1280x720.");
    usage.addCommandLineOption("--log LEVEL", "What to log: off, error, warn, info or debug. The default is error.");
    usage.addCommandLineOption("-h or --help", "Print this help and end.");
    usage.addCommandLineOption("--version", "Print the version and end.");
}

} // namespace tessarin::viewer
