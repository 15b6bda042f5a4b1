// Files may come from anybody: whatever they do to their reader, the viewer says it in one line and goes on.

#include <tests/viewer/ColladaText.h>
#include <tests/viewer/ViewerTest.h>

#include <viewer/ChildProcess.h>

#include <osg/Geometry>
#include <osg/ProxyNode>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <tuple>

namespace tessarin::viewer {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Hears whether anybody asks this machine for something.
class Server {
public:
    Server() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        const auto any = reinterpret_cast<sockaddr*>(&address);
        EXPECT_TRUE(::bind(socket, any, size) == 0 && ::listen(socket, 1) == 0);
        ::getsockname(socket, any, &size);
        url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
    }
    ~Server() { ::close(socket); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    bool wasAsked() const {
        const int caller = ::accept(socket, nullptr, nullptr);
        return caller >= 0 && ::close(caller) == 0;
    }

    std::string url;

private:
    int socket;
};

class HostileFilesTest : public ViewerTest {
protected:
    std::string place(const std::string& name) const { return (folder / name).string(); }

    /// A scene file of OpenSceneGraph that takes another file in, with a triangle beside it.
    std::string writeProxy(const std::string& name, const std::string& other) const {
        const osg::ref_ptr<osg::ProxyNode> proxy = new osg::ProxyNode;
        proxy->setFileName(0, other);
        const osg::ref_ptr<osg::Geometry> triangle = new osg::Geometry;
        const osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array(3);
        (*corners)[1].x() = (*corners)[2].y() = 1;
        triangle->setVertexArray(corners);
        triangle->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
        const osg::ref_ptr<osg::Group> group = new osg::Group;
        group->addChild(proxy);
        group->addChild(triangle);
        EXPECT_TRUE(osgDB::writeNodeFile(*group, place(name)));
        return place(name);
    }

    const std::string trace = place("trace");
    const std::string script = write("evil.lua", "io.open('" + trace + "', 'w'):close()").string();
    const Server server;
};

TEST_F(HostileFilesTest, NothingButPlainFilesOfKnownKindsIsReadAsAModel) {
    Scene scene(scenes / "carousel.xml"); // from now on the viewer's loader stands before osgDB
    write("folder.dae/x", "");
    for (const char* pipe : {"pipe.dae", "pipe.osgt", "pipe.xml"})
        ASSERT_EQ(::mkfifo(place(pipe).c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", place("zeros.dae"));
    const std::string box = colladaText("Z_UP", "<node id='n'><instance_geometry url='#cube'/></node>");
    write("x.dae", box);
    write("x.dae.gz", box);
    const std::tuple<std::string, std::string> rows[] = {
        {script, "known are 3ds, ac, dae"},
        {place("x.dae.gz"), "known are 3ds, ac, dae"},
        {place("x.dae.(1,2,3).trans"), "no such file"},
        {place("folder.dae"), "is a folder"},
        {place("pipe.dae"), "no regular file"},
        {place("pipe.osgt"), "no regular file"},
        {place("pipe.xml"), "no regular file"},
        {place("zeros.dae"), "no regular file"},
        {server.url + "x.dae", "no such file"},
        {write("library.osgt", "#Ascii Scene\n#Version 162\n\n../../evil::Group {\n}\n").string(),
         "names a class of the library ../../evil by the library's path"}};
    for (const auto& [path, reason] : rows) {
        SCOPED_TRACE(path);
        EXPECT_THAT(failure({"--frames", "1", path}), HasSubstr(reason));
        if (path == place("pipe.xml"))
            continue;
        const std::string document =
            "<AgentNode><Component class='VisualModelComponent'><field name='filePath' value='" + path +
            "'/></Component></AgentNode>";
        EXPECT_THAT(failure({"--frames", "1", write("scene.xml", document).string()}),
                    HasSubstr(place("scene.xml: the model ")));
    }
    EXPECT_THAT(failure({"--bindings", place("pipe.xml"), "--frames", "1", place("x.dae")}),
                HasSubstr("no regular file"));
    EXPECT_EQ(run({"--frames", "1", place("x.dae")}), 0);

    // What files take in is held to the same, whoever has them read.
    for (const char* kind : {"osgt", "osgb", "osg", "ive"})
        for (const std::string& other : {script, server.url + "x.osgt"}) {
            const std::string proxy = writeProxy(std::string("proxy.") + kind, other);
            EXPECT_EQ(run({"--frames", "1", proxy}), 0);
            EXPECT_TRUE(osgDB::readRefNodeFile(proxy));
        }
    std::string remote = box;
    remote.replace(remote.find("'#cube'"), 7, "'" + server.url + "x.dae#cube'");
    run({"--frames", "1", write("remote.dae", remote).string()});
    EXPECT_FALSE(osgDB::readRefNodeFile(script));
    EXPECT_FALSE(osgDB::readRefObjectFile(script));
    EXPECT_TRUE(osgDB::readRefObjectFile("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")) << "the viewer's texts";
    EXPECT_FALSE(std::filesystem::exists(trace));
    EXPECT_FALSE(server.wasAsked());
}

TEST_F(HostileFilesTest, AModelThatOpenSceneGraphCrashesOnCostsALineAndNothingElse) {
    const std::string node = "<node id='n'><instance_geometry url='#cube'><bind_material><technique_common>"
                             "<instance_material symbol='m' target='#m'/></technique_common></bind_material>"
                             "</instance_geometry></node>";
    std::string text = colladaText("Z_UP", node);
    text.insert(text.find("<library_geometries>"),
                "<library_effects><effect id='e'><profile_COMMON><technique sid='t'><lambert><diffuse><color>1 1 1 1"
                "</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>"
                "<library_materials><material id='m'><instance_effect url='#e'/></material></library_materials>");
    const std::string file = write("crash.dae", text).string();
    Scene scene(file);
    const osg::Node* const before = scene.getGraph().getChild(0);
    write("crash.dae", text.erase(text.find(" symbol='m'"), 11));
    const std::string line = file + ": can't be read: OpenSceneGraph crashed (";
    EXPECT_THAT(failure({"--frames", "1", file}), StartsWith(line));
    EXPECT_THROW(scene.reload(), ViewerError);
    EXPECT_EQ(scene.getGraph().getChild(0), before);
    const std::string document = "<AgentNode><Component class='VisualModelComponent'><field name='filePath' "
                                 "value='crash.dae'/></Component></AgentNode>";
    EXPECT_THAT(failure({"--frames", "1", write("scene.xml", document).string()}),
                StartsWith(place("scene.xml: the model ") + line));
    EXPECT_FALSE(osgDB::readRefNodeFile(file));
}

TEST_F(HostileFilesTest, WhatAPictureWouldBecomeIsCountedBeforeItIsMade) {
    const auto chain = [](int length, int times) {
        std::string nodes;
        for (int i = 0; i < length; ++i) {
            nodes += "<node id='l" + std::to_string(i) + "'>";
            for (int k = 0; k < times; ++k)
                nodes += "<instance_node url='#l" + std::to_string(i + 1) + "'/>";
            nodes += "</node>";
        }
        return nodes + "<node id='l" + std::to_string(length) + "'><instance_geometry url='#cube'/></node>";
    };
    const auto file = [&](const std::string& nodes, const std::string& scene) {
        std::string text = colladaText("Z_UP", scene);
        return write("x.dae",
                     text.insert(text.find("<library_geometries>"), "<library_nodes>" + nodes + "</library_nodes>"))
            .string();
    };
    const std::string first = "<node><instance_node url='#l0'/></node>";
    std::string large = file(chain(9, 10), first);
    EXPECT_EQ(failure({"--frames", "1", large}), large + ": would become 1111111112 nodes, and 200000 are allowed");
    large = file(chain(1200, 1), first);
    EXPECT_EQ(failure({"--frames", "1", large}), large + ": would become 1202 levels of nodes, and 1000 are allowed");
    // A hundred cubes of twelve triangles below 111 nodes, and one node above them.
    const std::string small = file(chain(2, 10), first);
    EXPECT_EQ(failure({"--frames", "1", "--limits", "0.00055", small}),
              small + ": would become 112 nodes, and 110 are allowed");
    EXPECT_EQ(run({"--frames", "1", "--limits", "0.002", small}), 0);
    EXPECT_EQ(failure({"--frames", "1", "--limits", "few", small}),
              "--limits few: not a number like 10 (tessarin_viewer --help lists the options)");

    const std::string physics =
        write("physics.dae",
              colladaText("Z_UP", "<node id='n'/>", bodyText("b", "<shape><sphere><radius>1</radius></sphere></shape>"),
                          instanceText("b", "n") + instanceText("b", "n")))
            .string();
    EXPECT_EQ(failure({"--frames", "1", "--limits", "0.00003", physics}),
              physics + ": it would become 2 bodies, and 1.5 are allowed");

    // What no text tells is counted in what OpenSceneGraph makes of the file.
    const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec3Array(3));
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    osg::ref_ptr<osg::Group> group = new osg::Group;
    group->addChild(geometry);
    for (int level = 0; level < 9; ++level) {
        const osg::ref_ptr<osg::Group> above = new osg::Group;
        for (int i = 0; i < 10; ++i)
            above->addChild(group);
        group = above;
    }
    ASSERT_TRUE(osgDB::writeNodeFile(*group, place("wide.osgt")));
    EXPECT_EQ(failure({"--frames", "1", place("wide.osgt")}),
              place("wide.osgt") + ": would become 2111111111 nodes, and 200000 are allowed");
}

TEST_F(HostileFilesTest, AChildProcessMayEndAsItLikes) {
    ChildLimits limits;
    limits.seconds = 0.5;
    limits.bytes = 100 << 20;
    const auto ending = [&](const std::function<std::string()>& task) {
        try {
            return "result of " + std::to_string(runInChild(task, limits).size());
        } catch (const ViewerError& error) {
            return std::string(error.what());
        }
    };
    const std::string large = std::string(1 << 20, '\0') + "end";
    EXPECT_EQ(runInChild([&] { return large; }, limits), large);
    EXPECT_EQ(ending([] { return std::string(); }), "result of 0");
    EXPECT_EQ(ending([]() -> std::string { throw ViewerError("no"); }), "no");
    EXPECT_EQ(ending([]() -> std::string { throw 1; }), "an unknown exception");
    EXPECT_EQ(ending([]() -> std::string { std::raise(SIGSEGV), std::abort(); }), "crashed (Segmentation fault)");
    EXPECT_EQ(ending([]() -> std::string { std::abort(); }), "crashed (Aborted)");
    EXPECT_EQ(ending([]() -> std::string { _exit(0); }), "ended early");
    EXPECT_EQ(ending([]() -> std::string {
                  while (true)
                      ::pause();
              }),
              "took more than 0.5 s");
    EXPECT_EQ(ending([]() -> std::string {
                  std::vector<std::string> all;
                  while (true)
                      all.emplace_back(1 << 20, 'x');
              }),
              "took more than 100 MB of memory");
    EXPECT_EQ(::waitpid(-1, nullptr, 0), -1) << "a child is left";
}

} // namespace
} // namespace tessarin::viewer
