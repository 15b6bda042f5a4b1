#include <tests/doubles/LogCapture.h>
#include <tests/viewer/ViewerTest.h>

#include <sys/resource.h>

#include <csignal>
#include <iostream>
#include <iterator>

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
                               "--limits N", "--size WxH", "--log LEVEL", "--help", "--version"})
        EXPECT_THAT(out.str(), HasSubstr(option));
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_THAT(out.str(), testing::MatchesRegex("tessarin_viewer [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(ApplicationTest, BadCommandLinesEndWithOneLine) {
    const std::pair<std::vector<std::string>, std::string> rows[] = {
        {{}, "no file to show"},
        {{"--frame", "3", tower}, "--frame: unknown option"},
        {{tower, "--frames"}, "--frames needs a value"},
        {{tower, "--frames", "1", "--watch", tower},
         "--watch and --frames don't go together; --patch applies a document once"},
        {{"--write", "--frames", "1", tower}, "--write needs a value"},
        {{tower, "other.xml"}, "other.xml: there can be only one file"},
        {{"--log", "loud", tower}, "--log loud: not one of off, error, warn, info and debug"}};
    for (const auto& [arguments, line] : rows)
        EXPECT_EQ(failure(arguments), line + hint);
    for (const std::string bad : {"ten", "1.5", "3x", "99999999999999999999"})
        EXPECT_EQ(failure({"--frames", bad, tower}), "--frames " + bad + ": not a number of frames" + hint);
    for (const std::string bad : {"640", "640x", "0x480", "640x480x2", "640x99999"})
        EXPECT_EQ(failure({"--size", bad, tower}), "--size " + bad + ": not a size like 1280x720" + hint);
    for (const std::string bad : {"3", "640,", "a,b", "1x2"})
        EXPECT_EQ(failure({"--point", bad, tower}), "--point " + bad + ": not a place like 640,360" + hint);
}

TEST_F(ApplicationTest, BadFilesEndWithOneLineThatNamesThePlace) {
    const auto naming = [](const std::string& model) {
        return "<AgentNode><Component class='VisualModelComponent'><field name='filePath' value='" + model +
               "'/></Component></AgentNode>";
    };
    const std::string place = folder.string() + "/",
                      unknown = ": no model of a known kind, it isn't read; known are 3ds, ";
    const auto at = [&](const std::string& fileAndLine) { return " (" + place + fileAndLine + ')'; };
    const std::string mismatch =
        "broken.dae: mismatched tag: </COLLADA> stands where <asset> of line 2 is to be closed";
    const std::tuple<const char*, std::string, std::string> rows[] = {
        // file, content, the line
        {"broken.xml", "<AgentNode>\n  <Component>\n</AgentNode>\n",
         place + "broken.xml: mismatched tag: </AgentNode> stands where <Component> of line 2 is to be closed" +
             at("broken.xml:3:3")},
        {"broken.dae", "<COLLADA>\n <asset></COLLADA>", place + mismatch + at("broken.dae:2:11")},
        {"other.xml", "<COLLADA/>",
         place + "other.xml: no agent document, its root element is COLLADA and not AgentNode" + at("other.xml:1")},
        {"other.dae", "<AgentNode/>", place + "other.dae: no COLLADA file, its root element is AgentNode"},
        {"circle.dae",
         "<COLLADA><library_nodes><node id='a'><instance_node url='#b'/></node><node id='b'><instance_node url='#c'/>"
         "<node><instance_node url='#c'/><instance_node url='#a'/></node></node><node "
         "id='c'/></library_nodes></COLLADA>",
         place + "circle.dae: the node b contains itself"},
        {"plain.foo", "hello", place + "plain.foo" + unknown},
        {"empty.dae", "<COLLADA version='1.4.1'/>", place + "empty.dae: can't be read"},
        {"a.xml", naming("broken.dae"),
         place + "a.xml: the model " + place + mismatch + at("broken.dae:2:11") + at("a.xml:1")},
        {"b.xml", naming("\xC2\x9B.dae"), // a control character
         place + "b.xml: the model " + place + "\\u009b.dae: no such file" + at("b.xml:1")},
        {"c.xml", naming("plain.foo"), place + "c.xml: the model " + place + "plain.foo" + unknown}};
    for (const auto& [name, content, line] : rows)
        EXPECT_THAT(failure({"--frames", "1", write(name, content).string()}), StartsWith(line));
    for (const char* missing : {"missing.xml", "missing.dae"})
        EXPECT_EQ(failure({"--frames", "1", place + missing}), place + missing + ": no such file");
    EXPECT_EQ(failure({"--frames", "1", folder.string()}), folder.string() + ": is a folder, not a file");
    EXPECT_THAT(failure({"--frames", "1", "--patch", place + "broken.xml", tower}), HasSubstr(at("broken.xml:3:3")));
}

/// What is logged as a fault, category and all.
class Faults {
public:
    std::vector<std::string> take() {
        std::vector<std::string> lines = agent.takeErrors();
        for (const std::string& line : viewer.takeErrors())
            lines.push_back(line);
        return lines;
    }

private:
    doubles::LogCapture agent{"agent"}, viewer{"viewer"};
};

// Documents are applied twice, and a creation may hand over to a modification.
TEST_F(ApplicationTest, FaultsInDocumentsAreToldOnceAndCounted) {
    const std::string content = "<AgentNode name='a'>\n<Component class='SpinBehaviour' name='spin'>\n"
                                "<field name='degreesPerSecond' value='fast'/></Component>\n"
                                "<Component class='JointComponent' name='VisualModelComponent'/>\n"
                                "<AgentNode name='b'><Transform>\n<Translate>1\t2\t3</Translate></Transform>\n"
                                "<Component class='GeometryComponent' name='g'/></AgentNode>\n"
                                "<AgentNode name='c'><Component class='GeometryComponent'/></AgentNode></AgentNode>";
    const std::string document = write("scene.xml", content), patch = write("patch.xml", content),
                      good = write("good.xml", "<AgentNode name='a'/>");
    const auto inFile = [](const std::string& file) {
        return testing::ElementsAre(AllOf(HasSubstr("\"fast\""), testing::EndsWith(" (" + file + ":3)")),
                                    AllOf(HasSubstr("\"1\t2\t3\""), testing::EndsWith(" (" + file + ":6)")),
                                    file + ": while it was read 2 lines of faults were logged");
    };
    Faults faults;
    EXPECT_EQ(run({"--frames", "1", document}), 0);
    EXPECT_THAT(faults.take(), inFile(document));
    EXPECT_EQ(run({"--frames", "1", "--patch", patch, good}), 0);
    EXPECT_THAT(faults.take(), inFile(patch));
    write("scene.xml", "<AgentNode><AgentNode>\n<Component class='GeometryComponent'/></AgentNode></AgentNode>");
    EXPECT_EQ(run({"--frames", "1", document}), 0);
    EXPECT_THAT(faults.take(),
                testing::ElementsAre("Failed to find VisualModelComponent thats corresponds to GeometryComponent",
                                     document + ": while it was read 1 line of a fault was logged"));
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

TEST_F(ApplicationTest, FilesAreWrittenWholeOrNotAtAll) {
    const auto file = write("old.xml", "<Old/>"), link = folder / "link.xml";
    const auto writeTo = [&](const std::string& path) { return run({"--write-bindings", path}); };
    std::filesystem::create_symlink("old.xml", link);
    std::filesystem::permissions(file, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{100, before.rlim_max}; // as on a disk that is full
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(writeTo(link), 1);
    EXPECT_EQ(writeTo(folder / "new.xml"), 1);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(err.str(), "tessarin_viewer: " + (folder / "new.xml").string() + ": can't be written: File too large\n");
    EXPECT_EQ(textOf(file), "<Old/>");

    EXPECT_EQ(writeTo(link), 0);
    EXPECT_THAT(textOf(file), HasSubstr("</Bindings>\n"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    const std::filesystem::path other = folder / "other.xml";
    std::filesystem::create_hard_link(file, other);
    std::ofstream(other) << "<Old/>";
    EXPECT_EQ(writeTo(file), 0);
    EXPECT_EQ(textOf(other), textOf(file)) << "both names stay those of one file";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 3) << "nothing is left beside them";

    EXPECT_EQ(failure({"--write-bindings", "/dev/full"}), "/dev/full: can't be written: No space left on device");
    EXPECT_EQ(failure({"--write-bindings", folder}), folder.string() + ": can't be written: Is a directory");
    testing::internal::CaptureStdout();
    std::cout << "before\n";
    EXPECT_EQ(writeTo("/dev/stdout"), 0);
    std::cout << "after\n" << std::flush;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "before\n" + textOf(file) + "after\n");
}

} // namespace
} // namespace tessarin::viewer
