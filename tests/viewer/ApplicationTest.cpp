#include <tests/viewer/ViewerTest.h>

#include <gmock/gmock.h>

namespace tessarin::viewer {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class ApplicationTest : public ViewerTest {
protected:
    const std::string tower = (scenes / "tower.xml").string();
    const std::string hint = " (tessarin_viewer --help lists the options)";
};

TEST_F(ApplicationTest, HelpListsEveryOptionAndVersionIsTold) {
    EXPECT_EQ(run({"--help"}), 0);
    for (const char* option : {"--frames N", "--snapshot FILE.png", "--write FILE.xml", "--digest", "--patch FILE.xml",
                               "--watch FILE.xml", "--bindings FILE.xml", "--write-bindings FILE.xml", "--point X,Y",
                               "--size WxH", "--log LEVEL", "--help", "--version"})
        EXPECT_THAT(out.str(), HasSubstr(option));
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_THAT(out.str(), testing::MatchesRegex("tessarin_viewer [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(ApplicationTest, BadCommandLinesEndWithOneLine) {
    EXPECT_EQ(failure({}), "no file to show" + hint);
    EXPECT_EQ(failure({"--frame", "3", tower}), "--frame: unknown option" + hint);
    EXPECT_EQ(failure({tower, "--frames"}), "--frames needs a value" + hint);
    EXPECT_EQ(failure({tower, "--frames", "1", "--watch", tower}),
              "--watch and --frames don't go together; --patch applies a document once" + hint);
    EXPECT_EQ(failure({tower, "--point", "3"}), "--point 3: not a place like 640,360" + hint);
    EXPECT_EQ(failure({"--write", "--frames", "1", tower}), "--write needs a value" + hint);
    EXPECT_EQ(failure({tower, "other.xml"}), "other.xml: there can be only one file" + hint);
    for (const char* bad : {"ten", "1.5", "3x", "99999999999999999999"})
        EXPECT_EQ(failure({"--frames", bad, tower}),
                  "--frames " + std::string(bad) + ": not a number of frames" + hint);
    for (const char* bad : {"640", "640x", "0x480", "640x480x2", "640x99999"})
        EXPECT_EQ(failure({"--size", bad, tower}), "--size " + std::string(bad) + ": not a size like 1280x720" + hint);
    for (const char* bad : {"640", "640,", "a,b", "1x2"})
        EXPECT_EQ(failure({"--point", bad, tower}),
                  "--point " + std::string(bad) + ": not a place like 640,360" + hint);
    EXPECT_EQ(failure({"--log", "loud", tower}), "--log loud: not one of off, error, warn, info and debug" + hint);
}

TEST_F(ApplicationTest, BadFilesEndWithOneLineThatNamesThePlace) {
    const std::string broken = write("broken.xml", "<AgentNode>\n  <Component>\n</AgentNode>\n").string();
    const std::string brokenModel = write("broken.dae", "<COLLADA>\n <asset></COLLADA>").string();
    const std::string other = write("other.xml", "<COLLADA/>").string();
    const std::string otherModel = write("other.dae", "<AgentNode/>").string();
    const std::string noModel = write("plain.foo", "hello").string();
    const std::string noScene = write("empty.dae", "<COLLADA version=\"1.4.1\"/>").string();
    const std::string missing = (folder / "missing").string();
    const auto naming = [&](const char* document, const std::string& model) {
        return write(document, "<AgentNode><Component class=\"VisualModelComponent\">"
                               "<field name=\"filePath\" value=\"" +
                                   model + "\"/></Component></AgentNode>")
            .string();
    };

    EXPECT_EQ(failure({"--frames", "1", missing + ".xml"}), missing + ".xml: no such file");
    EXPECT_EQ(failure({"--frames", "1", missing + ".dae"}), missing + ".dae: no such file");
    EXPECT_EQ(failure({"--frames", "1", folder.string()}), folder.string() + ": is a folder, not a file");
    EXPECT_THAT(failure({"--frames", "1", broken}), StartsWith(broken + ":3:"));
    EXPECT_THAT(failure({"--frames", "1", brokenModel}), StartsWith(brokenModel + ":2:"));
    EXPECT_EQ(failure({"--frames", "1", other}),
              other + ": no agent document, its root element is COLLADA and not AgentNode");
    EXPECT_EQ(failure({"--frames", "1", otherModel}), otherModel + ": no COLLADA file, its root element is AgentNode");
    EXPECT_EQ(failure({"--frames", "1", noModel}),
              noModel + ": neither an agent document nor a model that can be read");
    EXPECT_EQ(failure({"--frames", "1", noScene}),
              noScene + ": neither an agent document nor a model that can be read");
    EXPECT_THAT(failure({"--frames", "1", naming("a.xml", "broken.dae")}),
                StartsWith((folder / "a.xml").string() + ": the model " + brokenModel + ":2:"));
    EXPECT_EQ(failure({"--frames", "1", naming("b.xml", "missing.dae")}),
              (folder / "b.xml").string() + ": the model " + missing + ".dae: no such file");
    EXPECT_EQ(failure({"--frames", "1", naming("c.xml", "plain.foo")}),
              (folder / "c.xml").string() + ": the model " + noModel + " can't be read");
    EXPECT_THAT(failure({"--frames", "1", "--patch", broken, tower}), StartsWith(broken + ":3:"));
}

TEST_F(ApplicationTest, WithoutADisplayOnlyFramesRun) {
    EXPECT_EQ(run({"--frames", "2", "--write", (folder / "out.xml").string(), tower}), 0);
    EXPECT_EQ(err.str(), "");
    EXPECT_TRUE(std::filesystem::exists(folder / "out.xml"));

    EXPECT_EQ(failure({tower}), "there is no display to open a window on; --frames N runs without one");
    EXPECT_EQ(failure({"--frames", "1", "--snapshot", "a.png", tower}),
              "--snapshot a.png: there is no display to draw on");
    EXPECT_EQ(failure({"--frames", "1", "--snapshot", "a.nothing", tower}),
              "a.nothing: no format for pictures; name it like picture.png");

    const std::string unwritable = (folder / "no" / "out.xml").string();
    EXPECT_EQ(run({"--frames", "1", "--write", unwritable, tower}), 1);
    EXPECT_EQ(err.str(), "tessarin_viewer: " + unwritable + ": can't be written: No such file or directory\n");
}

} // namespace

} // namespace tessarin::viewer
