// glslf output by Cg compiler
// cgc version 3.1.0013, build date Apr 24 2012
// command line args: 
//vendor NVIDIA Corporation
//version 3.1.0.13
//profile glslf
//program PlasticPS
//semantic WorldViewProj : WORLDVIEWPROJECTION
//semantic World : WORLD
//semantic WorldIT : WORLDINVERSETRANSPOSE
//semantic ViewI : VIEWINVERSE
//semantic lights
//semantic environment
//semantic Diffuse : DIFFUSE
//semantic Specular : SPECULAR
//semantic Glossiness
//var float4x4 ViewI : VIEWINVERSE : _ViewI[0], 4 : -1 : 1
//var float3 lights[0].LightPos :  : _lights1[0]._LightPos : -1 : 1
//var float3 lights[0].LightDir :  : _lights1[0]._LightDir : -1 : 1
//var float4 lights[0].LightColor :  : _lights1[0]._LightColor : -1 : 1
//var float4 lights[0].LightColorSpec :  : _lights1[0]._LightColorSpec : -1 : 1
//var float lights[0].LightRadialInnerCone :  : _lights1[0]._LightRadialInnerCone : -1 : 1
//var float lights[0].LightRadialOuterCone :  : _lights1[0]._LightRadialOuterCone : -1 : 1
//var float lights[0].LightRadialFalloffExponent :  : _lights1[0]._LightRadialFalloffExponent : -1 : 1
//var float3 lights[0].lightI_SCos_SExp :  :  : -1 : 0
//var float4 environment.EnvAmbient :  : _environment._EnvAmbient : -1 : 1
//var float4 Diffuse : DIFFUSE : _Diffuse : -1 : 1
//var float4 Specular : SPECULAR : _Specular : -1 : 1
//var float Glossiness :  : _Glossiness : -1 : 1
//var float3 input.worldPosition : $vin.TEXCOORD0 : TEXCOORD0 : 0 : 1
//var float3 input.worldNormal : $vin.TEXCOORD1 : TEXCOORD1 : 0 : 1
//var float4 PlasticPS : $vout.COLOR : COL : -1 : 1
//default Diffuse = 0.8 0.1 0.1 1
//default Specular = 1 1 1 1
//default Glossiness = 32

#version 110

struct SLightPoint {
    vec3 _LightPos1;
    vec4 _LightColor1;
    vec4 _LightColorSpec1;
    vec4 _LightAmbient;
    float _LightAxialFalloffConstant;
    float _LightAxialFalloffLinear;
    float _LightAxialFalloffQuadratic;
    float _LightCastShadowFlag;
};

struct SLightSpot {
    vec3 _LightPos;
    vec3 _LightDir;
    vec4 _LightColor;
    vec4 _LightColorSpec;
    float _LightRadialInnerCone;
    float _LightRadialOuterCone;
    float _LightRadialFalloffExponent;
    vec3 _lightI_SCos_SExp;
};

struct SLightDir {
    vec3 _LightDir1;
    vec4 _LightColor2;
    vec4 _LightColorSpec2;
};

struct SEnvColor {
    vec4 _EnvAmbient;
};

struct SEnvCUBE {
    vec4 _EnvAmbient1;
    samplerCube _EnvDiffuse;
    samplerCube _EnvSpecular;
};

struct VertexOut {
    vec3 _worldPosition;
    vec3 _worldNormal;
};

float _TMP3;
float _TMP2;
float _TMP13;
float _TMP12;
float _TMP16;
vec3 _TMP11;
vec4 _ret_0;
float _TMP8;
float _TMP7;
float _TMP6;
float _TMP4;
vec3 _v0035;
vec3 _diffuse0040;
vec3 _specular0040;
vec3 _radiance10040;
float _NdotL10040;
vec3 _H10040;
vec3 _L0042;
float _cosine0042;
float _cone0042;
vec3 _v0045;
vec3 _a0057;
float _x0061;
float _TMP62;
vec3 _v0077;
uniform vec4 _ViewI[4];
uniform SLightSpot _lights1[1];
uniform SEnvColor _environment;
uniform vec4 _Diffuse;
uniform vec4 _Specular;
uniform float _Glossiness;

 // main procedure, the original name was PlasticPS
void main()
{

    vec3 _N1;
    vec3 _eye;
    vec3 _V1;
    vec3 _color;

    _TMP2 = dot(gl_TexCoord[1].xyz, gl_TexCoord[1].xyz);
    _TMP3 = inversesqrt(_TMP2);
    _N1 = _TMP3*gl_TexCoord[1].xyz;
    _eye = vec3(_ViewI[0].w, _ViewI[1].w, _ViewI[2].w);
    _v0035 = _eye - gl_TexCoord[0].xyz;
    _TMP2 = dot(_v0035, _v0035);
    _TMP3 = inversesqrt(_TMP2);
    _V1 = _TMP3*_v0035;
    _v0045 = _lights1[0]._LightPos - gl_TexCoord[0].xyz;
    _TMP2 = dot(_v0045, _v0045);
    _TMP3 = inversesqrt(_TMP2);
    _L0042 = _TMP3*_v0045;
    _TMP2 = dot(_lights1[0]._LightDir, _lights1[0]._LightDir);
    _TMP3 = inversesqrt(_TMP2);
    _TMP11 = _TMP3*_lights1[0]._LightDir;
    _a0057 = -_L0042;
    _cosine0042 = dot(_a0057, _TMP11);
    _x0061 = (_cosine0042 - _lights1[0]._LightRadialOuterCone)/(_lights1[0]._LightRadialInnerCone - _lights1[0]._LightRadialOuterCone);
    _TMP16 = min(1.00000000E+00, _x0061);
    _TMP62 = max(0.00000000E+00, _TMP16);
    _cone0042 = _TMP62*_TMP62*(3.00000000E+00 - 2.00000000E+00*_TMP62);
    _TMP12 = max(_cosine0042, 0.00000000E+00);
    _TMP13 = pow(_TMP12, _lights1[0]._LightRadialFalloffExponent);
    _radiance10040 = _lights1[0]._LightColor.xyz*_cone0042*_TMP13;
    _TMP4 = dot(_N1, _L0042);
    _NdotL10040 = max(_TMP4, 0.00000000E+00);
    _diffuse0040 = _radiance10040*_NdotL10040;
    _v0077 = _L0042 + _V1;
    _TMP2 = dot(_v0077, _v0077);
    _TMP3 = inversesqrt(_TMP2);
    _H10040 = _TMP3*_v0077;
    _TMP6 = dot(_N1, _H10040);
    _TMP7 = max(_TMP6, 0.00000000E+00);
    _TMP8 = pow(_TMP7, _Glossiness);
    _specular0040 = _lights1[0]._LightColorSpec.xyz*_TMP8*float((_NdotL10040 > 0.00000000E+00));
    _color = _Diffuse.xyz*(_diffuse0040 + _environment._EnvAmbient.xyz) + _Specular.xyz*_specular0040;
    _ret_0 = vec4(_color.x, _color.y, _color.z, _Diffuse.w);
    gl_FragColor = _ret_0;
    return;
} // main end

