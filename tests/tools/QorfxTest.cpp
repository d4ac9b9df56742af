// qorfx without a display: inspect and the refusals of bad input.
#include "QorfxRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>

namespace {

struct ExpectedParameter
{
    const char* name;
    int type;
};

bool Exists(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

} // namespace

TEST(QorfxTest, InspectJsonDescribesEachSample)
{
    const std::vector<std::pair<const char*, std::vector<ExpectedParameter>>> samples = {
        {"materials/plastic.cgfx", {{"Diffuse", 2}, {"Specular", 2}, {"Glossiness", 1}}},
        {"materials/brushed_metal.cgfx",
         {{"MetalColor", 2}, {"RoughnessAlong", 1}, {"RoughnessAcross", 1}, {"BrushDirection", 6}}},
        {"materials/textured.cgfx", {{"ColorMap", 4}, {"Tiling", 1}}},
        {"materials/chrome.cgfx", {{"Tint", 2}, {"Fresnel", 1}}},
        {"materials/toon.cgfx", {{"BaseColor", 2}, {"Bands", 1}}},
    };
    for (const auto& [file, expected] : samples) {
        const QorfxResult result = RunQorfx("inspect --json " + QorfxSample(file));
        ASSERT_EQ(result.exitCode, 0) << file << ": " << result.err;
        const nlohmann::json description = nlohmann::json::parse(result.out);
        const nlohmann::json& parameters = description["parameters"];
        ASSERT_EQ(parameters.size(), expected.size()) << file;
        for (size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(parameters[i]["index"], i + 1);
            EXPECT_EQ(parameters[i]["name"], expected[i].name) << file;
            EXPECT_EQ(parameters[i]["type"], expected[i].type) << file;
        }
        EXPECT_EQ(description["interfaces"][0]["name"], "environment") << file;
        EXPECT_TRUE(description["hasLightArray"].get<bool>()) << file;
    }

    const nlohmann::json plastic = nlohmann::json::parse(RunQorfx("inspect --json " + QorfxSample("materials/plastic.cgfx")).out);
    const nlohmann::json& glossiness = plastic["parameters"][2];
    EXPECT_EQ(glossiness["value"], 32.0);
    EXPECT_EQ(glossiness["min"], 1.0);
    EXPECT_EQ(glossiness["max"], 128.0);
    EXPECT_EQ(glossiness["widget"], "Slider");
    EXPECT_EQ(glossiness["uiName"], "Glossiness");
    EXPECT_EQ(plastic["techniques"][1]["name"], "PlasticARB");
    bool boundWvp = false;
    for (const auto& bound : plastic["semantics"])
        boundWvp |= bound["semantic"] == "WORLDVIEWPROJECTION" && bound["parameter"] == "WorldViewProj";
    EXPECT_TRUE(boundWvp);

    const QorfxResult text = RunQorfx("inspect " + QorfxSample("materials/toon.cgfx"));
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_NE(text.out.find("ToonNV40"), std::string::npos);
    EXPECT_NE(text.out.find("Bands"), std::string::npos);
}

TEST(QorfxTest, BadInputGetsOneLineAndAnExitCode)
{
    QorTempDir dir;
    const std::string out = dir.File("out.png");

    QorfxResult missing = RunQorfx("inspect " + dir.File("missing.cgfx"));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("missing.cgfx: cannot read the file"), std::string::npos) << missing.err;

    QorfxResult broken = RunQorfx("inspect --json " + QorfxSample("effects/broken.cgfx"));
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_NE(broken.err.find("does not compile"), std::string::npos);
    EXPECT_NE(nlohmann::json::parse(broken.out)["errors"].get<std::string>().find("undefinedScale"), std::string::npos);

    EXPECT_EQ(RunQorfx("").exitCode, 2);
    EXPECT_EQ(RunQorfx("frobnicate").exitCode, 2);
    EXPECT_EQ(RunQorfx("render " + QorfxSample("materials/plastic.cgfx")).exitCode, 2) << "no output named";
    for (const char* size : {"0x0", "100000x100000", "12", "10x10x"}) {
        const QorfxResult result =
            RunQorfx("render " + QorfxSample("materials/plastic.cgfx") + " -o " + out + " --size " + size);
        EXPECT_EQ(result.exitCode, 2) << size;
        EXPECT_NE(result.err.find("--size"), std::string::npos) << size;
    }
    EXPECT_EQ(RunQorfx("render " + QorfxSample("materials/plastic.cgfx") + " -o " + out + " --lights laser").exitCode, 2);
    EXPECT_EQ(RunQorfx("render " + QorfxSample("materials/plastic.cgfx") + " -o " + out + " --mesh torus").exitCode, 2);
    EXPECT_EQ(RunQorfx("--include nothing.fxh=" + dir.File("none.fxh") + " inspect " +
                       QorfxSample("effects/palette.cgfx"))
                  .exitCode,
              1);
    EXPECT_EQ(RunQorfx("sgi " + dir.File("none.rgb") + " -o " + out).exitCode, 1);
    EXPECT_FALSE(Exists(out)) << "no output after a failure";
}

TEST(QorfxTest, InMemoryIncludeFromTheCommandLine)
{
    const QorfxResult result = RunQorfx("--include QorPalette.fxh=" + QorfxSample("effects/QorPalette.fxh") +
                                        " inspect --json " + QorfxSample("effects/palette.cgfx"));
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(nlohmann::json::parse(result.out)["parameters"][0]["name"], "Position");
}

TEST(QorfxTest, SgiConversionMatchesTheSource)
{
    QorTempDir dir;
    const QorfxResult result = RunQorfx("sgi " + QorfxSample("textures/checker.rgb") + " -o " + dir.File("checker.png"));
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const std::string png = QorReadFile(dir.File("checker.png"));
    ASSERT_GT(png.size(), 8u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
}

TEST(QorfxTest, PackUnpackAndInspectKeepTheMaterial)
{
    QorTempDir dir;
    QorScopedEnv includes("QorGraphicPath", QOR_SAMPLES_DIR);
    const std::string package = dir.File("checker.zpk");
    const QorfxResult packed =
        RunQorfx("pack " + QorfxSample("materials/textured.cgfx") + " --set Tiling=3 -o " + package);
    ASSERT_EQ(packed.exitCode, 0) << packed.err;
    const QorfxResult listing = RunQorfx("inspect --json " + package);
    ASSERT_EQ(listing.exitCode, 0) << listing.err;
    const nlohmann::json description = nlohmann::json::parse(listing.out);
    EXPECT_EQ(description["parameters"][1]["name"], "Tiling");
    EXPECT_EQ(description["parameters"][1]["value"], 3.0);

    QorTempDir unzipOut;
    ASSERT_EQ(std::system(("unzip -l " + package + " >" + unzipOut.File("list")).c_str()), 0);
    const std::string entries = QorReadFile(unzipOut.File("list"));
    for (const char* entry : {"manifest.json", "stream.bin", "effects/", "images/"})
        EXPECT_NE(entries.find(entry), std::string::npos) << entry;

    const QorfxResult unpacked = RunQorfx("unpack " + package + " -C " + dir.File("out"));
    ASSERT_EQ(unpacked.exitCode, 0) << unpacked.err;
    EXPECT_NE(QorReadFile(dir.File("out/textured.cgfx")).find("technique TexturedARB"), std::string::npos);
    EXPECT_EQ(QorReadFile(dir.File("out/checker.png")).substr(1, 3), "PNG");
    EXPECT_EQ(nlohmann::json::parse(QorReadFile(dir.File("out/material.json")))["parameters"][1]["value"], 3.0);

    dir.Write("broken.zpk", "PK\x03\x04 not really a zip");
    const QorfxResult corrupt = RunQorfx("inspect " + dir.File("broken.zpk"));
    EXPECT_EQ(corrupt.exitCode, 1);
    EXPECT_NE(corrupt.err.find("broken.zpk"), std::string::npos);
    EXPECT_EQ(RunQorfx("pack " + QorfxSample("materials/textured.cgfx") + " --texture ColorMap=" +
                       dir.File("none.png") + " -o " + dir.File("none.zpk"))
                  .exitCode,
              1);
    EXPECT_TRUE(QorReadFile(dir.File("none.zpk")).empty()) << "no package after a failure";
}
