// qorfx on hostile and unlucky input, without a display: what it refuses and what it
// leaves behind.
#include "QorfxRun.h"

#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Two texture parameters whose files share their last name.
const char* const kTwoTextures = R"(
sampler2D MapA < string File = "a/tex.png"; > = sampler_state { MinFilter = Linear; };
sampler2D MapB < string File = "b/tex.png"; > = sampler_state { MinFilter = Linear; };
float4x4 WorldViewProj : WORLDVIEWPROJECTION;
float4 vs(float4 p : POSITION) : POSITION { return mul(WorldViewProj, p); }
float4 fs(float2 uv : TEXCOORD0) : COLOR { return tex2D(MapA, uv) + tex2D(MapB, uv); }
technique t { pass p { VertexProgram = compile arbvp1 vs(); FragmentProgram = compile arbfp1 fs(); } }
)";

void WritePng(const std::string& path, unsigned size, unsigned char value)
{
    fs::create_directories(fs::path(path).parent_path());
    QorTexturePixelImage::Ptr image(QorTexturePixelImage::Create("png", QorPixelRGBA8, size, size));
    std::fill(image->GetPixels(), image->GetPixels() + image->GetByteCount(), value);
    ASSERT_EQ(image->WriteToFile("PNG", path.c_str()), 0);
}

bool IsRegularFile(const std::string& path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

// The id of a process that has ended.
pid_t DeadProcess()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

} // namespace

TEST(QorfxHostileTest, TextThatIsNotUtf8StillMakesValidJson)
{
    QorTempDir dir;
    const std::string effect = dir.Write("caf\xe9.cgfx", R"(
float4 Tint < string UIName = "Teint caf)" "\xe9" R"("; > = {1, 0, 0, 1};
float4x4 WorldViewProj : WORLDVIEWPROJECTION;
float4 vs(float4 p : POSITION) : POSITION { return mul(WorldViewProj, p); }
float4 fs() : COLOR { return Tint; }
technique t { pass p { VertexProgram = compile arbvp1 vs(); FragmentProgram = compile arbfp1 fs(); } }
)");
    const QorfxResult inspected = RunQorfx("inspect --json '" + effect + "'");
    ASSERT_EQ(inspected.exitCode, 0) << inspected.err;
    const nlohmann::json description = nlohmann::json::parse(inspected.out);
    EXPECT_EQ(description["effect"], "caf\xef\xbf\xbd") << "the byte became U+FFFD";
    EXPECT_EQ(description["parameters"][0]["uiName"], "Teint caf\xef\xbf\xbd");

    const QorfxResult packed = RunQorfx("pack '" + effect + "' -o " + dir.File("p.zpk"));
    ASSERT_EQ(packed.exitCode, 0) << packed.err;
    const QorfxResult unpacked = RunQorfx("unpack " + dir.File("p.zpk") + " -C " + dir.File("out"));
    ASSERT_EQ(unpacked.exitCode, 0) << unpacked.err;
    EXPECT_NO_THROW(nlohmann::json::parse(QorReadFile(dir.File("out/material.json"))));
}

TEST(QorfxHostileTest, AContactSheetTooLargeToHoldIsRefusedBeforeAnythingIsDrawn)
{
    QorTempDir dir;
    std::string inputs;
    for (int i = 0; i < 1000; ++i)
        inputs += " " + QorfxSample("materials/plastic.cgfx");
    const QorfxResult result = RunQorfx("render" + inputs + " --size 4096x4096 -o " + dir.File("sheet.png"));
    EXPECT_EQ(result.exitCode, 2) << result.err;
    EXPECT_NE(result.err.find("at most 268435456"), std::string::npos) << result.err;
}

TEST(QorfxHostileTest, TexturesArePackedOnlyWhenReadableAndUnderNamesRelativeToTheMaterial)
{
    QorTempDir dir;
    const std::string textured = QorfxSample("materials/textured.cgfx");
    dir.Write("bad.png", "not an image at all");
    const QorfxResult bad = RunQorfx("pack " + textured + " --texture ColorMap=" + dir.File("bad.png") + " -o " +
                                     dir.File("bad.zpk"));
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.err.find("bad.png: cannot read the texture"), std::string::npos) << bad.err;
    EXPECT_FALSE(IsRegularFile(dir.File("bad.zpk")));

    const QorfxResult good = RunQorfx("pack " + textured + " -o " + dir.File("good.zpk"));
    ASSERT_EQ(good.exitCode, 0) << good.err;
    QorResourceZPKContainer container;
    QorStreamer stream;
    std::string error;
    ASSERT_EQ(container.LoadFromFile(dir.File("good.zpk").c_str(), stream, &error), 0) << error;
    ASSERT_EQ(container.GetEntryCount(), 2);
    EXPECT_EQ(container.GetEntry(0)->name, QorString("../textures/checker.rgb")) << "a name that travels";
}

TEST(QorfxHostileTest, UnpackWritesEverythingOrNothingUnderUniqueNamesAndNeverThroughLinks)
{
    QorTempDir dir;
    // An effect named like the manifest, and two images whose names end alike.
    const std::string effect = dir.Write("m/material.json", kTwoTextures);
    WritePng(dir.File("m/a/tex.png"), 2, 10);
    WritePng(dir.File("m/b/tex.png"), 3, 20);
    const QorfxResult packed = RunQorfx("pack " + effect + " -o " + dir.File("p.zpk"));
    ASSERT_EQ(packed.exitCode, 0) << packed.err;
    const std::string outside = dir.Write("outside.txt", "precious");
    fs::create_directories(dir.File("out"));
    fs::create_symlink(outside, dir.File("out/material.json"));

    const QorfxResult unpacked = RunQorfx("unpack " + dir.File("p.zpk") + " -C " + dir.File("out"));
    ASSERT_EQ(unpacked.exitCode, 0) << unpacked.err;
    EXPECT_EQ(QorFolderContent(dir.File("out")),
              (std::vector<std::string>{"material-1.json", "material.json", "tex-1.png", "tex.png"}));
    EXPECT_EQ(QorReadFile(outside), "precious") << "the link was replaced, not written through";
    EXPECT_TRUE(IsRegularFile(dir.File("out/material.json")));
    EXPECT_NO_THROW(nlohmann::json::parse(QorReadFile(dir.File("out/material.json"))));
    EXPECT_NE(QorReadFile(dir.File("out/material-1.json")).find("MapB"), std::string::npos);
    QorTexturePixelImage::Ptr first(QorTexturePixelImage::ReadFromFile(dir.File("out/tex.png").c_str(), "a"));
    QorTexturePixelImage::Ptr second(QorTexturePixelImage::ReadFromFile(dir.File("out/tex-1.png").c_str(), "b"));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->GetWidth() + second->GetWidth(), 5u) << "both images, neither over the other";

    // A refused package, and one that loads but whose effect then fails: no folder at all.
    dir.Write("broken.zpk", "PK\x03\x04 not really a zip");
    const QorfxResult refused = RunQorfx("unpack " + dir.File("broken.zpk") + " -C " + dir.File("refused/out"));
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_FALSE(fs::exists(dir.File("refused")));
    const std::string palette = QorfxSample("effects/palette.cgfx");
    const QorfxResult withInclude = RunQorfx("--include QorPalette.fxh=" + QorfxSample("effects/QorPalette.fxh") +
                                             " pack " + palette + " -o " + dir.File("palette.zpk"));
    ASSERT_EQ(withInclude.exitCode, 0) << withInclude.err;
    const QorfxResult failing = RunQorfx("unpack " + dir.File("palette.zpk") + " -C " + dir.File("failing/out"));
    EXPECT_EQ(failing.exitCode, 1);
    EXPECT_FALSE(fs::exists(dir.File("failing")));
}

TEST(QorfxHostileTest, StaleTemporaryFoldersGoAndMessagesSayWhatIsWrongOnce)
{
    QorTempDir dir;
    const std::string dead = dir.File("qorfx-" + std::to_string(DeadProcess()) + "-abcdef");
    const std::string alive = dir.File("qorfx-" + std::to_string(getpid()) + "-abcdef");
    fs::create_directories(dead + "/ZPKResources");
    fs::create_directories(alive);
    const QorfxResult inspected =
        RunQorfx("inspect " + QorfxSample("materials/plastic.cgfx"), "env -u QorTemp TMPDIR=" + dir.Path() + " ");
    ASSERT_EQ(inspected.exitCode, 0) << inspected.err;
    EXPECT_EQ(QorFolderContent(dir.Path()), std::vector<std::string>{fs::path(alive).filename().string()})
        << "the dead run's folder is gone, the live one's kept, and this run's own removed";

    dir.Write("broken.zpk", "PK\x03\x04 not really a zip");
    const QorfxResult broken = RunQorfx("inspect " + dir.File("broken.zpk"));
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_EQ(broken.err.find("broken.zpk"), broken.err.rfind("broken.zpk")) << broken.err;
    const QorfxResult noOutput = RunQorfx("pack " + QorfxSample("materials/plastic.cgfx") + " -o ''");
    EXPECT_EQ(noOutput.exitCode, 2) << noOutput.err;
    const QorfxResult folder = RunQorfx("inspect " + dir.Path());
    EXPECT_EQ(folder.exitCode, 1);
    EXPECT_NE(folder.err.find("not a regular file"), std::string::npos) << folder.err;
}
