// qorfx view under a virtual display, driven by scripts: what it saves, how it follows
// the saves of an effect and its include, and what a broken save leaves.
#include "QorfxPicture.h"
#include "QorfxViewRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// The values a document holds, by name, as inspect reads them back.
nlohmann::json StoredValues(const std::string& package, const std::string& folder)
{
    const QorfxResult inspected = RunQorfx("inspect --json --path " + folder + " " + package);
    EXPECT_EQ(inspected.exitCode, 0) << inspected.err;
    nlohmann::json values = nlohmann::json::object();
    const nlohmann::json description = inspected.exitCode == 0 ? nlohmann::json::parse(inspected.out) : values;
    if (inspected.exitCode == 0)
        for (const nlohmann::json& parameter : description["parameters"])
            values[parameter["name"].get<std::string>()] = parameter["value"];
    return values;
}

void ExpectSamePicture(const std::string& a, const std::string& b, double tolerance)
{
    const Picture first = Read(a), second = Read(b);
    ASSERT_TRUE(first.image && second.image) << a << " " << b;
    ASSERT_EQ(first.image->GetWidth(), second.image->GetWidth());
    ASSERT_EQ(first.image->GetHeight(), second.image->GetHeight());
    for (double difference : MeanDifference(first, second))
        EXPECT_LE(difference, tolerance) << a << " against " << b;
}

} // namespace

TEST(QorfxViewGLTest, AScriptedSessionSavesWhatRenderDrawsAndADocumentOfItsValues)
{
    QorTempDir dir;
    const std::string effect = WriteViewMaterial(dir);
    const std::string script =
        dir.Write("script.txt", "# values first, then the other technique\n"
                                "set Gain 0.5\nset Tint 0.9,0.3,0.1\n"
                                "png " +
                                    dir.File("view.png") + "\nzpk " + dir.File("view.zpk") + "\ntechnique Red\npng " +
                                    dir.File("red.png") + "\nreset Gain\nzpk " + dir.File("reset.zpk") + "\nquit\n");
    const QorfxResult viewed = RunQorfx("view " + effect + " --size 96x96 --script " + script, "timeout 60 ");
    ASSERT_EQ(viewed.exitCode, 0) << viewed.err;
    const QorfxResult rendered = RunQorfx(
        "render " + effect + " --size 96x96 --set Gain=0.5 --set Tint=0.9,0.3,0.1 -o " + dir.File("render.png"));
    ASSERT_EQ(rendered.exitCode, 0) << rendered.err;
    ExpectSamePicture(dir.File("view.png"), dir.File("render.png"), 0.01);
    const auto red = Read(dir.File("red.png")).At(48, 48);
    EXPECT_GT(red[0], 200);
    EXPECT_LT(red[1] + red[2], 30);

    const nlohmann::json stored = StoredValues(dir.File("view.zpk"), dir.Path());
    EXPECT_FLOAT_EQ(stored["Gain"].get<float>(), 0.5f) << stored;
    EXPECT_EQ(stored["Tint"], (nlohmann::json{0.9, 0.3, 0.1})) << stored;
    const nlohmann::json reset = StoredValues(dir.File("reset.zpk"), dir.Path());
    EXPECT_FLOAT_EQ(reset["Gain"].get<float>(), 1.0f) << "reset gives the default back";
    EXPECT_EQ(reset["Tint"], stored["Tint"]) << "and leaves the other values";
}

TEST(QorfxViewGLTest, TwinsSideBySideShareValuesByNameAndMatchRendersSheet)
{
    QorTempDir dir;
    const std::string twins = QorfxSample("materials/plastic.cgfx") + " " + QorfxSample("materials/plastic.glslfx");
    const std::string script =
        dir.Write("script.txt", "set Diffuse 0.1,0.7,0.2\nset Glossiness 12\npng " + dir.File("view.png") + "\nquit\n");
    const QorfxResult viewed = RunQorfx("view " + twins + " --size 64x64 --script " + script, "timeout 60 ");
    ASSERT_EQ(viewed.exitCode, 0) << viewed.err;
    const QorfxResult rendered = RunQorfx("render " + twins +
                                          " --size 64x64 --columns 2 --set Diffuse=0.1,0.7,0.2 "
                                          "--set Glossiness=12 -o " +
                                          dir.File("render.png"));
    ASSERT_EQ(rendered.exitCode, 0) << rendered.err;
    ExpectSamePicture(dir.File("view.png"), dir.File("render.png"), 0.01);
    const auto glsl = Read(dir.File("view.png")).At(96, 32);
    EXPECT_GT(glsl[1], glsl[0] + 40) << "the GLSL twin got the green set by name too";
}

TEST(QorfxViewGLTest, SavingTheEffectOrItsIncludeReloadsWithinASecondAndKeepsTheUsersValues)
{
    QorTempDir dir;
    const std::string effect = WriteViewMaterial(dir);
    const std::string script =
        dir.Write("script.txt", "set Gain 0.5\npng " + dir.File("first.png") + "\nsleep 1\nzpk " +
                                    dir.File("after.zpk") + "\npng " + dir.File("after.png") + "\nquit\n");
    const QorfxResult viewed = ViewWhileEditing("--size 64x64 " + effect + " --script " + script, dir.File("first.png"),
                                                [&] { dir.Write("view.cgfx", ViewEffect("0.9, 0.8, 0.1")); });
    ASSERT_EQ(viewed.exitCode, 0) << viewed.err;
    const nlohmann::json stored = StoredValues(dir.File("after.zpk"), dir.Path());
    EXPECT_EQ(stored["Tint"], (nlohmann::json{0.9, 0.8, 0.1})) << "the saved default came in";
    EXPECT_FLOAT_EQ(stored["Gain"].get<float>(), 0.5f) << "the user's value stayed";
    const auto before = Read(dir.File("first.png")).At(32, 32), after = Read(dir.File("after.png")).At(32, 32);
    EXPECT_GT(before[2], before[0]);
    EXPECT_GT(after[0], after[2]) << "the picture follows the save";

    // An include the effect names is watched too: shading to black shows.
    const QorfxResult included =
        ViewWhileEditing("--size 64x64 " + effect + " --script " + script, dir.File("first.png"),
                         [&] { dir.Write("shaders/ViewShade.cgh", ViewInclude("return colour * 0;")); });
    ASSERT_EQ(included.exitCode, 0) << included.err;
    const auto black = Read(dir.File("after.png")).At(32, 32);
    EXPECT_LT(black[0] + black[1] + black[2], 10);
}

TEST(QorfxViewGLTest, ABrokenSaveShowsItsLineAndKeepsTheLastPicture)
{
    QorTempDir dir;
    const std::string effect = WriteViewMaterial(dir);
    const std::string script = dir.Write("script.txt", "png " + dir.File("first.png") + "\nsleep 1\npng " +
                                                           dir.File("second.png") + "\nquit\n");
    const QorfxResult broken =
        ViewWhileEditing("--size 64x64 " + effect + " --script " + script, dir.File("first.png"), [&] {
            dir.Write("view.cgfx", ViewEffect("0.9, 0.8, 0.1", "return float4(Shade(Tint), 1) oops;"));
        });
    EXPECT_EQ(broken.exitCode, 0) << broken.err;
    EXPECT_NE(broken.err.find("view.cgfx(8) : error"), std::string::npos) << broken.err;
    ExpectSamePicture(dir.File("first.png"), dir.File("second.png"), 0);

    // The effect deleted, then a folder or a FIFO in its place: said, and the picture stays.
    for (const auto& replace : {+[](const std::string& file) { fs::create_directory(file); },
                                +[](const std::string& file) { mkfifo(file.c_str(), 0600); }}) {
        dir.Write("view.cgfx", ViewEffect());
        fs::remove(dir.File("first.png"));
        const QorfxResult replaced =
            ViewWhileEditing("--size 64x64 " + effect + " --script " + script, dir.File("first.png"), [&] {
                fs::remove(effect);
                replace(effect);
            });
        EXPECT_EQ(replaced.exitCode, 0) << replaced.err;
        EXPECT_NE(replaced.err.find("view.cgfx: cannot read the file"), std::string::npos) << replaced.err;
        ExpectSamePicture(dir.File("first.png"), dir.File("second.png"), 0);
        fs::remove(effect);
    }
}

TEST(QorfxViewGLTest, ValuesAScriptCannotSetEndTheWindowWithTheLine)
{
    QorTempDir dir;
    const std::string effect = WriteViewMaterial(dir);
    const struct
    {
        const char* action;
        const char* message;
    } cases[] = {
        {"set Gain nan", "script.txt:1: \"Gain\" takes finite numbers"},
        {"set Gain 5", "script.txt:1: \"Gain\" takes a value from 0 to 2, not 5"},
        {"set Tint 1,inf,0", "script.txt:1: \"Tint\" takes finite numbers"},
        {"set Shine 1", "script.txt:1: no material of the window has a parameter \"Shine\""},
        {"technique Blue", "or a technique name of view, not \"Blue\""},
    };
    for (const auto& bad : cases) {
        const std::string script =
            dir.Write("script.txt", std::string(bad.action) + "\npng " + dir.File("x.png") + "\n");
        const QorfxResult viewed = RunQorfx("view " + effect + " --size 32x32 --script " + script, "timeout 60 ");
        EXPECT_EQ(viewed.exitCode, 1) << bad.action;
        EXPECT_NE(viewed.err.find(bad.message), std::string::npos) << viewed.err;
    }
    const std::string script = dir.Write("script.txt", "png " + dir.File("no/such/folder/x.png") + "\nquit\n");
    const QorfxResult unwritable = RunQorfx("view " + effect + " --size 32x32 --script " + script, "timeout 60 ");
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_NE(unwritable.err.find("script.txt:1: "), std::string::npos) << unwritable.err;
    EXPECT_FALSE(fs::exists(dir.File("x.png"))) << "nothing written but what was asked";
}

TEST(QorfxViewGLTest, ARealWindowOrbitsUnderAMouseDragAndItsSliderFollowsTheMouse)
{
    QorTempDir dir;
    const std::string script =
        dir.Write("script.txt", "png " + dir.File("before.png") + "\nsleep 12\npng " + dir.File("after.png") + "\nzpk " +
                                    dir.File("after.zpk") + "\nquit\n");
    // The window stands at the corner of the virtual screen (no window manager): the
    // 200x200 cube at the left, the panel from x = 200, where Glossiness, the third
    // value of one material, has its slider on the row at y = 172. ImGui reads the mouse
    // once a frame, so each step waits long enough for a frame of a sanitized build on a
    // busy machine, and the script gives the drags time to end.
    const QorfxResult viewed = ViewWhileEditing(
        QorfxSample("materials/plastic.cgfx") + " --mesh cube --size 200x200 --script " + script,
        dir.File("before.png"), [] {
            EXPECT_EQ(std::system("xdotool mousemove 100 100 sleep 0.5 mousedown 1 sleep 0.5 mousemove 130 100 "
                                  "sleep 0.5 mousemove 160 110 sleep 0.5 mouseup 1"),
                      0);
            EXPECT_EQ(std::system("xdotool mousemove 340 172 sleep 0.5 mousedown 1 sleep 0.5 mousemove 300 172 "
                                  "sleep 0.5 mousemove 205 172 sleep 0.5 mouseup 1"),
                      0);
        });
    ASSERT_EQ(viewed.exitCode, 0) << viewed.err;
    const Picture before = Read(dir.File("before.png")), after = Read(dir.File("after.png"));
    ASSERT_TRUE(before.image && after.image);
    const auto moved = MeanDifference(before, after);
    EXPECT_GT(moved[0] + moved[1] + moved[2], 0.02) << "the cube turned";
    const nlohmann::json stored = StoredValues(dir.File("after.zpk"), QorfxSample(""));
    EXPECT_LT(stored["Glossiness"].get<float>(), 20.0f) << "dragged to the slider's left end; " << stored;
}
