#pragma once

#include <viewer/Application.h>
#include <viewer/FrameLoop.h>
#include <viewer/Scene.h>

#include <agent/AgentNode.h>
#include <agent/RigidBodyComponent.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace tessarin::viewer {

using agent::AgentNode;

inline const std::filesystem::path scenes = TESSARIN_SCENES;

inline void runFrames(Scene& scene, int frames) {
    FrameLoop loop(scene);
    for (int frame = 0; frame < frames; ++frame)
        loop.frame(1.0 / 60);
}

/// A folder of the test's own, and the program run in it as from a command line, without a display.
class ViewerTest : public testing::Test {
protected:
    ViewerTest() {
        unsetenv("DISPLAY");
        std::filesystem::create_directories(folder);
    }
    ~ViewerTest() override { std::filesystem::remove_all(folder); }

    std::filesystem::path write(const std::string& name, const std::string& text) const {
        const std::filesystem::path path = folder / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << text;
        return path;
    }

    static std::string textOf(const std::filesystem::path& path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    /// @return the exit status.
    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "tessarin_viewer");
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        out.str({});
        err.str({});
        return Application(out, err).run(static_cast<int>(arguments.size()), pointers.data());
    }

    /// The line of a failed run, without the program's name; the whole of it if it is anything but one line.
    std::string failure(const std::vector<std::string>& arguments) {
        const std::string head = "tessarin_viewer: ";
        EXPECT_EQ(run(arguments), 1);
        EXPECT_EQ(out.str(), "");
        const std::string text = err.str();
        const bool isOneLine = text.compare(0, head.size(), head) == 0 && text.find('\n') == text.size() - 1;
        return isOneLine ? text.substr(head.size(), text.size() - head.size() - 1) : text;
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("tessarin_" + std::to_string(getpid()) + "_" + testing::UnitTest::GetInstance()->current_test_info()->name());
    std::ostringstream out, err;
};

} // namespace tessarin::viewer
