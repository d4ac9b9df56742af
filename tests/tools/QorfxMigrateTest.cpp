// qorfx migrate: CgFX-era documents read into GLSL materials, reported and written.
#include "QorfxRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

using nlohmann::json;

namespace {

// A CgFX effect with three user values, and the text of its GLSL twin, in which "Amount"
// became a colour and "Extra" is gone.
const char* const kShiftCgfx = R"(
float4x4 WorldViewProj : WORLDVIEWPROJECTION;
float Amount = 0.5;
float4 Tint = {1, 0.5, 0.25, 1};
float Extra = 3;
float4 VS(float4 p : POSITION) : POSITION { return mul(WorldViewProj, p); }
float4 PS() : COLOR { return Tint * Amount * Extra; }
technique T { pass p0 { VertexProgram = compile arbvp1 VS(); FragmentProgram = compile arbfp1 PS(); } }
)";
const char* const kShiftGlslfx = R"(
uniform vec3 Amount = {0.5, 0.5, 0.5};
uniform vec4 Tint = {1.0, 0.5, 0.25, 1.0};
GLSLShader VS { void main() { gl_Position = ftransform(); } }
GLSLShader FS { void main() { gl_FragColor = Tint * vec4(Amount, 1.0); } }
Technique T { Pass p0 { VertexProgram = VS; FragmentProgram = FS; } }
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

TEST(QorfxMigrateTest, WhatCannotComeOverWholeIsReportedAndNotWritten)
{
    QorTempDir dir;
    std::ofstream(dir.File("shift.cgfx")) << kShiftCgfx;
    std::ofstream(dir.File("shift.glslfx")) << kShiftGlslfx;
    std::ofstream(dir.File("lonely.cgfx")) << kShiftCgfx; // no twin
    Pack(dir.File(""), "shift.cgfx", "--set Amount=0.75 --set Tint=0.1,0.2,0.3,1", dir.File("shift.zpk"));
    Pack(dir.File(""), "lonely.cgfx", "", dir.File("lonely.zpk"));
    Pack(QorfxSample("materials"), "plastic.cgfx", "", dir.File("plastic.zpk"));
    std::ofstream(dir.File("garbage.zpk")) << "not a zip archive";
    const std::string whole = QorReadFile(dir.File("plastic.zpk"));
    std::ofstream(dir.File("cut.zpk"), std::ios::binary) << whole.substr(0, whole.size() / 2);

    const QorfxResult run = RunQorfx("migrate --json -o " + dir.File("out") + " " + dir.File("garbage.zpk") + " " +
                                         dir.File("cut.zpk") + " " + dir.File("shift.zpk") + " " +
                                         dir.File("lonely.zpk") + " " + dir.File("plastic.zpk"),
                                     SearchPaths(dir));
    EXPECT_EQ(run.exitCode, 1) << run.err;
    const json report = json::parse(run.out);
    ASSERT_EQ(report.size(), 5u);
    for (int unreadable : {0, 1}) {
        EXPECT_TRUE(report[unreadable].contains("error")) << unreadable;
        EXPECT_EQ(report[unreadable]["migrated"], false);
    }
    const json& shift = report[2]["materials"][0];
    EXPECT_EQ(shift["loaded"], true);
    EXPECT_EQ((*Entry(shift["carried"], "Tint"))["value"], json({0.1, 0.2, 0.3, 1.0}));
    ASSERT_TRUE(Entry(shift["lost"], "Amount"));
    EXPECT_EQ((*Entry(shift["lost"], "Amount"))["reason"], "type");
    EXPECT_EQ((*Entry(shift["lost"], "Amount"))["value"], 0.75);
    EXPECT_EQ((*Entry(shift["lost"], "Extra"))["reason"], "missing");
    const json& lonely = report[3]["materials"][0];
    EXPECT_EQ(lonely["loaded"], false);
    EXPECT_TRUE(lonely["file"].is_null());
    EXPECT_EQ(lonely["lost"].size(), 3u) << "every stored value is lost with the effect";
    EXPECT_EQ(report[4]["migrated"], true) << "the documents after a failure are read";

    EXPECT_TRUE(std::filesystem::exists(dir.File("out/plastic/material.json")));
    for (const char* unwritten : {"out/shift", "out/lonely", "out/garbage", "out/cut"})
        EXPECT_FALSE(std::filesystem::exists(dir.File(unwritten))) << unwritten;

    const QorfxResult text = RunQorfx("migrate " + dir.File("lonely.zpk"), SearchPaths(dir));
    EXPECT_NE(text.out.find("not found on the search paths"), std::string::npos) << text.out;

    const std::pair<std::string, const char*> usage[] = {
        {"migrate", "required"},
        {"migrate " + dir.File("plastic.zpk") + " --preview " + dir.File("sheet"), "image extension"},
        {"migrate " + dir.File("plastic.zpk") + " -o ''", "-o takes a folder"},
        {"migrate " + dir.File("plastic.zpk") + " --size 0x9", "--size takes"},
    };
    for (const auto& [arguments, message] : usage) {
        const QorfxResult refused = RunQorfx(arguments);
        EXPECT_EQ(refused.exitCode, 2) << arguments;
        EXPECT_NE(refused.err.find(message), std::string::npos) << arguments << ": " << refused.err;
    }
}
