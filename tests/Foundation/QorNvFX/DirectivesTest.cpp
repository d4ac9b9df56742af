// Preprocessor lines at effect scope: extensions lead every stage after the version,
// macros and pragmas go to every stage where they stand, and conditions choose which
// declarations the effect has. Refused lines name their line.
#include "NvFXTestSupport.h"

#include "nvFX/IPassEx.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniform.h"

#include <gtest/gtest.h>

#include <string>

using NvFXTest::ExpectFirstError;
using NvFXTest::Load;

namespace {

std::string Stage(const NvFXTest::Loaded& loaded, nvFX::IPassEx::Stage stage)
{
    const char* text = loaded.container->findTechnique(0)->getPass(0)->getExInterface()->getStageSource(stage);
    return text ? text : "";
}

std::string UniformNames(nvFX::IContainer& effect)
{
    std::string names;
    for (int i = 0; nvFX::IUniform* uniform = effect.findUniform(i); ++i)
        names += std::string(uniform->getName()) + " ";
    return names;
}

const char* const kPass = "GLSLShader FS { void main() { gl_FragColor = vec4(SCALE); } }\n"
                          "Technique T { Pass P { FragmentProgram = FS; } }\n";

} // namespace

TEST(DirectivesTest, ExtensionsLeadEveryStageAndMacrosStandInPlace)
{
    const NvFXTest::Loaded loaded = Load(std::string("uniform float Before;\n"
                                                     "#define SCALE 0.5 // half\n"
                                                     "#extension GL_ARB_gpu_shader5 : enable\n"
                                                     "#pragma optimize(off)\n"
                                                     "GLSLShader {\n#version 400 compatibility\n}\n"
                                                     "#extension GL_ARB_gpu_shader5 : enable\n"
                                                     "GLSLShader VS { void main() { gl_Position = gl_Vertex * SCALE; } }\n"
                                                     "Technique T { Pass P { VertexProgram = VS;\n"
                                                     "FragmentProgram = FS; } }\n"
                                                     "GLSLShader FS { void main() { gl_FragColor = vec4(SCALE); } }\n"));
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    for (const auto stage : {nvFX::IPassEx::VertexStage, nvFX::IPassEx::FragmentStage}) {
        const std::string text = Stage(loaded, stage);
        EXPECT_EQ(text.rfind("#version 400 compatibility\n#line 3 1\n#extension GL_ARB_gpu_shader5 : enable\n", 0), 0u)
            << "once, right after the version, with its line: " << text;
        EXPECT_EQ(text.find("#extension", text.find("#extension") + 1), std::string::npos) << text;
        const std::size_t define = text.find("#line 2 1\n#define SCALE 0.5\n");
        EXPECT_NE(define, std::string::npos) << "without its comment: " << text;
        EXPECT_LT(text.find("uniform float Before;"), define) << "in its place among the declarations";
        EXPECT_NE(text.find("#line 4 1\n#pragma optimize(off)\n"), std::string::npos) << text;
    }
}

TEST(DirectivesTest, ConditionsChooseTheDeclarations)
{
    const NvFXTest::Loaded loaded = Load(std::string("#define LEVEL 2\n"
                                                     "#define SCALE 1.0\n"
                                                     "#define HAS_A\n"
                                                     "#ifdef HAS_A\n"
                                                     "uniform float A;\n"
                                                     "#  ifndef HAS_A\n"
                                                     "uniform float Nested;\n"
                                                     "#  else\n"
                                                     "uniform float NestedElse;\n"
                                                     "#  endif\n"
                                                     "#else\n"
                                                     "uniform float NotA; @ never read\n"
                                                     "#endif\n"
                                                     "#if LEVEL > 2 || defined(MISSING)\n"
                                                     "uniform float High;\n"
                                                     "#elif (LEVEL * 3 - 1) % 4 == 1 && !defined MISSING\n"
                                                     "uniform float Middle;\n"
                                                     "#elif 1\n"
                                                     "uniform float NotTwice;\n"
                                                     "#else\n"
                                                     "uniform float Low;\n"
                                                     "#endif\n"
                                                     "#undef HAS_A\n"
                                                     "#if defined(HAS_A) ? 1 : UNDEFINED_IS_ZERO + 0x10 == 16\n"
                                                     "uniform float Undefined;\n"
                                                     "#endif\n") +
                                         kPass);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    EXPECT_EQ(UniformNames(*loaded.container), "A NestedElse Middle Undefined ");
    const std::string text = Stage(loaded, nvFX::IPassEx::FragmentStage);
    EXPECT_EQ(text.find("#if"), std::string::npos) << "conditions are decided, not handed on: " << text;
    EXPECT_NE(text.find("#undef HAS_A"), std::string::npos) << text;
}

TEST(DirectivesTest, BadDirectivesAndConditionsNameTheirLine)
{
    ExpectFirstError("\n#ifdef X\nuniform float a;\n", "effect(2): error: '#ifdef' is not closed by '#endif'");
    ExpectFirstError("#if 1\n#else\n#else\n#endif\n", "effect(3): error: '#else' after '#else'");
    ExpectFirstError("#if 0\n#else\n#elif 1\n#endif\n", "effect(3): error: '#elif' after '#else'");
    ExpectFirstError("uniform float a;\n#endif\n", "effect(2): error: '#endif' without '#if'");
    ExpectFirstError("#if 1 +\n#endif\n", "effect(1): error: '#if 1 +': the expression ends too early");
    ExpectFirstError("#if 0\n#elif 4 / (2 - 2)\n#endif\n", "effect(2): error: '#elif 4 / (2 - 2)': division by zero");
    ExpectFirstError("#if 9223372036854775807 + 1\n#endif\n", "effect(1): error: '#if 9223372036854775807 + 1': overflow");
    ExpectFirstError("#define SELF SELF\n#if SELF\n#endif\n",
                     "effect(2): error: '#if SELF': macro 'SELF' expands too deep");
    ExpectFirstError("#define EMPTY\n#if EMPTY\n#endif\n", "effect(2): error: '#if EMPTY': macro 'EMPTY' has no value");
    ExpectFirstError("#ifdef\n#endif\n", "effect(1): error: expected one macro name after '#ifdef'");
    ExpectFirstError("#define 9X\n", "effect(1): error: expected a macro name after '#define'");
    ExpectFirstError("#ifndef SHADOWS\n#error this effect needs SHADOWS\n#endif\n",
                     "effect(2): error: #error this effect needs SHADOWS");
    ExpectFirstError("#\n", "effect(1): error: expected a directive after '#'");
    ExpectFirstError("#version 150\nGLSLShader {\n#version 330\n}\n",
                     "effect(3): error: '#version 330' differs from '#version 150' at effect(1)");
    ExpectFirstError("#if " + std::string(100000, '(') + "1\n#endif\n", "effect(1): error: '#if " +
                                                                            std::string(100000, '(') +
                                                                            "1': nests too deep");

    const NvFXTest::Loaded fine = Load("#if 0\n#if 1\n#endif\n#elif 1\n#define SCALE 1.0\n#endif\n" + std::string(kPass));
    EXPECT_TRUE(fine.ok) << "conditions inside skipped lines are skipped whole: " << fine.messages;
}
