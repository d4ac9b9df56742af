// Compiles an effect through the installed library's public API and lists its parameters.
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorShaderManager.h"

#include <cstdio>

int main()
{
    const char* const effect = R"(
float4x4 WorldViewProj : WORLDVIEWPROJECTION;
float4 Tint = {1, 0.5, 0.25, 1};
float4 MainVS(float4 position : POSITION) : POSITION { return mul(WorldViewProj, position); }
float4 MainPS() : COLOR { return Tint; }
technique Flat { pass P0 { VertexProgram = compile arbvp1 MainVS(); FragmentProgram = compile arbfp1 MainPS(); } }
)";
    QorIShader* shader = QorShaderManager::CreateShader();
    if (!shader)
        return 1;
    shader->SetBufferWithoutName(effect);
    const bool generated = shader->GenerateParameters();
    const int count = shader->GetNbParameters();
    std::printf("%s %d %s\n", generated ? "compiled" : "failed", count, count > 1 ? shader->GetParameterName(1) : "-");
    shader->Destroy();
    QorShaderManager::CleanShaderTextureToDestroyList();
    return generated && count == 2 ? 0 : 1;
}
