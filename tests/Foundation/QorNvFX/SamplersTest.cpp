// Sampler states and texture resources joined to sampler uniforms by a pass: the
// texture's annotations reach the sampler (its "defaultFile" for the library), and
// what does not fit is refused with its line.
#include "NvFXTestSupport.h"

#include "nvFX/IAnnotation.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniform.h"

#include <gtest/gtest.h>

#include <string>

using NvFXTest::ExpectFirstError;
using NvFXTest::Load;

namespace {

const char* const kDeclarations = R"(uniform sampler2D Albedo < UIName = "Albedo"; >;
uniform samplerCube Sky;
SamplerState Tiled { TEXTURE_MIN_FILTER = LINEAR_MIPMAP_LINEAR; TEXTURE_MAG_FILTER = GL_LINEAR;
                     TEXTURE_WRAP_S = REPEAT; TEXTURE_WRAP_T = GL_MIRRORED_REPEAT; TEXTURE_MAX_ANISOTROPY = 8; }
TextureResource2D Wood < defaultFile = "wood.png"; UIName = "not the sampler's"; > { Gain = 2; };
TextureResourceCube Sky < defaultFile = "sky.dds"; >;
GLSLShader FS { void main() { gl_FragColor = texture(Albedo, vec2(0.5)) + texture(Sky, vec3(1.0)); } }
)"; // 7 lines

} // namespace

TEST(SamplersTest, TexturesLendTheirAnnotationsToTheSamplersTheyAreAssigned)
{
    const NvFXTest::Loaded loaded = Load(std::string(kDeclarations) +
                                         "Technique T { Pass P {\n"
                                         "    FragmentProgram = FS;\n"
                                         "    SamplerResource(Albedo) = { Wood, Tiled };\n"
                                         "    SamplerResource(Sky) = Sky;\n"
                                         "    SamplerState(Sky) = Tiled;\n"
                                         "} }\n");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IAnnotation* albedo = loaded.container->findUniform("Albedo")->annotations();
    EXPECT_STREQ(albedo->getAnnotationString("defaultFile"), "wood.png");
    EXPECT_STREQ(albedo->getAnnotationString("UIName"), "Albedo") << "the sampler's own come first";
    EXPECT_EQ(albedo->getAnnotationFloat("Gain"), 2.0f) << "the texture's body is read as annotations";
    EXPECT_STREQ(loaded.container->findUniform("Sky")->annotations()->getAnnotationString("defaultFile"), "sky.dds");
}

TEST(SamplersTest, WhatDoesNotFitIsRefusedWithItsLine)
{
    const std::string declared = kDeclarations;
    const std::string pass = "Technique T { Pass P { FragmentProgram = FS;\n"; // line 8
    ExpectFirstError("SamplerState S {\n TEXTURE_WRAP_Q = REPEAT; }",
                     "effect(2): error: unknown sampler state 'TEXTURE_WRAP_Q' (TEXTURE_MIN_FILTER, TEXTURE_MAG_FILTER, "
                     "TEXTURE_WRAP_S, TEXTURE_WRAP_T, TEXTURE_WRAP_R, TEXTURE_MAX_ANISOTROPY)");
    ExpectFirstError("SamplerState S { TEXTURE_MAG_FILTER = LINEAR_MIPMAP_LINEAR; }",
                     "effect(1): error: 'LINEAR_MIPMAP_LINEAR' is not a value of 'TEXTURE_MAG_FILTER' (GL_NEAREST, GL_LINEAR)");
    ExpectFirstError("SamplerState S { TEXTURE_MAX_ANISOTROPY = 32; }",
                     "effect(1): error: '32' is not a value of 'TEXTURE_MAX_ANISOTROPY' (a number from 1 to 16)");
    ExpectFirstError("SamplerState S { TEXTURE_WRAP_S = ; }", "effect(1): error: ';' is not a value of 'TEXTURE_WRAP_S' "
                     "(GL_REPEAT, GL_MIRRORED_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER, GL_MIRROR_CLAMP_TO_EDGE)");
    ExpectFirstError("TextureResource2D T < defaultFile = \"a.png\"; >",
                     "effect(1): error: expected ';' or '{' after texture resource 'T', found the end of the text");
    ExpectFirstError(declared + pass + " SamplerResource(Albedo) = Sky; } }",
                     "effect(9): error: texture resource 'Sky' fits a samplerCube, not 'Albedo' (sampler2D)");
    ExpectFirstError(declared + pass + " SamplerResource(Albedo) = { Wood, Nearest }; } }",
                     "effect(9): error: sampler state 'Nearest' is not declared before it");
    ExpectFirstError(declared + pass + " SamplerResource(Albedo) = Oak; } }",
                     "effect(9): error: texture resource 'Oak' is not declared before it");
    ExpectFirstError(declared + "uniform vec4 Tint;\n" + pass + " SamplerState(Tint) = Tiled; } }",
                     "effect(10): error: 'Tint' is no sampler uniform declared before pass 'P'");
    std::string many;
    for (int i = 0; i < 10000; ++i)
        many += "SamplerState S" + std::to_string(i) + " { }\n";
    ExpectFirstError(many, "effect(1025): error: more than 1024 sampler states in one effect");
}
