// qorfx render under a virtual display: what the picture shows.
#include "QorfxRun.h"

#include "QorVisFoundation/QorTexturePixelImage.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

TEST(QorfxGLTest, ValuesThatChooseProgramsApplyBeforeTechniquesAreChecked)
{
    QorTempDir dir;
    const std::string effect = QorfxData("program_choice.cgfx");
    const nlohmann::json inspected = nlohmann::json::parse(RunQorfx("inspect --json " + effect).out);
    EXPECT_EQ(inspected["techniques"][0]["valid"], false) << "the default program is vendor-only";
    const QorfxResult byDefault = RunQorfx("render " + effect + " --size 32x32 -o " + dir.File("default.png"));
    EXPECT_EQ(byDefault.exitCode, 1) << "inspect and render agree";
    EXPECT_NE(byDefault.err.find("no technique"), std::string::npos) << byDefault.err;

    const QorfxResult chosen =
        RunQorfx("render " + effect + " --set Program=1 --mesh quad --size 32x32 -o " + dir.File("chosen.png"));
    ASSERT_EQ(chosen.exitCode, 0) << chosen.err;
    const auto centre = Read(dir.File("chosen.png")).At(16, 16);
    EXPECT_GT(centre[0], 200);
    EXPECT_GT(centre[1], 170);
    EXPECT_LT(centre[2], 60) << "the yellow of the program the value chose";
}

TEST(QorfxGLTest, InspectCallsValidWhatRenderDraws)
{
    QorTempDir dir;
    const std::string effect = QorfxData("blend_states.cgfx");
    const nlohmann::json techniques = nlohmann::json::parse(RunQorfx("inspect --json " + effect).out)["techniques"];
    ASSERT_EQ(techniques.size(), 2u);
    EXPECT_EQ(techniques[0]["valid"], false);
    EXPECT_EQ(techniques[1]["valid"], true);
    const QorfxResult drawn =
        RunQorfx("render " + effect + " --technique Blended --size 32x32 -o " + dir.File("blended.png"));
    EXPECT_EQ(drawn.exitCode, 0) << drawn.err;
}

TEST(QorfxGLTest, AMaterialThatCannotBeDrawnGetsACrossedTileAndTheOthersAreDrawn)
{
    QorTempDir dir;
    const QorfxResult sheet = RunQorfx("render " + QorfxSample("materials/plastic.cgfx") + " " +
                                       QorfxData("program_choice.cgfx") + " " + QorfxSample("materials/toon.cgfx") +
                                       " --size 64x64 -o " + dir.File("sheet.png"));
    EXPECT_EQ(sheet.exitCode, 1);
    EXPECT_NE(sheet.err.find("1 of 3 materials could not be drawn"), std::string::npos) << sheet.err;
    Picture picture = Read(dir.File("sheet.png"));
    ASSERT_TRUE(picture.image) << "the sheet is written all the same";
    const auto crossing = picture.At(64 + 2, 2); // the cross starts in the failed tile's corner
    EXPECT_GT(crossing[0], 180);
    EXPECT_LT(crossing[1], 100);
    const auto failedTile = picture.At(64 + 5, 50); // off the cross and the reason
    EXPECT_GT(failedTile[0], failedTile[2] + 30) << "a dark red tile";
    const auto plastic = picture.At(32, 32);
    EXPECT_GT(plastic[0], 100) << "the materials around it are drawn";
}
