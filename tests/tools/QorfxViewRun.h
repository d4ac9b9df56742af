/// @file
/// A material of the window's tests, written into a temporary folder with its include,
/// and a way to run the window while a test edits its files.
#pragma once

#include "QorfxRun.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <string>

/// The include the material's pixel program calls.
inline std::string ViewInclude(const std::string& body = "return colour;")
{
    return "float3 Shade(float3 colour) { " + body + " }\n";
}

/// A flat material: Tint (a colour of three) times Gain (a slider from 0 to 2), shaded by
/// the include; technique "Red" draws red. The pixel program's body is line 8.
inline std::string ViewEffect(const std::string& tint = "0.2, 0.4, 0.8",
                              const std::string& pixel = "return float4(Shade(Tint * Gain), 1);")
{
    return "// The window's test material: Tint times Gain, shaded by the include.\n"
           "#include \"ViewShade.cgh\"\n"
           "float4x4 WorldViewProj : WORLDVIEWPROJECTION;\n"
           "float3 Tint < string UIName = \"Tint\"; string UIWidget = \"Color\"; > = {" + tint + "};\n"
           "float Gain < string UIWidget = \"Slider\";\n"
           "    float UIMin = 0.0; float UIMax = 2.0; float UIStep = 0.01; > = 1.0;\n"
           "float4 FlatVS(float4 position : POSITION) : POSITION { return mul(WorldViewProj, position); }\n"
           "float4 TintPS() : COLOR { " + pixel + " }\n"
           "float4 RedPS() : COLOR { return float4(1, 0, 0, 1); }\n"
           "technique Tinted {\n"
           "    pass p0 { VertexProgram = compile arbvp1 FlatVS(); FragmentProgram = compile arbfp1 TintPS(); } }\n"
           "technique Red {\n"
           "    pass p0 { VertexProgram = compile arbvp1 FlatVS(); FragmentProgram = compile arbfp1 RedPS(); } }\n";
}

/// The material in `dir`: "view.cgfx" and "shaders/ViewShade.cgh"; returns the effect's path.
inline std::string WriteViewMaterial(const QorTempDir& dir)
{
    dir.Write("shaders/ViewShade.cgh", ViewInclude());
    return dir.Write("view.cgfx", ViewEffect());
}

/// Runs `qorfx view ARGUMENTS` and, once the file `ready` appears (the script saved its
/// first picture), runs `edit`; then waits for the window to end.
inline QorfxResult ViewWhileEditing(const std::string& arguments, const std::string& ready,
                                    const std::function<void()>& edit)
{
    std::future<QorfxResult> running =
        std::async(std::launch::async, [arguments] { return RunQorfx("view " + arguments, "timeout 60 "); });
    while (!std::filesystem::exists(ready) &&
           running.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready) {
    }
    if (std::filesystem::exists(ready))
        edit();
    return running.get();
}
