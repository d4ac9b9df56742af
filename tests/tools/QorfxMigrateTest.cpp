// qorfx migrate: CgFX-era documents read into GLSL materials, reported and written.
#include "QorfxRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

using nlohmann::json;

namespace {

// A CgFX effect with a user value of every kind, and its GLSL twin, where some changed:
// Tint4 and Uv became colours of other sizes, Gain a vec2, Count and Flag GLSL int and
// bool uniforms, Gone is not there, and Bare names no file.
const char* const kKindsCgfx = R"(
float4 Tint4 = {1, 0.5, 0.25, 0.8};
float2 Uv = {0.1, 0.2};
float Gain = 1;
float Shiny = 2;
int Count = 3;
bool Flag = true;
float Gone = 4;
sampler2D Tex;
sampler2D Bare;
float4 PS() : COLOR { return Tint4 * Gain * Shiny * Count * Flag * Gone + tex2D(Tex, Uv) + tex2D(Bare, Uv); }
technique T { pass p0 { FragmentProgram = compile arbfp1 PS(); } }
)";
const char* const kKindsGlslfx = R"(
uniform vec3 Tint4 = {1.0, 1.0, 1.0};
uniform vec4 Uv = {0.0, 0.0, 0.7, 0.9};
uniform vec2 Gain = {1.0, 1.0};
uniform float Shiny = 1.0;
uniform int Count = 1;
uniform bool Flag = false;
uniform sampler2D Tex;
uniform sampler2D Bare < defaultFile = "own.png"; >;
GLSLShader FS
{
    void main()
    {
        gl_FragColor = vec4(Tint4, 1.0) * Uv * float(Count) * Shiny * vec4(Gain, 1.0, 1.0) + texture2D(Tex, Uv.xy)
                     + texture2D(Bare, Uv.xy);
        if (Flag) discard;
    }
}
Technique T { Pass p0 { FragmentProgram = FS; } }
)";

std::string SearchPaths(const QorTempDir& dir)
{
    return "QorGraphicPath='" + dir.File("") + ";" + QorfxSample("materials") + ";" + QorfxSample("") + "' ";
}

// Packs `effect` (in `folder`, named as it stands there) with `sets` into `package`.
void Pack(const std::string& folder, const std::string& effect, const std::string& sets, const std::string& package)
{
    const QorfxResult packed = RunQorfx("pack " + effect + " " + sets + " -o " + package, "cd '" + folder + "' && ");
    ASSERT_EQ(packed.exitCode, 0) << packed.err;
}

const json* Entry(const json& list, const std::string& name)
{
    for (const json& entry : list)
        if (entry["name"] == name)
            return &entry;
    return nullptr;
}

} // namespace

TEST(QorfxMigrateTest, CarriesEveryValueAndWritesWhatARendererNeeds)
{
    QorTempDir dir;
    Pack(QorfxSample("materials"), "plastic.cgfx", "--set Diffuse=0.2,0.5,0.9 --set Glossiness=12",
         dir.File("plastic.zpk"));
    Pack(QorfxSample("materials"), "textured.cgfx", "--set Tiling=2", dir.File("textured.zpk"));
    const std::string before = QorReadFile(dir.File("plastic.zpk"));

    const QorfxResult run = RunQorfx("migrate --json -o " + dir.File("out") + " " + dir.File("plastic.zpk") + " " +
                                         dir.File("textured.zpk"),
                                     SearchPaths(dir));
    ASSERT_EQ(run.exitCode, 0) << run.err << run.out;
    EXPECT_NE(run.err.find("migrating 2/2"), std::string::npos) << "progress for several documents";
    const json report = json::parse(run.out);
    ASSERT_EQ(report.size(), 2u);
    const json& plastic = report[0]["materials"][0];
    EXPECT_EQ(plastic["stored"], "plastic.cgfx");
    EXPECT_EQ(plastic["effect"], "plastic.glslfx");
    EXPECT_EQ(plastic["file"], QorfxSample("materials/plastic.glslfx"));
    EXPECT_EQ(plastic["lost"], json::array());
    ASSERT_TRUE(Entry(plastic["carried"], "Diffuse"));
    EXPECT_EQ((*Entry(plastic["carried"], "Diffuse"))["value"], json({0.2, 0.5, 0.9, 1.0}));
    EXPECT_EQ((*Entry(plastic["carried"], "Glossiness"))["value"], 12.0);
    const json& textured = report[1]["materials"][0];
    ASSERT_EQ(textured["textures"].size(), 1u);
    EXPECT_EQ(textured["textures"][0]["name"], "ColorMap");

    // The folders hold what unpack writes, minus the CgFX source: values and textures.
    const json written = json::parse(QorReadFile(dir.File("out/plastic/material.json")));
    EXPECT_EQ(written["file"], QorfxSample("materials/plastic.glslfx"));
    EXPECT_EQ((*Entry(written["parameters"], "Diffuse"))["value"], json({0.2, 0.5, 0.9, 1.0}));
    EXPECT_FALSE(std::filesystem::exists(dir.File("out/plastic/plastic.cgfx")));
    const json texturedWritten = json::parse(QorReadFile(dir.File("out/textured/material.json")));
    EXPECT_EQ((*Entry(texturedWritten["parameters"], "ColorMap"))["value"], "checker.png");
    EXPECT_TRUE(std::filesystem::exists(dir.File("out/textured/checker.png")));
    EXPECT_EQ(QorReadFile(dir.File("plastic.zpk")), before) << "documents are only read";

    const QorfxResult text = RunQorfx("migrate " + dir.File("plastic.zpk"), SearchPaths(dir));
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_NE(text.out.find("plastic.cgfx -> plastic.glslfx"), std::string::npos) << text.out;
    EXPECT_EQ(text.out.find("Bad index"), std::string::npos) << "the library's own line stays off the report";
}

TEST(QorfxMigrateTest, EveryValueIsReportedAsWhatHappenedToIt)
{
    QorTempDir dir;
    std::ofstream(dir.File("kinds.cgfx")) << kKindsCgfx;
    std::ofstream(dir.File("lonely.cgfx")) << kKindsCgfx; // no twin anywhere
    dir.Write("twins/kinds.glslfx", kKindsGlslfx);
    std::filesystem::copy_file(QorfxSample("textures/checker.rgb"), dir.File("checker.rgb"));
    const std::string sets = "--set Tint4=0.9,0.8,0.7,0.6 --set Uv=0.3,0.4 --set Shiny=5 --set Count=7 "
                             "--set Tex=checker.rgb";
    Pack(dir.File(""), "kinds.cgfx", sets, dir.File("kinds.zpk"));
    Pack(QorfxSample(""), dir.File("lonely.cgfx"), sets, dir.File("lonely.zpk")); // named by its whole path

    const QorfxResult run = RunQorfx("migrate --json --path " + dir.File("twins") + " " + dir.File("kinds.zpk") +
                                     " " + dir.File("lonely.zpk"));
    EXPECT_EQ(run.exitCode, 1) << run.err;
    const json report = json::parse(run.out);
    const json& kinds = report[0]["materials"][0];
    EXPECT_EQ(kinds["file"], dir.File("twins/kinds.glslfx")) << "found through --path";
    EXPECT_EQ(kinds["stored"], "kinds.cgfx") << "the package carries no folder of this machine";
    EXPECT_EQ(kinds["storedNames"], 9);
    EXPECT_EQ(kinds["storedValues"], 9);
    const struct
    {
        const char* name;
        const char* list;
        const char* reason;
        json migrated; // what the GLSL material holds after, for carried values
    } expected[] = {
        {"Tint4", "carried", "narrowed", {0.9, 0.8, 0.7}},
        {"Uv", "carried", "widened", {0.3, 0.4, 0.7, 0.9}},
        {"Shiny", "carried", "", 5.0},
        {"Tex", "carried", "", nullptr},
        {"Bare", "kept", "no-image", nullptr},
        {"Gain", "lost", "type", nullptr},
        {"Count", "lost", "not-user-parameter", nullptr},
        {"Flag", "lost", "not-user-parameter", nullptr},
        {"Gone", "lost", "no-parameter", nullptr},
    };
    for (const auto& value : expected) {
        const json* entry = Entry(kinds[value.list], value.name);
        ASSERT_TRUE(entry) << value.name << " in " << value.list << ": " << kinds.dump();
        EXPECT_EQ(entry->value("reason", ""), value.reason) << value.name;
        if (!value.migrated.is_null()) {
            EXPECT_EQ((*entry)["migrated"], value.migrated) << value.name;
        }
    }
    EXPECT_NE((*Entry(kinds["lost"], "Count"))["why"].get<std::string>().find("GLSL int and bool uniforms are not"),
              std::string::npos);
    EXPECT_EQ((*Entry(kinds["carried"], "Tint4"))["why"], "alpha dropped: the GLSL parameter is a vec3");

    // Without the twin nothing was loaded, and the report says so of every value.
    const json& lonely = report[1]["materials"][0];
    EXPECT_EQ(lonely["stored"], "lonely.cgfx") << "named where the search found it, not by this machine's path";
    EXPECT_EQ(lonely["loaded"], false);
    EXPECT_TRUE(lonely["file"].is_null());
    ASSERT_EQ(lonely["lost"].size(), 9u);
    for (const json& value : lonely["lost"])
        EXPECT_EQ(value["reason"], "no-effect") << value.dump();
    EXPECT_NE(lonely["problem"].get<std::string>().find("lonely.glslfx was not found on the search paths; add --path"),
              std::string::npos) << lonely["problem"];
    const QorfxResult text = RunQorfx("migrate " + dir.File("lonely.zpk"));
    EXPECT_NE(text.out.find("no GLSL effect was loaded: lonely.glslfx was not found"), std::string::npos) << text.out;
    EXPECT_EQ(text.out.find("cannot read the file"), std::string::npos) << text.out;
}

TEST(QorfxMigrateTest, DocumentsThatCannotBeReadAreSaidAndTheRestGoOn)
{
    QorTempDir dir;
    Pack(QorfxSample("materials"), "plastic.cgfx", "", dir.File("plastic.zpk"));
    std::ofstream(dir.File("garbage.zpk")) << "not a zip archive";
    const std::string whole = QorReadFile(dir.File("plastic.zpk"));
    std::ofstream(dir.File("cut.zpk"), std::ios::binary) << whole.substr(0, whole.size() / 2);

    const QorfxResult run = RunQorfx("migrate --json -o " + dir.File("out") + " " + dir.File("garbage.zpk") + " " +
                                         dir.File("cut.zpk") + " " + dir.File("plastic.zpk"),
                                     SearchPaths(dir));
    EXPECT_EQ(run.exitCode, 1) << run.err;
    const json report = json::parse(run.out);
    ASSERT_EQ(report.size(), 3u);
    for (int unreadable : {0, 1}) {
        EXPECT_TRUE(report[unreadable].contains("error")) << unreadable;
        EXPECT_EQ(report[unreadable]["migrated"], false);
    }
    EXPECT_EQ(report[2]["migrated"], true) << "the documents after a failure are read";
    EXPECT_TRUE(std::filesystem::exists(dir.File("out/plastic/material.json")));
    for (const char* unwritten : {"out/garbage", "out/cut"})
        EXPECT_FALSE(std::filesystem::exists(dir.File(unwritten))) << unwritten;

    // A folder the migration would write into that is a link is never written through.
    QorTempDir elsewhere;
    std::filesystem::create_directory(dir.File("linked"));
    std::filesystem::create_directory_symlink(elsewhere.Path(), dir.File("linked/plastic"));
    const QorfxResult linked = RunQorfx("migrate -o " + dir.File("linked") + " " + dir.File("plastic.zpk"),
                                        SearchPaths(dir));
    EXPECT_EQ(linked.exitCode, 1);
    EXPECT_NE(linked.err.find("symbolic link"), std::string::npos) << linked.err;
    EXPECT_EQ(linked.out.find("written to"), std::string::npos) << linked.out;
    EXPECT_TRUE(QorFolderContent(elsewhere.Path()).empty()) << "nothing in the link's target";

    const std::pair<std::string, const char*> usage[] = {
        {"migrate", "required"},
        {"migrate " + dir.File("plastic.zpk") + " --preview " + dir.File("sheet"), "image extension"},
        {"migrate " + dir.File("plastic.zpk") + " -o ''", "-o takes a folder"},
        {"migrate " + dir.File("plastic.zpk") + " --size 0x9", "--size takes"},
        {"migrate " + dir.File("plastic.zpk") + " --path " + dir.File("nowhere"), "no such folder"},
    };
    for (const auto& [arguments, message] : usage) {
        const QorfxResult refused = RunQorfx(arguments);
        EXPECT_EQ(refused.exitCode, 2) << arguments;
        EXPECT_NE(refused.err.find(message), std::string::npos) << arguments << ": " << refused.err;
    }
}
