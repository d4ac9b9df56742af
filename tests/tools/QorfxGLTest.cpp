// qorfx render under a virtual display: what the picture shows.
#include "QorfxRun.h"

#include "QorVisFoundation/QorTexturePixelImage.h"

#include <gtest/gtest.h>

#include <array>
#include <sys/stat.h>

namespace {

struct Picture
{
    QorTexturePixelImage::Ptr image;
    std::array<int, 3> At(unsigned x, unsigned y) const
    {
        const unsigned char* p = image->GetPixels() + (static_cast<size_t>(y) * image->GetWidth() + x) * image->GetBytesPerPixel();
        return {p[0], p[1], p[2]};
    }
};

Picture Read(const std::string& path)
{
    return {QorTexturePixelImage::Ptr(QorTexturePixelImage::ReadFromFile(path.c_str(), QorString(path.c_str())))};
}

} // namespace

TEST(QorfxGLTest, RenderShowsTheMaterialAndFollowsSet)
{
    QorTempDir dir;
    const std::string plastic = QorfxSample("materials/plastic.cgfx");
    QorfxResult red = RunQorfx("render " + plastic + " --size 96x96 --lights dir --env 0,0,0 --set Diffuse=1,0,0 -o " +
                               dir.File("red.png"));
    ASSERT_EQ(red.exitCode, 0) << red.err;
    Picture redPicture = Read(dir.File("red.png"));
    ASSERT_TRUE(redPicture.image);
    EXPECT_EQ(redPicture.image->GetWidth(), 96u);
    const auto centre = redPicture.At(48, 48);
    EXPECT_GT(centre[0], 100);
    EXPECT_LT(centre[1], centre[0] / 2);
    const auto corner = redPicture.At(1, 1);
    EXPECT_LT(corner[0] + corner[1] + corner[2], 60) << "the background corner stays dark";

    QorfxResult blue = RunQorfx("render " + plastic + " --size 96x96 --lights dir --env 0,0,0 --set Diffuse=0,0,1 -o " +
                                dir.File("blue.png"));
    ASSERT_EQ(blue.exitCode, 0) << blue.err;
    const auto blueCentre = Read(dir.File("blue.png")).At(48, 48);
    EXPECT_GT(blueCentre[2], 100);
    EXPECT_LT(blueCentre[0], blueCentre[2] / 2);

    QorfxResult wrongKind = RunQorfx("render " + plastic + " --set Diffuse=red -o " + dir.File("x.png"));
    EXPECT_EQ(wrongKind.exitCode, 1);
    EXPECT_NE(wrongKind.err.find("Diffuse"), std::string::npos);
    QorfxResult unknown = RunQorfx("render " + plastic + " --set Shine=1 -o " + dir.File("x.png"));
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("no parameter \"Shine\""), std::string::npos);
    QorfxResult unwritable = RunQorfx("render " + plastic + " -o " + dir.File("no/such/folder/x.png"));
    EXPECT_EQ(unwritable.exitCode, 1);
    struct stat info;
    EXPECT_NE(stat(dir.File("x.png").c_str(), &info), 0);
}

TEST(QorfxGLTest, SeveralInputsMakeAContactSheet)
{
    QorTempDir dir;
    const QorfxResult sheet = RunQorfx("render " + QorfxSample("materials/plastic.cgfx") + " " +
                                       QorfxSample("materials/toon.cgfx") + " " +
                                       QorfxSample("materials/textured.cgfx") + " --size 64x48 -o " +
                                       dir.File("sheet.png"));
    ASSERT_EQ(sheet.exitCode, 0) << sheet.err;
    Picture picture = Read(dir.File("sheet.png"));
    ASSERT_TRUE(picture.image);
    EXPECT_EQ(picture.image->GetWidth(), 2u * 64u) << "two columns for three tiles";
    EXPECT_EQ(picture.image->GetHeight(), 2u * (48u + 22u)) << "two rows, each with a label strip";
}
