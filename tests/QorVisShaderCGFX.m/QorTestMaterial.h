/// @file
/// A small material shared by the effect and shader tests: a DIFFUSE colour, a float with
/// UI range annotations, a bound matrix and two techniques.
#pragma once

inline const char* const kQorTestMaterial = R"(
float4 tint : DIFFUSE = {0.25, 0.5, 0.75, 1};
float gloss < float UIMin = 2; float max = 8; > = 0.5;
float4x4 wvp : WORLDVIEWPROJECTION;
float4 mainVS(float4 p : POSITION) : POSITION { return mul(wvp, p); }
float4 mainPS() : COLOR { return tint * gloss; }
technique first { pass p0 { VertexProgram = compile arbvp1 mainVS(); FragmentProgram = compile arbfp1 mainPS(); } }
technique second { pass p0 { VertexProgram = compile arbvp1 mainVS(); FragmentProgram = compile arbfp1 mainPS(); } }
)";
