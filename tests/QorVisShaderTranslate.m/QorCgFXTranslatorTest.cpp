// Translating CgFX effects into GLSL effects on the real Cg runtime and the real GLSL
// effect runtime (no display needed): the gallery and a corpus in the styles effects are
// written in, each translated, loaded and compared by the translator itself; here what
// each translation says and holds, and how bad effects fail.
#include "QorVisShaderTranslate/QorCgFXTranslator.h"

#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

std::string Corpus(const char* name)
{
    return std::string(QOR_TEST_DATA_DIR) + "/translate/" + name;
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// Whether one of `lines` holds `part`.
bool AnyHas(const std::vector<std::string>& lines, const std::string& part)
{
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) { return Has(line, part); });
}

std::string Joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

class QorCgFXTranslatorTest : public ::testing::Test
{
protected:
    QorRegistryGuard registry; // the samplers' texture records, handed back by the effects
    QorScopedEnv graphic{"QorGraphicPath", QOR_SAMPLES_DIR};
    QorScopedEnv startup{"QorStartupPath", nullptr};
    QorTempDir temp;
    QorScopedEnv tempFolder{"QorTemp", temp.Path().c_str()};
};

TEST_F(QorCgFXTranslatorTest, GalleryEffectsTranslateWholeWithTheirLightsAndEnvironment)
{
    const QorCgFXTranslator translator;
    for (const char* name : {"plastic", "brushed_metal", "textured", "chrome", "toon"}) {
        const QorCgFXTranslation translation =
            translator.TranslateFile(std::string(QOR_SAMPLES_DIR) + "/materials/" + name + ".cgfx");
        ASSERT_TRUE(translation.Whole()) << name << "\n" << Joined(translation.errors);
        EXPECT_TRUE(Has(translation.text, "ConstantBuffer QorLights")) << name;
        EXPECT_TRUE(Has(translation.text, "uniform samplerCube EnvironmentMap : AUTOMATICENVIRONMENTMAP;")) << name;
        EXPECT_TRUE(AnyHas(translation.notes, "light configuration \"point,dir\"")) << name;
    }
    const QorCgFXTranslation plastic = translator.TranslateFile(std::string(QOR_SAMPLES_DIR) + "/materials/plastic.cgfx");
    EXPECT_EQ(plastic.parameters, (std::vector<std::string>{"Diffuse", "Specular", "Glossiness"}));
    ASSERT_EQ(plastic.techniques.size(), 2u);
    EXPECT_EQ(plastic.techniques[1].name, "PlasticARB"); // an ARB technique retargets to GLSL too
    // The colour the user edits loses the semantic the GLSL road would take it away for.
    EXPECT_TRUE(Has(plastic.text, "uniform vec4 Diffuse < UIName = \"Diffuse colour\"; UIWidget = \"Color\"; > = "
                                  "{0.8, 0.1, 0.1, 1};"))
        << plastic.text;
    EXPECT_TRUE(AnyHas(plastic.notes, "'Diffuse' keeps no semantic \"DIFFUSE\""));
    // Light 0 is a point light, light 1 a directional one; matrices are read by rows.
    EXPECT_TRUE(Has(plastic.text, "lightData_LightPos[0].xyz - gl_TexCoord[0].xyz"));
    EXPECT_TRUE(Has(plastic.text, "lightData_LightDir[1]"));
    EXPECT_TRUE(Has(plastic.text, "dot(transpose(WorldViewProj)[0], gl_Vertex)"));
    // Techniques that compile to the same GLSL share their code pieces.
    EXPECT_TRUE(Has(plastic.text, "Technique PlasticARB\n{\n    Pass p0\n    {\n        VertexProgram = Plastic_p0_Vertex;"));

    QorCgFXTranslator::Options colour;
    colour.lightCode = 2; // one spot light
    colour.cubeEnvironment = false;
    const QorCgFXTranslation spot =
        QorCgFXTranslator(colour).TranslateFile(std::string(QOR_SAMPLES_DIR) + "/materials/plastic.cgfx");
    ASSERT_TRUE(spot.Whole()) << Joined(spot.errors);
    EXPECT_TRUE(Has(spot.text, "lightData_lightData_LightRadialOuterCone[0]"));
    EXPECT_FALSE(Has(spot.text, "lightData_LightPos[1]"));
    EXPECT_FALSE(Has(spot.text, "= EnvironmentMap")); // the colour environment reads no cube
    EXPECT_TRUE(AnyHas(spot.notes, "colour environment"));
}

TEST_F(QorCgFXTranslatorTest, CorpusCarriesTypesDefaultsAnnotationsAndStates)
{
    const QorCgFXTranslator translator;
    const QorCgFXTranslation semantics = translator.TranslateFile(Corpus("semantics.cgfx"));
    ASSERT_TRUE(semantics.Whole()) << Joined(semantics.errors);
    EXPECT_EQ(semantics.parameters, (std::vector<std::string>{"BaseColor", "RimPower", "RimColor", "Steps", "UseRim"}));
    // An int and a bool are user floats, as the CgFX road offers them; the code reads them back.
    EXPECT_TRUE(Has(semantics.text, "uniform float Steps < UIMin = 1; UIMax = 16; > = 4;"));
    EXPECT_TRUE(Has(semantics.text, "uniform float UseRim = 1;"));
    EXPECT_TRUE(Has(semantics.text, "int(Steps)"));
    EXPECT_TRUE(Has(semantics.text, "bool(UseRim)"));
    EXPECT_TRUE(Has(semantics.text, "uniform mat4 WorldIT : WORLDINVERSETRANSPOSE;"));
    EXPECT_FALSE(Has(semantics.text, "description")); // a string the CgFX road hides, read by no program
    EXPECT_TRUE(Has(semantics.text, "DEPTH_FUNC = GL_LEQUAL;\n        CULL_FACE = false;"));

    const QorCgFXTranslation structures = translator.TranslateFile(Corpus("structures.cgfx"));
    ASSERT_TRUE(structures.Whole()) << Joined(structures.errors);
    EXPECT_EQ(structures.parameters, std::vector<std::string>{"Mix"});
    EXPECT_TRUE(Has(structures.text, "ConstantBuffer QorCgFXValues\n{\n    uniform float Stripe_width = 0.25;\n"
                                     "    uniform vec3 Stripe_color = {0.9, 0.2, 0.3};\n"
                                     "    uniform vec3 Palette[3] = {0.1, 0.5, 0.2, 0.8, 0.8, 0.1, 0.2, 0.3, 0.9};\n"
                                     "    uniform vec4 Warp[3] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};\n};"))
        << structures.text;

    const QorCgFXTranslation sampled = translator.TranslateFile(Corpus("sampled.cgfx"));
    ASSERT_TRUE(sampled.Whole()) << Joined(sampled.errors);
    EXPECT_TRUE(Has(sampled.text, "uniform sampler2D ColorMap < UIName = \"Colour map\"; File = \"checker.rgb\"; "
                                  "defaultFile = \"checker.rgb\"; >;"));
    EXPECT_TRUE(Has(sampled.text, "uniform vec2 Tiling < UIName = \"Tiling\"; UIMin = 1; UIMax = 8; > = {2, 2};"));

    // Cg lets two passes of a technique share a name; the GLSL effect format does not.
    const QorCgFXTranslation twice = translator.TranslateText(
        "twice.cgfx", "float4x4 WVP : WORLDVIEWPROJECTION;\nfloat4 C = {1, 0, 0, 1};\n"
                      "float4 VS(float4 p : POSITION) : POSITION { return mul(WVP, p); }\n"
                      "float4 PS() : COLOR { return C; }\nfloat4 Half() : COLOR { return C * 0.5; }\n"
                      "technique T { pass p { VertexProgram = compile arbvp1 VS(); FragmentProgram = compile arbfp1 PS(); }\n"
                      "pass p { VertexProgram = compile arbvp1 VS(); FragmentProgram = compile arbfp1 Half(); } }\n");
    ASSERT_TRUE(twice.Whole()) << Joined(twice.errors);
    EXPECT_TRUE(Has(twice.text, "    Pass p_1\n    {\n        VertexProgram = T_p_Vertex;\n"
                                "        FragmentProgram = T_p_1_Fragment;"))
        << twice.text;
}

TEST_F(QorCgFXTranslatorTest, UntranslatableTechniquesAndStatesAreNamedWithTheirPlace)
{
    const QorCgFXTranslator translator;
    const QorCgFXTranslation techniques = translator.TranslateFile(Corpus("techniques.cgfx"));
    ASSERT_TRUE(techniques.translated) << Joined(techniques.errors);
    EXPECT_FALSE(techniques.Whole());
    ASSERT_EQ(techniques.techniques.size(), 3u);
    EXPECT_TRUE(techniques.techniques[0].translated);
    EXPECT_EQ(techniques.techniques[0].passes, (std::vector<std::string>{"Base", "Glow"}));
    EXPECT_FALSE(techniques.techniques[1].translated);
    EXPECT_EQ(techniques.techniques[1].why, "techniques.cgfx(48): technique 'Fixed' is left out: pass 'p0' draws "
                                            "without programs (fixed function), which GLSL effects cannot");
    EXPECT_TRUE(techniques.techniques[2].translated);
    ASSERT_EQ(techniques.droppedStates.size(), 1u);
    EXPECT_EQ(techniques.droppedStates[0].state, "ColorMask");
    EXPECT_EQ(techniques.droppedStates[0].pass, "Glow");
    EXPECT_EQ(techniques.droppedStates[0].where, "techniques.cgfx(42)");
    EXPECT_TRUE(Has(techniques.text, "Technique Layered < Category = \"layers\"; >"));
    EXPECT_TRUE(Has(techniques.text, "Pass Glow < Blending = \"additive\"; >"));
    EXPECT_TRUE(Has(techniques.text, "BLEND = true;\n        BLEND_SRC = GL_ONE;\n        BLEND_DST = GL_ONE;\n"
                                     "        DEPTH_MASK = false;\n        POLYGON_OFFSET = { -1, -1 };"));
    EXPECT_TRUE(Has(techniques.text, "CULL_FACE_MODE = GL_BACK;"));
    EXPECT_FALSE(Has(techniques.text, "Technique Fixed"));

    const QorCgFXTranslation geometry = translator.TranslateFile(Corpus("geometry.cgfx"));
    ASSERT_TRUE(geometry.translated) << Joined(geometry.errors);
    ASSERT_EQ(geometry.techniques.size(), 2u);
    EXPECT_FALSE(geometry.techniques[0].translated);
    EXPECT_TRUE(Has(geometry.techniques[0].why, "geometry.cgfx(28): technique 'Facets' is left out"));
    EXPECT_TRUE(Has(geometry.techniques[0].why, "GL_EXT_geometry_shader4"));
    EXPECT_TRUE(geometry.techniques[1].translated);
}

TEST_F(QorCgFXTranslatorTest, BadEffectsFailWithTheirPlaceAndNoText)
{
    const QorCgFXTranslator translator;
    const std::string program = "float4x4 WVP : WORLDVIEWPROJECTION;\n%s\n"
                                "float4 VS(float4 p : POSITION) : POSITION { return mul(WVP, p); }\n"
                                "float4 PS() : COLOR { return float4(%s, 0, 0, 1); }\n"
                                "technique T { pass p { VertexProgram = compile arbvp1 VS(); "
                                "FragmentProgram = compile arbfp1 PS(); } }\n";
    const auto effect = [&program](const std::string& declaration, const std::string& read) {
        std::string text = program;
        text.replace(text.find("%s"), 2, declaration);
        text.replace(text.find("%s"), 2, read);
        return text;
    };
    struct Case
    {
        const char* what;
        std::string source;
        const char* error;
    };
    const Case cases[] = {
        {"does not compile", effect("float Gain = ;", "Gain"), "bad.cgfx(2) : error"},
        {"a GLSL keyword", effect("float sample = 0.5;", "sample"),
         "bad.cgfx(2): parameter 'sample' cannot keep its name in GLSL: 'sample' is a GLSL keyword or built-in"},
        {"a GLSL built-in", effect("float inverse = 0.5;", "inverse"), "'inverse' is a GLSL keyword or built-in"},
        {"a reserved name", effect("float A__B = 0.5;", "A__B"), "names holding \"__\" are reserved in GLSL"},
        {"a control character", effect("float Gain < string UIName = \"a\x01z\"; > = 1;", "Gain"),
         "annotation 'UIName' of 'Gain' holds the control character 1"},
        {"a string value", effect("string Label = \"x\";", "1"), "parameter 'Label' is a string"},
        {"a string too long", effect("float Gain < string UIName = \"" + std::string(70000, 'x') + "\"; > = 1;", "Gain"),
         "annotation 'UIName' of 'Gain' is a string of 70000 bytes; the GLSL effect format takes up to 65536"},
        {"a gl_ name", effect("float gl_Gain = 1;", "gl_Gain"), "names beginning with \"gl_\" belong to GLSL"},
    };
    for (const Case& c : cases) {
        const QorCgFXTranslation translation = translator.TranslateText("bad.cgfx", c.source);
        EXPECT_FALSE(translation.translated) << c.what;
        EXPECT_TRUE(translation.text.empty()) << c.what;
        EXPECT_TRUE(AnyHas(translation.errors, c.error)) << c.what << "\n" << Joined(translation.errors);
    }
    // Names that differ by a leading "_" keep apart (Cg writes them "_Gain" and "__Gain"),
    // also from Cg's own temporaries ("_ret_0" becomes "_ret_01" in Cg's code).
    const QorCgFXTranslation underscores = translator.TranslateText(
        "under.cgfx", effect("float Gain = 0.5;\nfloat _Gain = 0.25;\nfloat _ret_0 = 1;", "Gain + _Gain + _ret_0"));
    ASSERT_TRUE(underscores.Whole()) << Joined(underscores.errors);
    EXPECT_EQ(underscores.parameters, (std::vector<std::string>{"Gain", "_Gain", "_ret_0"}));
    // Bytes that are not UTF-8 travel as they are.
    const QorCgFXTranslation bytes =
        translator.TranslateText("bytes.cgfx", effect("float Gain < string UIName = \"G\xff\xfe\"; > = 1;", "Gain"));
    ASSERT_TRUE(bytes.Whole()) << Joined(bytes.errors);
    EXPECT_TRUE(Has(bytes.text, "UIName = \"G\xff\xfe\";"));
}

TEST_F(QorCgFXTranslatorTest, TenThousandParametersFailWithTheRuntimesLimit)
{
    std::string declarations, reads = "P0";
    for (int index = 0; index < 10000; ++index)
        declarations += "float P" + std::to_string(index) + " = " + std::to_string(index) + ";\n";
    const std::string source = "float4x4 WVP : WORLDVIEWPROJECTION;\n" + declarations +
                               "float4 VS(float4 p : POSITION) : POSITION { return mul(WVP, p); }\n"
                               "float4 PS() : COLOR { return float4(P1, P2, P9999, 1); }\n"
                               "technique T { pass p { VertexProgram = compile arbvp1 VS(); "
                               "FragmentProgram = compile arbfp1 PS(); } }\n";
    const QorCgFXTranslation translation = QorCgFXTranslator().TranslateText("many.cgfx", source);
    EXPECT_FALSE(translation.translated);
    EXPECT_TRUE(AnyHas(translation.errors, "many.glslfx(4104): error: more than 4096 uniforms in one effect"))
        << Joined(translation.errors);
}

} // namespace
