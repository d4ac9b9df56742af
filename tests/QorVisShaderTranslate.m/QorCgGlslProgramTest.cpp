// Reading the GLSL the Cg runtime writes: the parameter map of its "//var" lines, the
// uniforms it declares, and the code renamed into the effect's names.
#include "QorCgGlslProgram.h"

#include <gtest/gtest.h>

namespace {

// The shape of Cg 3.1's glslf output for a program reading a colour, a matrix's rows, a
// light structure's members and an array.
const char* const kProgram = R"(// glslf output by Cg compiler
//profile glslf
//program MainPS
//semantic Tint
//var float4 Tint :  : _Tint : -1 : 1
//var float4x4 View : VIEW : _View[0], 4 : -1 : 1
//var float3 lights[1].LightColor :  : _lights11._LightColor1 : -1 : 1
//var float4 lights[0].LightAmbient :  :  : -1 : 0
//var float3 arr[1] :  : _arr[1] : -1 : 1
//var float3 spots[0].LightPos :  : _spots1[0]._LightPos : -1 : 1
//var float2 uv : $vin.TEXCOORD0 : TEX0 : 0 : 1
//default Tint = 1 0.5 0.2 1

#version 110

struct SLightDir {
    vec3 _LightColor1;
};

vec4 _ret_0;
uniform vec4 _Tint;
uniform vec4 _View[4];
uniform SLightDir _lights11;
uniform vec3 _arr[3];
uniform SLightDir _spots1[1];

 // main procedure, the original name was MainPS
void main()
{
    // _Tint in a comment stays
    _ret_0 = _Tint*_View[0].x + vec4(_lights11._LightColor1 + _arr[1] + _spots1[0]._LightPos, 1.0e+00);
    gl_FragColor = _ret_0;
} // main end
)";

TEST(QorCgGlslProgramTest, ReadsTheParameterMapAndTheUniforms)
{
    QorCgGlslProgram program;
    std::string why;
    ASSERT_TRUE(program.Parse(kProgram, why)) << why;
    const auto& variables = program.Variables();
    ASSERT_EQ(variables.size(), 7u);
    EXPECT_EQ(variables[0].cgType, "float4");
    EXPECT_EQ(variables[0].cgName, "Tint");
    EXPECT_EQ(variables[0].glslName, "_Tint");
    EXPECT_TRUE(variables[0].used);
    EXPECT_EQ(variables[1].glslName, "_View"); // the rows of a matrix, without their index
    EXPECT_EQ(variables[1].rows, 4);
    EXPECT_EQ(variables[1].semantic, "VIEW");
    EXPECT_EQ(variables[2].cgName, "lights[1].LightColor");
    EXPECT_EQ(variables[2].glslName, "_lights11._LightColor1");
    EXPECT_TRUE(variables[3].glslName.empty());
    EXPECT_FALSE(variables[3].used);
    EXPECT_TRUE(variables[6].IsVarying());

    const auto& uniforms = program.Uniforms();
    ASSERT_EQ(uniforms.size(), 5u);
    EXPECT_EQ(uniforms[1].name, "_View");
    EXPECT_EQ(uniforms[1].arraySize, 4);
    EXPECT_EQ(uniforms[2].type, "SLightDir");
    // The version line, the header comments and the declarations leave the code.
    EXPECT_EQ(program.Code().find("#version"), std::string::npos);
    EXPECT_EQ(program.Code().find("uniform"), std::string::npos);
    EXPECT_EQ(program.Code().find("//var"), std::string::npos);
    EXPECT_TRUE(program.UsesIdentifier("_ret_0"));
    EXPECT_FALSE(program.UsesIdentifier("_ret")); // whole names only
}

TEST(QorCgGlslProgramTest, RenamesNamesAndMemberAccessesButNotComments)
{
    QorCgGlslProgram program;
    std::string why;
    ASSERT_TRUE(program.Parse(kProgram, why)) << why;
    const std::string code = program.Renamed({{"_Tint", "Tint"},
                                              {"_View", "transpose(View)"},
                                              {"_lights11._LightColor1", "lightData_LightColor[1].xyz"},
                                              {"_arr", "arr"},
                                              {"_spots1[0]._LightPos", "lightData_LightPos[0].xyz"}});
    EXPECT_NE(code.find("_ret_0 = Tint*transpose(View)[0].x + vec4(lightData_LightColor[1].xyz + arr[1] + "
                        "lightData_LightPos[0].xyz, 1.0e+00);"),
              std::string::npos)
        << code;
    EXPECT_NE(code.find("// _Tint in a comment stays"), std::string::npos);
    // The structure's declaration keeps its own member names.
    EXPECT_NE(code.find("vec3 _LightColor1;"), std::string::npos);
}

TEST(QorCgGlslProgramTest, RefusesTextsCgDoesNotWrite)
{
    struct Case
    {
        std::string text, why;
    };
    const Case cases[] = {
        {"//var float4 Tint : _Tint : 1\nvoid main() {}\n", "line 1: a //var line of 3 fields"},
        {"//var float4x4 M :  : _M[0], 9 : -1 : 1\nvoid main() {}\n", "line 1: matrix rows"},
        {"uniform vec4 _Tint[x];\nvoid main() {}\n", "line 1: a uniform declaration"},
        {"uniform vec4;\nvoid main() {}\n", "line 1: a uniform declaration"},
        {"#version 110\n#version 120\nvoid main() {}\n", "line 2: a second #version"},
        {"vec4 x;\n", "no main function"},
        {std::string("void main() {}\n\0", 16), "NUL byte"},
    };
    for (const Case& c : cases) {
        QorCgGlslProgram program;
        std::string why;
        EXPECT_FALSE(program.Parse(c.text, why)) << c.text;
        EXPECT_NE(why.find(c.why), std::string::npos) << why;
    }
    QorCgGlslProgram program;
    std::string why;
    EXPECT_FALSE(program.Parse(std::string(QorCgGlslProgram::kMaxText + 1, ' '), why));
}

} // namespace
