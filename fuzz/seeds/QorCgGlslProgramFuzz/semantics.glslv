// glslv output by Cg compiler
// cgc version 3.1.0013, build date Apr 24 2012
// command line args: -profile glslv
// source file: tests/data/translate/semantics.cgfx
//vendor NVIDIA Corporation
//version 3.1.0.13
//profile glslv
//program MainVS
//semantic WorldViewProj : WORLDVIEWPROJECTION
//semantic WorldIT : WORLDINVERSETRANSPOSE
//semantic description
//semantic BaseColor : DIFFUSE
//semantic RimPower
//semantic RimColor
//semantic Steps
//semantic UseRim
//var float4x4 WorldViewProj : WORLDVIEWPROJECTION : _WorldViewProj[0], 4 : -1 : 1
//var float4x4 WorldIT : WORLDINVERSETRANSPOSE : _WorldIT[0], 4 : -1 : 1
//var float4 position : $vin.POSITION : ATTR0 : 0 : 1
//var float3 normal : $vin.NORMAL : ATTR2 : 1 : 1
//var float4 MainVS.position : $vout.POSITION : HPOS : -1 : 1
//var float3 MainVS.normal : $vout.TEXCOORD0 : TEX0 : -1 : 1
//default description = "A lit colour with a rim"
//default BaseColor = 0.9 0.6 0.2 1
//default RimPower = 2
//default RimColor = 0.2 0.4 1
//default Steps = 4
//default UseRim = 1

#version 110

struct VertexOut {
    vec4 _position2;
    vec3 _normal2;
};

vec4 _r0011;
vec4 _r0021;
vec4 _v0021;
uniform vec4 _WorldViewProj[4];
uniform vec4 _WorldIT[4];

 // main procedure, the original name was MainVS
void main()
{


    _r0011.x = dot(_WorldViewProj[0], gl_Vertex);
    _r0011.y = dot(_WorldViewProj[1], gl_Vertex);
    _r0011.z = dot(_WorldViewProj[2], gl_Vertex);
    _r0011.w = dot(_WorldViewProj[3], gl_Vertex);
    _v0021 = vec4(gl_Normal.x, gl_Normal.y, gl_Normal.z, 0.00000000E+00);
    _r0021.x = dot(_WorldIT[0], _v0021);
    _r0021.y = dot(_WorldIT[1], _v0021);
    _r0021.z = dot(_WorldIT[2], _v0021);
    gl_TexCoord[0].xyz = _r0021.xyz;
    gl_Position = _r0011;
    return;
} // main end
