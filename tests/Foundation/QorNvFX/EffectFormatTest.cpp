// The ".glslfx" constructs one by one, loaded through nvFX::loadEffect without a display.
#include "NvFXTestSupport.h"

#include "nvFX/IAnnotationEx.h"
#include "nvFX/IPassEx.h"
#include "nvFX/ITechniqueEx.h"
#include "nvFX/IUniformEx.h"

#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

using NvFXTest::Load;
using nvFX::IUniform;

namespace {

std::string SampleText(const char* relative)
{
    return QorReadFile(std::string(QOR_SAMPLES_DIR) + "/" + relative);
}

// The ```glslfx blocks of docs/GLSLFX.md, in order.
std::vector<std::string> DocumentedEffects()
{
    const std::string page = QorReadFile(std::string(QOR_SAMPLES_DIR) + "/../docs/GLSLFX.md");
    const std::string fence = "```glslfx\n";
    std::vector<std::string> blocks;
    for (std::size_t start = page.find(fence); start != std::string::npos; start = page.find(fence, start)) {
        start += fence.size();
        const std::size_t end = page.find("```", start);
        blocks.push_back(page.substr(start, end - start));
    }
    return blocks;
}

// The samples' includes, read from their shaders folder.
void AnswerSampleInclude(const char* name, FILE*& file, const char*&)
{
    file = std::fopen((std::string(QOR_SAMPLES_DIR) + "/shaders/" + name).c_str(), "r");
}

const char* g_documentedInclude = nullptr;

void AnswerDocumentedInclude(const char* name, FILE*&, const char*& text)
{
    if (std::strcmp(name, "QorTint.glslfxh") == 0)
        text = g_documentedInclude;
}

// A vertex and a fragment stage that read `uniforms` (GLSL expressions giving floats).
std::string EffectReading(const std::string& declarations, const std::string& sum)
{
    return declarations + "\nGLSLShader VS { void main() { gl_Position = gl_Vertex; } }\n"
                          "GLSLShader FS { void main() { gl_FragColor = vec4(" + sum + "); } }\n"
                          "Technique T { Pass P { VertexProgram = VS; FragmentProgram = FS; } }\n";
}

} // namespace

TEST(EffectFormatTest, SampleLoadsWithItsTechniquePassAndUniformsInOrder)
{
    nvFX::setIncludeCallback(AnswerSampleInclude);
    const NvFXTest::Loaded loaded = Load(SampleText("materials/plastic.glslfx"), "plastic");
    nvFX::setIncludeCallback(nullptr);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    EXPECT_EQ(loaded.messages, "");
    nvFX::IContainer& effect = *loaded.container;
    EXPECT_STREQ(effect.getName(), "plastic");
    EXPECT_EQ(effect.getExInterface()->getNumTechniques(), 1);
    nvFX::ITechnique* technique = effect.findTechnique("Plastic");
    ASSERT_NE(technique, nullptr);
    EXPECT_EQ(effect.findTechnique(0), technique);
    EXPECT_EQ(effect.findTechnique(1), nullptr);
    EXPECT_EQ(effect.findTechnique(-1), nullptr);
    EXPECT_EQ(effect.findTechnique("plastic"), nullptr);
    ASSERT_EQ(technique->getNumPasses(), 1);
    EXPECT_STREQ(technique->getPass(0)->getName(), "p0");
    EXPECT_EQ(technique->getExInterface()->findPass("p0"), technique->getPass(0));
    EXPECT_EQ(technique->getPass(1), nullptr);

    // The lighting include's uniforms come where it stands; its lights are a constant
    // buffer's members, reached by name only.
    const std::vector<std::string> order = {"EnvAmbient", "EnvironmentMap", "AutomaticEnvironmentMapTracking",
                                            "WorldViewProj", "World", "WorldIT", "ViewI", "Diffuse", "Specular",
                                            "Glossiness"};
    ASSERT_EQ(effect.getExInterface()->getNumUniforms(), static_cast<int>(order.size()));
    for (std::size_t i = 0; i < order.size(); ++i)
        EXPECT_EQ(effect.findUniform(static_cast<int>(i))->getName(), order[i]);
    EXPECT_EQ(effect.findUniform(static_cast<int>(order.size())), nullptr);
    EXPECT_EQ(effect.findUniform("Glossiness"), effect.findUniform(9));
    EXPECT_EQ(effect.findUniform("numLights"), nullptr);
    EXPECT_NE(effect.findBufferUniform("QorLights.numLights"), nullptr);
    EXPECT_EQ(effect.findUniform("glossiness"), nullptr);
    EXPECT_EQ(effect.findUniform(static_cast<const char*>(nullptr)), nullptr);
}

TEST(EffectFormatTest, DocumentedExampleLoadsAsTheDocumentationSays)
{
    const std::vector<std::string> blocks = DocumentedEffects();
    ASSERT_EQ(blocks.size(), 2u);
    g_documentedInclude = blocks[0].c_str();
    nvFX::setIncludeCallback(AnswerDocumentedInclude);
    const NvFXTest::Loaded loaded = Load(blocks[1], "glow");
    nvFX::setIncludeCallback(nullptr);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    std::vector<std::string> names;
    for (int i = 0; nvFX::IUniform* uniform = loaded.container->findUniform(i); ++i)
        names.push_back(uniform->getName());
    EXPECT_EQ(names, (std::vector<std::string>{"WorldViewProj", "World", "LightDirection", "Albedo", "Tint"}));
    EXPECT_NE(loaded.container->findBufferUniform("GlowStrength"), nullptr);
    EXPECT_NE(loaded.container->findBufferUniform("Glow.GlowColour"), nullptr);
    EXPECT_EQ(loaded.container->findTechnique("Glowing")->getNumPasses(), 2);
}

TEST(EffectFormatTest, ArraysSemanticsAndAnnotationsAreAnsweredAsWritten)
{
    const NvFXTest::Loaded loaded = Load(EffectReading(R"(
uniform vec4 Palette[3] : myPalette < UIName = "Palette \"warm\""; Weights = {0.25, 0.5, 0.25}; Count = 3.9; > =
    {1, 0, 0, 1,  0, 1, 0, 1,  0, 0, 1, 1};
uniform sampler2D Albedo : DiffuseTexture < defaultFile = "wood.tif"; >;
)", "Palette[2] + texture(Albedo, vec2(0.0))"));
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IUniform* palette = loaded.container->findUniform("Palette");
    EXPECT_EQ(palette->getArraySize(), 3);
    EXPECT_STREQ(palette->getSemantic(), "myPalette");
    float third[12] = {};
    ASSERT_TRUE(palette->getValuefv(third, 12));
    EXPECT_EQ(third[8], 0.0f);
    EXPECT_EQ(third[10], 1.0f);

    nvFX::IAnnotation* notes = palette->annotations();
    EXPECT_STREQ(notes->getAnnotationString("UIName"), "Palette \"warm\"");
    EXPECT_EQ(notes->getAnnotationString("Weights"), nullptr);
    EXPECT_EQ(notes->getAnnotationString("Missing"), nullptr);
    EXPECT_EQ(notes->getAnnotationFloat("Weights"), 0.25f);
    EXPECT_EQ(notes->getAnnotationFloat("UIName"), 0.0f);
    EXPECT_EQ(notes->getAnnotationInt("Count"), 3);
    EXPECT_EQ(notes->getAnnotationInt("Missing"), 0);
    nvFX::IAnnotationEx* listed = notes->getExInterface();
    ASSERT_EQ(listed->getNumAnnotations(), 3);
    EXPECT_STREQ(listed->getAnnotationName(1), "Weights");
    EXPECT_EQ(listed->getAnnotationName(3), nullptr);
    float weights[2] = {};
    EXPECT_EQ(listed->getAnnotationFloatv("Weights", weights, 2), 3);
    EXPECT_EQ(weights[1], 0.5f);

    nvFX::IUniform* albedo = loaded.container->findUniform("Albedo");
    EXPECT_STREQ(albedo->getSemantic(), "DiffuseTexture");
    EXPECT_STREQ(albedo->annotations()->getAnnotationString("defaultFile"), "wood.tif");
    EXPECT_EQ(loaded.container->findUniform("Palette")->getExInterface()->getBufferName(), nullptr);
}

TEST(EffectFormatTest, ConstantBufferMembersAreReachedOnlyByTheBufferLookup)
{
    const NvFXTest::Loaded loaded = Load(EffectReading(R"(
ConstantBuffer Material {
    uniform vec4 Tint = {1, 0.5, 0.25, 1};
    uniform float Gain : GAIN;
    uniform mat3 Unused;
};
ConstantBuffer Other { uniform float Gain2; }
)", "Tint * Gain"));
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IContainer& effect = *loaded.container;
    EXPECT_EQ(effect.findUniform(0), nullptr);
    EXPECT_EQ(effect.findUniform("Tint"), nullptr);
    nvFX::IUniform* tint = effect.findBufferUniform("Tint");
    ASSERT_NE(tint, nullptr);
    EXPECT_EQ(effect.findBufferUniform("Material.Tint"), tint);
    EXPECT_EQ(effect.findBufferUniform("Other.Tint"), nullptr);
    EXPECT_EQ(effect.findBufferUniform("Material"), nullptr);
    EXPECT_STREQ(tint->getExInterface()->getBufferName(), "Material");
    float value[4] = {};
    ASSERT_TRUE(tint->getValuefv(value, 4));
    EXPECT_EQ(value[2], 0.25f);
    EXPECT_STREQ(effect.findBufferUniform("Gain")->getSemantic(), "GAIN");
    EXPECT_TRUE(tint->isUsedBy(IUniform::TargetAny));
    EXPECT_FALSE(effect.findBufferUniform("Unused")->isUsedBy(IUniform::TargetAny));
    EXPECT_FALSE(effect.findBufferUniform("Gain2")->isUsedBy(IUniform::TargetAny));
}

TEST(EffectFormatTest, ReflectionMarksUniformsThatAnyPassUsesAndTechniquesTakeAnnotations)
{
    const NvFXTest::Loaded loaded = Load(R"(
uniform vec4 First;
uniform vec4 Second;
uniform vec4 Declared;   // no code reads it
uniform vec4 DeadCode;   // read only by a function no stage calls
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader ReadsFirst { void main() { gl_FragColor = First; } }
GLSLShader ReadsSecond { vec4 unused() { return DeadCode; } void main() { gl_FragColor = Second; } }
Technique A < Category = "shaded"; Order = 2; > {
    Pass P < Blending = "none"; > { VertexProgram = VS; FragmentProgram = ReadsFirst; }
};
Technique B { Pass P { VertexProgram = { VS }; FragmentProgram = ReadsSecond; }; }
)");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    // Techniques and passes take annotations after their names.
    nvFX::ITechnique* technique = loaded.container->findTechnique("A");
    EXPECT_STREQ(technique->annotations()->getAnnotationString("Category"), "shaded");
    EXPECT_EQ(technique->annotations()->getAnnotationInt("Order"), 2);
    EXPECT_STREQ(technique->getPass(0)->annotations()->getAnnotationString("Blending"), "none");
    EXPECT_EQ(loaded.container->findTechnique("B")->getPass(0)->annotations()->getExInterface()->getNumAnnotations(), 0);
    const struct
    {
        const char* name;
        bool used;
    } cases[] = {{"First", true}, {"Second", true}, {"Declared", false}, {"DeadCode", false}};
    for (const auto& c : cases) {
        nvFX::IUniform* uniform = loaded.container->findUniform(c.name);
        EXPECT_EQ(uniform->isUsedBy(IUniform::TargetAny), c.used) << c.name;
        EXPECT_EQ(uniform->isUsedBy(IUniform::TargetGLSL), c.used) << c.name;
        EXPECT_FALSE(uniform->isUsedBy(5)) << c.name << ": no program of another target";
    }
}

TEST(EffectFormatTest, SharedCodeAndItsVersionLeadEveryStage)
{
    const NvFXTest::Loaded versioned = Load(R"(
GLSLShader { #version 150 compatibility
  /* a comment with a } brace */ // and another {
  float twice(float x) { return 2.0 * x; }
};
GLSLShader VS { void main() { gl_Position = gl_Vertex * twice(0.5); } }
Technique T { Pass P { VertexProgram = VS; } }
)");
    ASSERT_TRUE(versioned.ok) << versioned.messages;
    nvFX::IPassEx* pass = versioned.container->findTechnique(0)->getPass(0)->getExInterface();
    const std::string vertex = pass->getStageSource(nvFX::IPassEx::VertexStage);
    EXPECT_EQ(vertex.rfind("#version 150 compatibility\n", 0), 0u) << vertex;
    EXPECT_NE(vertex.find("float twice(float x)"), std::string::npos);
    EXPECT_LT(vertex.find("float twice"), vertex.find("void main"));
    EXPECT_EQ(pass->getStageSource(nvFX::IPassEx::FragmentStage), nullptr);
    EXPECT_EQ(pass->getStageSource(nvFX::IPassEx::GeometryStage), nullptr);
    EXPECT_EQ(pass->getProgram(), 0u) << "no GL program before validation";

    const NvFXTest::Loaded plain = Load("GLSLShader VS { void main() { gl_Position = ftransform(); } }\n"
                                        "Technique T { Pass P { VertexProgram = VS; } }");
    ASSERT_TRUE(plain.ok) << plain.messages;
    const char* source = plain.container->findTechnique(0)->getPass(0)->getExInterface()->getStageSource(
        nvFX::IPassEx::VertexStage);
    EXPECT_EQ(std::strncmp(source, "#version 330 compatibility\n", 27), 0) << source;
}

TEST(EffectFormatTest, AContainerTakesOneEffectAndNoNulls)
{
    NvFXTest::MessageCapture capture;
    NvFXTest::Container container(nvFX::IContainer::create(nullptr));
    EXPECT_STREQ(container->getName(), "");
    EXPECT_FALSE(nvFX::loadEffect(container.get(), nullptr));
    EXPECT_FALSE(nvFX::loadEffect(nullptr, "uniform float x;"));
    EXPECT_TRUE(nvFX::loadEffect(container.get(), "uniform float x;"));
    EXPECT_FALSE(nvFX::loadEffect(container.get(), "uniform float y;"));
    EXPECT_EQ(container->findUniform("y"), nullptr);
    EXPECT_NE(capture.text().find("already holds an effect"), std::string::npos) << capture.text();
    nvFX::IContainer::destroy(nullptr);
}
