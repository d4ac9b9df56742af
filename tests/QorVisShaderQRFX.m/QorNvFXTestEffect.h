/// @file
/// A GLSL effect for the QRFX tests: uniforms bound by semantic, light uniforms found by
/// name (one declared but read by no code; their light semantics keep them from the
/// user's values), and user uniforms of every kind binding offers, with annotations.
/// Loading needs no GL context.
#pragma once

inline const char* const kQorNvFXTestEffect = R"(
uniform mat4 WorldViewProj : WORLDVIEWPROJECTION;
uniform mat4 WorldInverse : WORLDINVERSE;
uniform mat4 WorldI : WORLDI;
uniform vec3 Eye : EYEPOS;
uniform vec4 Tint : DIFFUSE = {1, 1, 1, 1};
uniform vec3 lightData_LightPos[8] : LIGHTPOS;
uniform vec4 lightData_LightColor[8] : LIGHTCOLOR;
uniform int numLights;
uniform float Gloss < UIName = "Gloss"; UIMin = 1; UIMax = 64; > = 8;
uniform vec2 Scale = {2, 3};
uniform vec3 tint = {0.5, 0.6, 0.7};
uniform vec4 Base = {0.1, 0.2, 0.3, 0.4};
uniform int Bands = 3;
uniform float description = 1;
uniform mat4 Extra;
uniform sampler2D ColorMap < defaultFile = "wood.tif"; >;
uniform samplerCube Sky;
uniform sampler3D Volume < defaultFile = "volume.dds"; >;

GLSLShader VS
{
    void main() { gl_Position = WorldViewProj * gl_Vertex * Scale.x * Eye.x * WorldI[0][0] * Extra[0][0]; }
}
GLSLShader FS
{
    void main()
    {
        vec4 lit = numLights > 0 ? lightData_LightColor[0] : vec4(0.0);
        gl_FragColor = Tint * Gloss * vec4(tint, 1.0) * Base * lit + texture(ColorMap, Scale) + texture(Sky, tint)
                     + texture(Volume, tint) * float(Bands) * description;
    }
}
Technique First { Pass p0 { VertexProgram = VS; FragmentProgram = FS; } }
Technique Second { Pass p0 { VertexProgram = VS; FragmentProgram = FS; } }
)";
