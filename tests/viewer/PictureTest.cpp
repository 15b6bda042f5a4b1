#include <gtest/gtest.h>
#include <osg/Image>
#include <osgDB/ReadFile>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

namespace {

/// Runs the program on the tower and reads the picture that it leaves.
osg::ref_ptr<osg::Image> takePicture(int frames) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("tessarin_" + std::to_string(getpid()) + "_picture.png");
    std::filesystem::remove(file);
    const std::string command = std::string(TESSARIN_VIEWER) + " --frames " + std::to_string(frames) +
                                " --size 320x200 --snapshot " + file.string() + " " TESSARIN_SCENES "/tower.xml";
    EXPECT_EQ(std::system(command.c_str()), 0);
    const osg::ref_ptr<osg::Image> image = osgDB::readRefImageFile(file.string());
    std::filesystem::remove(file);
    return image;
}

/// How much of a picture is red, as some of the bricks are and nothing else is, in each half, the lower one first.
std::array<double, 2> shareOfRed(const osg::Image& image) {
    std::array<double, 2> share = {0, 0};
    for (int y = 0; y < image.t(); ++y)
        for (int x = 0; x < image.s(); ++x) {
            const osg::Vec4 colour = image.getColor(unsigned(x), unsigned(y));
            if (colour.r() > 1.5f * colour.g() && colour.g() > 1.1f * colour.b())
                share[y < image.t() / 2 ? 0 : 1] += 2.0 / (image.s() * image.t());
        }
    return share;
}

TEST(PictureTest, ShowsTheTowerAndItsFall) {
    const osg::ref_ptr<osg::Image> before = takePicture(1);
    const osg::ref_ptr<osg::Image> after = takePicture(60);
    ASSERT_TRUE(before && after && before->s() == 320 && before->t() == 200);
    const std::array<double, 2> standing = shareOfRed(*before), fallen = shareOfRed(*after);
    EXPECT_GT(standing[1], 0.01);
    EXPECT_GT(fallen[0], 0.01);
    EXPECT_LT(fallen[1], standing[1]) << "the bricks came down";

    std::set<unsigned> colours;
    for (int i = 0; i < 320 * 200; ++i)
        colours.insert(before->getColor(unsigned(i % 320), unsigned(i / 320)).asRGBA());
    EXPECT_GT(colours.size(), 500U) << "lit, in shadow and under a sky";
}

} // namespace
