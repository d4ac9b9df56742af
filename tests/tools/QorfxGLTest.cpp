// qorfx render under a virtual display: what the picture shows.
#include "QorfxPicture.h"
#include "QorfxRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include <sys/stat.h>


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

    // Names longer than a tile are shortened in their middle: no label runs into the
    // next tile, so the columns where two tiles meet stay dark in the label strip.
    const std::string longName = dir.File("a_material_with_a_name_much_longer_than_its_tile.cgfx");
    std::filesystem::copy_file(QorfxSample("materials/plastic.cgfx"), longName);
    const QorfxResult labelled = RunQorfx("render " + longName + " " + longName + " --size 64x48 --columns 2 -o " +
                                          dir.File("long.png"), "QorGraphicPath=" + QorfxSample("") + " ");
    ASSERT_EQ(labelled.exitCode, 0) << labelled.err;
    Picture sheetOfLong = Read(dir.File("long.png"));
    ASSERT_TRUE(sheetOfLong.image);
    int lit = 0;
    for (unsigned y = 48; y < 48 + 22; ++y)
        for (unsigned x = 62; x < 66; ++x)
            lit += sheetOfLong.At(x, y)[0] > 200;
    EXPECT_EQ(lit, 0) << "labels stop short of their neighbours";
    int text = 0;
    for (unsigned y = 48; y < 48 + 22; ++y)
        for (unsigned x = 0; x < 62; ++x)
            text += sheetOfLong.At(x, y)[0] > 200;
    EXPECT_GT(text, 50) << "the shortened label is drawn";
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


TEST(QorfxGLTest, EachGlslTwinLooksLikeItsCgFXOriginal)
{
    QorTempDir dir;
    // Each material with values of its own, in a scene of every light kind and in the
    // default one; both families drawn with the same options.
    const auto& materials = GalleryWithValues();
    const std::string scenes[] = {"", "--lights point,spot,dir,spot --env 0.2,0.3,0.1 --mesh cube"};
    for (const auto& [material, values] : materials)
        for (const std::string& scene : scenes) {
            SCOPED_TRACE(material + " " + scene);
            std::vector<Picture> pictures;
            for (const char* extension : {".cgfx", ".glslfx"}) {
                const std::string output = dir.File(material + extension + ".png");
                const QorfxResult drawn = RunQorfx("render " + QorfxSample(("materials/" + material + extension).c_str()) +
                                                   " --size 96x96 " + values + " " + scene + " -o " + output);
                ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
                pictures.push_back(Read(output));
                ASSERT_TRUE(pictures.back().image);
            }
            const auto centre = pictures[1].At(48, 48);
            EXPECT_GT(centre[0] + centre[1] + centre[2], 60) << "the GLSL twin is drawn and lit";
            const std::array<double, 3> difference = MeanDifference(pictures[0], pictures[1]);
            for (int channel = 0; channel < 3; ++channel)
                EXPECT_LE(difference[channel], 0.03) << "channel " << channel;
        }

    const nlohmann::json inspected = nlohmann::json::parse(RunQorfx("inspect --json " + QorfxSample("materials/chrome.glslfx")).out);
    EXPECT_EQ(inspected["techniques"][0]["valid"], true);
    EXPECT_EQ(inspected["environment"], 2) << "inspect readies the sky as render does";
    EXPECT_EQ(inspected["messages"], nlohmann::json::array()) << "nvFX said nothing while validating";
}

TEST(QorfxGLTest, OneSheetShowsBothFamilies)
{
    QorTempDir dir;
    const QorfxResult sheet = RunQorfx("render " + QorfxSample("materials/toon.cgfx") + " " +
                                       QorfxSample("materials/toon.glslfx") + " --size 64x64 -o " + dir.File("sheet.png"));
    ASSERT_EQ(sheet.exitCode, 0) << sheet.err;
    Picture picture = Read(dir.File("sheet.png"));
    ASSERT_TRUE(picture.image);
    EXPECT_EQ(picture.image->GetWidth(), 2u * 64u);
    const auto cg = picture.At(32, 32), glsl = picture.At(64 + 32, 32);
    EXPECT_GT(cg[2], 100) << "the blue toon of each family";
    for (int channel = 0; channel < 3; ++channel)
        EXPECT_NEAR(glsl[channel], cg[channel], 8) << channel;

    const QorfxResult column = RunQorfx("render " + QorfxSample("materials/toon.cgfx") + " " +
                                        QorfxSample("materials/toon.glslfx") + " --columns 1 --size 64x48 -o " +
                                        dir.File("column.png"));
    ASSERT_EQ(column.exitCode, 0) << column.err;
    Picture stacked = Read(dir.File("column.png"));
    ASSERT_TRUE(stacked.image);
    EXPECT_EQ(stacked.image->GetWidth(), 64u);
    EXPECT_EQ(stacked.image->GetHeight(), 2u * (48u + 22u)) << "one family a row";
}

TEST(QorfxGLTest, TheEffectOfEveryConstructDraws)
{
    // Directives, a namespace, a sized-by-value array, a global buffer, state blocks, a
    // sampler state and its texture resource in one effect, drawn as a renderer draws it.
    QorTempDir dir;
    const std::string workshop = QorfxSample("effects/workshop.glslfx");
    const QorfxResult drawn = RunQorfx("render " + workshop + " --size 64x64 --mesh sphere -o " + dir.File("a.png"));
    ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
    const QorfxResult retiled =
        RunQorfx("render " + workshop + " --size 64x64 --mesh sphere --set Tiling=8 -o " + dir.File("b.png"));
    ASSERT_EQ(retiled.exitCode, 0) << retiled.err;
    const Picture a = Read(dir.File("a.png"));
    const Picture b = Read(dir.File("b.png"));
    ASSERT_TRUE(a.image && b.image);
    const auto centre = a.At(32, 32);
    const auto corner = a.At(1, 1);
    EXPECT_GT(centre[0] + centre[1] + centre[2], corner[0] + corner[1] + corner[2] + 150) << "the sphere is lit";
    int differing = 0; // pixels whose colour another tiling changed
    for (unsigned y = 0; y < 64; ++y)
        for (unsigned x = 0; x < 64; ++x) {
            const auto before = a.At(x, y), after = b.At(x, y);
            differing += std::abs(before[0] - after[0]) + std::abs(before[1] - after[1]) > 60;
        }
    EXPECT_GT(differing, 200) << "the repeated checker follows Tiling";
}

TEST(QorfxGLTest, DeclaredVertexInputsAreFedByNameOrLocation)
{
    // Core GLSL reads no gl_Vertex: the mesh reaches inputs named like a position and a
    // normal, and an input of another name through its location (2: texture coordinates).
    QorTempDir dir;
    const std::string effect = dir.Write("core.glslfx", R"(
uniform mat4 WorldViewProj : WORLDVIEWPROJECTION;
GLSLShader { #version 330
}
GLSLShader VS {
    in vec3 inPosition;
    in vec3 Normal;
    layout(location = 2) in vec2 st;
    out vec3 shade;
    void main() { shade = vec3(st, abs(Normal.z)); gl_Position = WorldViewProj * vec4(inPosition, 1.0); }
}
GLSLShader FS {
    in vec3 shade;
    out vec4 colour;
    void main() { colour = vec4(shade, 1.0); }
}
Technique Core { Pass P { VertexProgram = VS; FragmentProgram = FS; } }
)");
    const QorfxResult drawn = RunQorfx("render " + effect + " --size 64x64 --mesh quad -o " + dir.File("core.png"));
    ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
    const auto centre = Read(dir.File("core.png")).At(32, 32);
    EXPECT_NEAR(centre[0], 128, 24) << "texture coordinates by location";
    EXPECT_NEAR(centre[1], 128, 24);
    EXPECT_GT(centre[2], 230) << "the normal by its name";
}
