// qorfx without a display: inspect and the refusals of bad input.
#include "QorfxRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
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

TEST(QorfxTest, EverySubcommandRefusesBadInputWithOneLineAndAnExitCode)
{
    QorTempDir dir;
    const std::string out = dir.File("out.png");
    const std::string plastic = QorfxSample("materials/plastic.cgfx");
    const std::string textured = QorfxSample("materials/textured.cgfx");
    dir.Write("broken.zpk", "PK\x03\x04 not really a zip");
    dir.Write("not-sgi.rgb", "plain text, not an image");
    dir.Write("a-file", "");
    struct Case
    {
        std::string arguments;
        int exitCode;
        std::string says; ///< a part of the one line on standard error
    };
    const Case cases[] = {
        {"", 2, ""},
        {"frobnicate", 2, ""},
        {"--include nothing.fxh=" + dir.File("none.fxh") + " inspect " + plastic, 1, "cannot read the include file"},
        {"--include =x inspect " + plastic, 2, "--include takes NAME=FILE"},
        {"inspect", 2, ""},
        {"inspect " + dir.File("missing.cgfx"), 1, "missing.cgfx: no such effect file"},
        {"inspect " + QorfxSample("effects/broken.cgfx"), 1, "does not compile"},
        {"inspect " + dir.File("broken.zpk"), 1, "broken.zpk"},
        {"render " + plastic, 2, ""},
        {"render " + plastic + " -o " + dir.File("no-extension"), 2, "needs an image extension"},
        {"render " + plastic + " -o " + dir.File("sheet.nothing"), 2, "needs an image extension"},
        {"render " + plastic + " -o " + out + " --size 0x0", 2, "--size"},
        {"render " + plastic + " -o " + out + " --size 100000x100000", 2, "--size"},
        {"render " + plastic + " -o " + out + " --size 12", 2, "--size"},
        {"render " + plastic + " -o " + out + " --size 10x10x", 2, "--size"},
        {"render " + plastic + " -o " + out + " --lights laser", 2, "--lights"},
        {"render " + plastic + " -o " + out + " --mesh torus", 2, "--mesh"},
        {"render " + plastic + " -o " + out + " --columns 0", 2, "--columns"},
        {"render " + plastic + " -o " + out + " --env bogus", 2, "--env"},
        {"pack " + plastic, 2, ""},
        {"pack " + dir.File("missing.cgfx") + " -o " + dir.File("p.zpk"), 1, "no such effect file"},
        {"pack " + plastic + " --set Diffuse -o " + dir.File("p.zpk"), 2, "--set takes NAME=VALUE"},
        {"pack " + plastic + " --set Shine=1 -o " + dir.File("p.zpk"), 1, "no parameter \"Shine\""},
        {"pack " + plastic + " --set Glossiness=1,2 -o " + dir.File("p.zpk"), 1, "takes one number"},
        {"pack " + textured + " --texture ColorMap=" + dir.File("none.png") + " -o " + dir.File("p.zpk"), 1,
         "not found"},
        {"unpack " + dir.File("broken.zpk"), 2, ""},
        {"unpack " + dir.File("missing.zpk") + " -C " + dir.File("u"), 1, "missing.zpk"},
        {"unpack " + dir.File("broken.zpk") + " -C " + dir.File("u"), 1, "broken.zpk"},
        {"unpack " + dir.File("broken.zpk") + " -C " + dir.File("a-file/u"), 1, "broken.zpk"},
        {"sgi " + dir.File("none.rgb") + " -o " + out, 1, "not a readable SGI image"},
        {"sgi " + dir.File("not-sgi.rgb") + " -o " + out, 1, "not a readable SGI image"},
        {"sgi " + QorfxSample("textures/checker.rgb") + " -o " + dir.File("no-extension"), 2, "image extension"},
        {"sgi " + QorfxSample("textures/checker.rgb") + " -o " + dir.File("checker.nothing"), 2, "image extension"},
        {"sgi " + QorfxSample("textures/checker.rgb") + " -o " + dir.File("no/such/folder/x.png"), 1,
         "cannot be created"},
    };
    for (const Case& c : cases) {
        const QorfxResult result = RunQorfx(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.arguments << "\n" << result.err;
        EXPECT_NE(result.err.find(c.says), std::string::npos) << c.arguments << "\n" << result.err;
    }
    EXPECT_FALSE(Exists(out)) << "no output after a failure";
    EXPECT_FALSE(Exists(dir.File("p.zpk"))) << "no package after a failure";

    const QorfxResult broken = RunQorfx("inspect --json " + QorfxSample("effects/broken.cgfx"));
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_NE(nlohmann::json::parse(broken.out)["errors"].get<std::string>().find("undefinedScale"), std::string::npos);
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
}

TEST(QorfxTest, MissingIncludesAreNamedWithWhereTheyWereLookedFor)
{
    const QorfxResult result = RunQorfx("inspect " + QorfxData("missing_include.cgfx"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("does not compile"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("include \"lighting.cg\" was not found"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("--include lighting.cg=FILE"), std::string::npos) << result.err;

    QorTempDir dir;
    dir.Write("lighting.cg", "float4 Light() { return 1; }\n");
    EXPECT_EQ(RunQorfx("--include lighting.cg=" + dir.File("lighting.cg") + " inspect " +
                       QorfxData("missing_include.cgfx"))
                  .exitCode,
              0)
        << "registering it as the advice says is enough";
}

TEST(QorfxTest, EffectsAreFoundWhereTheLibraryFindsThem)
{
    QorTempDir graphic;
    graphic.Write("shaders/only_here.cgfx", QorReadFile(QorfxSample("materials/plastic.cgfx")));
    const std::string paths = graphic.Path() + ";" + QOR_SAMPLES_DIR; // the lighting include
    QorScopedEnv graphicPath("QorGraphicPath", paths.c_str());
    QorScopedEnv startup("QorStartupPath", nullptr);
    const QorfxResult result = RunQorfx("inspect --json only_here.cgfx");
    ASSERT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json description = nlohmann::json::parse(result.out);
    EXPECT_EQ(description["file"], graphic.File("shaders/only_here.cgfx")) << "it says where the file was found";
    EXPECT_EQ(description["parameters"][0]["name"], "Diffuse");
    EXPECT_NE(RunQorfx("inspect elsewhere.cgfx").err.find("no such effect file"), std::string::npos);
}

namespace {

nlohmann::json InspectJson(const std::string& file)
{
    const QorfxResult result = RunQorfx("inspect --json " + file);
    EXPECT_EQ(result.exitCode, 0) << file << ": " << result.err;
    return result.exitCode == 0 ? nlohmann::json::parse(result.out) : nlohmann::json::object();
}

bool Lists(const nlohmann::json& list, const nlohmann::json& entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

} // namespace

TEST(QorfxTest, EachGlslTwinOffersTheParametersOfItsCgFXOriginal)
{
    for (const std::string material : {"plastic", "brushed_metal", "textured", "chrome", "toon"}) {
        SCOPED_TRACE(material);
        const nlohmann::json cg = InspectJson(QorfxSample(("materials/" + material + ".cgfx").c_str()));
        const nlohmann::json glsl = InspectJson(QorfxSample(("materials/" + material + ".glslfx").c_str()));
        const nlohmann::json& cgParameters = cg["parameters"];
        const nlohmann::json& glslParameters = glsl["parameters"];
        ASSERT_EQ(glslParameters.size(), cgParameters.size());
        for (size_t i = 0; i < cgParameters.size(); ++i) {
            const nlohmann::json& expected = cgParameters[i];
            const nlohmann::json& twin = glslParameters[i];
            for (const char* key : {"index", "name", "type", "value", "uiName", "widget"})
                EXPECT_EQ(twin[key], expected[key]) << expected["name"] << " " << key;
            if (expected["type"] == 1) {
                for (const char* key : {"min", "max", "step"})
                    EXPECT_EQ(twin[key], expected[key]) << expected["name"] << " " << key;
            }
            if (expected["type"] == 4) {
                EXPECT_EQ(twin["defaultFile"], expected["value"]) << "the CgFX File annotation";
            }
        }

        EXPECT_EQ(glsl["techniques"].size(), 1u);
        EXPECT_TRUE(glsl["hasLightArray"].get<bool>());
        EXPECT_EQ(glsl["interfaces"], nlohmann::json::array());
        const nlohmann::json& semantics = glsl["semantics"];
        EXPECT_TRUE(Lists(semantics, {{"parameter", "WorldViewProj"}, {"semantic", "WORLDVIEWPROJECTION"}}));
        EXPECT_TRUE(Lists(semantics, {{"parameter", "EnvAmbient"}, {"semantic", "GLOBALAMBIENTCOLOR"}}));
        EXPECT_TRUE(Lists(semantics, {{"parameter", "EnvironmentMap"}, {"semantic", "AUTOMATICENVIRONMENTMAP"}}));
        for (const nlohmann::json& bound : semantics)
            EXPECT_NE(bound["semantic"], "DIFFUSE") << "a user colour would be lost to the renderer";
        EXPECT_TRUE(Lists(glsl["namedUniforms"], {{"name", "numLights"}, {"used", true}}));
        EXPECT_TRUE(Lists(glsl["namedUniforms"], {{"name", "lightData_LightAmbient"}, {"used", false}}));
        EXPECT_EQ(glsl["namedUniforms"].size(), 12u) << "the include's light uniforms";
        const nlohmann::json& warnings = glsl["loadWarnings"];
        EXPECT_EQ(std::count_if(warnings.begin(), warnings.end(),
                                [](const nlohmann::json& line) {
                                    return line.get<std::string>().rfind("Warning : ", 0) == 0;
                                }),
                  19);
        EXPECT_TRUE(Lists(warnings, "'''Note''' : lightData_LightAmbient not connected to any target (shader)"));
        EXPECT_TRUE(Lists(glsl["loadMessages"], "Including file QorLighting.glslfxh..."));
    }

    const QorfxResult text = RunQorfx("inspect " + QorfxSample("materials/textured.glslfx"));
    EXPECT_EQ(text.exitCode, 0) << text.err;
    for (const char* shown : {"default file checker.rgb", "named uniforms:", "load warnings:", "load messages:"})
        EXPECT_NE(text.out.find(shown), std::string::npos) << shown << "\n" << text.out;
}

TEST(QorfxTest, InspectShowsSharedBuffersAndTexturesOfSamplers)
{
    const nlohmann::json description = InspectJson(QorfxData("shared_frame.glslfx"));
    const nlohmann::json& buffers = description["constantBuffers"];
    ASSERT_EQ(buffers.size(), 2u) << description.dump(1);
    EXPECT_EQ(buffers[0]["name"], "Frame");
    EXPECT_EQ(buffers[0]["global"], true);
    EXPECT_EQ(buffers[0]["members"][0]["name"], "Fog");
    EXPECT_EQ(buffers[0]["members"][0]["used"], true);
    EXPECT_EQ(buffers[0]["members"][1]["used"], false) << "Time is read by no code";
    EXPECT_EQ(buffers[1]["global"], false);
    const nlohmann::json& albedo = description["parameters"][0];
    EXPECT_EQ(albedo["name"], "Albedo");
    EXPECT_EQ(albedo["type"], 4);
    EXPECT_EQ(albedo["defaultFile"], "checker.rgb") << "from the texture resource the pass assigns";

    const QorfxResult text = RunQorfx("inspect " + QorfxData("shared_frame.glslfx"));
    EXPECT_EQ(text.exitCode, 0) << text.err;
    EXPECT_NE(text.out.find("  Frame (global: shared with other effects): Fog Time\n"), std::string::npos) << text.out;
}

TEST(QorfxTest, EachInputGetsTheImplementationItsExtensionNames)
{
    // The process's own choice (ShaderVersion) does not turn a CgFX file into a GLSL effect.
    QorScopedEnv version("ShaderVersion", "QRFX");
    EXPECT_EQ(InspectJson(QorfxSample("materials/toon.cgfx"))["interfaces"][0]["name"], "environment");
    EXPECT_EQ(InspectJson(QorfxSample("materials/toon.glslfx"))["techniques"][0]["name"], "ToonGLSL");
}

TEST(QorfxTest, GlslEffectsThatDoNotLoadSayWhereAndWhy)
{
    const QorfxResult undeclared = RunQorfx("inspect " + QorfxData("undeclared.glslfx"));
    EXPECT_EQ(undeclared.exitCode, 1);
    EXPECT_NE(undeclared.err.find("undeclared.glslfx: the effect does not compile"), std::string::npos)
        << undeclared.err;
    EXPECT_NE(undeclared.err.find("undeclared.glslfx(5): error: pass 'p0' of technique 'T', fragment stage: 'Gian' : undeclared identifier"),
              std::string::npos)
        << undeclared.err;
    EXPECT_EQ(undeclared.out, "") << "nvFX prints nothing on standard output";
    const QorfxResult json = RunQorfx("inspect --json " + QorfxData("undeclared.glslfx"));
    EXPECT_NE(nlohmann::json::parse(json.out)["errors"].get<std::string>().find("'Gian'"), std::string::npos);

    const QorfxResult missing = RunQorfx("inspect " + QorfxData("missing_include.glslfx"));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("missing_include.glslfx(2): error: include 'QorNowhere.glslfxh' not found"),
              std::string::npos)
        << missing.err;
    EXPECT_NE(missing.err.find("include \"QorNowhere.glslfxh\" was not found: looked for as it stands and under shaders/"),
              std::string::npos)
        << missing.err;

    const QorfxResult scene = RunQorfx("inspect " + QorfxData("scene_level.glslfx"));
    EXPECT_EQ(scene.exitCode, 1);
    EXPECT_NE(scene.err.find("scene_level.glslfx(4): error: reflection: scene-level block 'RenderTexture' is not "
                             "supported by a material effect"),
              std::string::npos)
        << scene.err;

    QorTempDir dir;
    const QorfxResult packed = RunQorfx("pack " + QorfxSample("materials/plastic.glslfx") + " -o " + dir.File("p.zpk"));
    EXPECT_EQ(packed.exitCode, 1);
    EXPECT_NE(packed.err.find("not written to streams"), std::string::npos) << packed.err;
    EXPECT_FALSE(Exists(dir.File("p.zpk")));
}
