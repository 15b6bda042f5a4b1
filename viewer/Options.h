#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace osg {
class ApplicationUsage;
class ArgumentParser;
} // namespace osg

namespace tessarin::viewer {

/// What the command line asks for.
struct Options {
    enum class Task { RUN, SHOW_HELP, SHOW_VERSION, WRITE_BINDINGS };

    /// In pixels from the upper left corner.
    struct Point {
        int x;
        int y;
    };

    Task task = Task::RUN;
    std::filesystem::path file;
    std::vector<std::filesystem::path> patches;
    std::optional<long> frames;
    std::filesystem::path snapshot;
    std::filesystem::path document;
    std::filesystem::path watched;
    std::filesystem::path bindings;
    std::filesystem::path bindingsToWrite;
    std::optional<Point> point;
    bool digest = false;
    int width = 1280;
    int height = 720;
    std::optional<int> logLevel;

    /// Times the usual limits of what a model may become.
    double limits = 1;

    /// Reads the command line and takes what it has read out of the parser.
    /// @throws ViewerError for an option that is unknown, lacks its value or has a bad one, and if FILE is missing.
    static Options parse(osg::ArgumentParser& arguments);

    /// Describes the program and its options, for --help and for the help screen.
    static void describe(osg::ApplicationUsage& usage);
};

} // namespace tessarin::viewer
