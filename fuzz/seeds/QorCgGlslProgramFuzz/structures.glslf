// glslf output by Cg compiler
// cgc version 3.1.0013, build date Apr 24 2012
// command line args: -profile glslf
// source file: tests/data/translate/structures.cgfx
//vendor NVIDIA Corporation
//version 3.1.0.13
//profile glslf
//program MainPS
//semantic WorldViewProj : WORLDVIEWPROJECTION
//semantic Stripe
//semantic Palette
//semantic Warp
//semantic Mix
//var float Stripe.width :  : _Stripe._width : -1 : 1
//var float3 Stripe.color :  : _Stripe._color : -1 : 1
//var float3 Palette[0] :  : _Palette[0] : -1 : 1
//var float3 Palette[1] :  : _Palette[1] : -1 : 1
//var float3 Palette[2] :  : _Palette[2] : -1 : 1
//var float Mix :  : _Mix : -1 : 1
//var float3 local : $vin.TEXCOORD0 : TEX0 : 0 : 1
//var float4 MainPS : $vout.COLOR : COL : -1 : 1
//default Stripe.width = 0.25
//default Stripe.color = 0.9 0.2 0.3
//default Palette[0] = 0.1 0.5 0.2
//default Palette[1] = 0.8 0.8 0.1
//default Palette[2] = 0.2 0.3 0.9
//default Warp[0] = 1 0 0 0
//default Warp[1] = 0 1 0 0
//default Warp[2] = 0 0 1 0
//default Mix = 0.5

#version 110

struct Band {
    float _width;
    vec3 _color;
};

vec4 _ret_0;
float _TMP2;
float _TMP0;
float _TMP3;
float _x0011;
float _TMP12;
vec3 _a0023;
float _t0023;
uniform Band _Stripe;
uniform vec3 _Palette[3];
uniform float _Mix;

 // main procedure, the original name was MainPS
void main()
{

    int _band;
    float _stripe;
    vec3 _color1;

    _x0011 = (gl_TexCoord[0].y + 1.00000000E+00)*1.50000000E+00;
    _TMP0 = floor(_x0011);
    _TMP3 = min(2.00000000E+00, _TMP0);
    _TMP12 = max(0.00000000E+00, _TMP3);
    _band = int(_TMP12);
    _TMP2 = abs(gl_TexCoord[0].x);
    _stripe = float((_Stripe._width >= _TMP2));
    _a0023 = _Palette[_band];
    _t0023 = _stripe*_Mix;
    _color1 = _a0023 + _t0023*(_Stripe._color - _a0023);
    _ret_0 = vec4(_color1.x, _color1.y, _color1.z, 1.00000000E+00);
    gl_FragColor = _ret_0;
    return;
} // main end
