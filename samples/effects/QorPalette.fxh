// A palette for palette.cgfx, registered in memory under the name "QorPalette.fxh".
float3 QorPaletteColor(float t)
{
    return lerp(float3(0.1, 0.2, 0.9), float3(1.0, 0.6, 0.1), saturate(t));
}
