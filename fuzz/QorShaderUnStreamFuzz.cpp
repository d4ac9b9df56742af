// libFuzzer target: a CgFX shader's UnStream of hostile stream bytes inside a fixed
// package (an effect with a float, a colour and a texture, and an image), as a renderer
// reads a document. Whatever the bytes, the shader ends with a consistent parameter set
// or none, nothing is read past the stream, and nothing leaks.
#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorFiles.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

const char* const kEffect = R"(
float4 tint : DIFFUSE = {0.25, 0.5, 0.75, 1};
float gloss < float UIMin = 2; float UIMax = 8; > = 0.5;
sampler2D map < string File = "wood.png"; > = sampler_state { MinFilter = Linear; };
float4x4 wvp : WORLDVIEWPROJECTION;
float4 mainVS(float4 p : POSITION) : POSITION { return mul(wvp, p); }
float4 mainPS(float2 uv : TEXCOORD0) : COLOR { return tint * gloss * tex2D(map, uv); }
technique first { pass p0 { VertexProgram = compile arbvp1 mainVS(); FragmentProgram = compile arbfp1 mainPS(); } }
)";

// The fixed package, saved and loaded once through the package file, and a shader that
// keeps its effect compiled for every input. The cache folder is removed at exit.
struct Package
{
    Package()
    {
        // Reports of values a hostile stream gave the wrong kind are expected; they would
        // only slow the fuzzer down.
        QorSetDiagnosticSink([](const char*, const char*, int) {});
        std::string pattern = (std::filesystem::temp_directory_path() / "qorunstreamfuzz-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            std::abort();
        folder = pattern;
        setenv("QorTemp", folder.c_str(), 1);
        const std::string effect = folder + "/fuzz.cgfx", image = folder + "/wood.png";
        QorTexturePixelImage::Ptr wood(QorTexturePixelImage::Create("wood", QorPixelRGBA8, 4, 4));
        if (wood->WriteToFile("PNG", image.c_str()) != 0 ||
            !QorWriteFileAtomically(effect.c_str(), kEffect, std::strlen(kEffect)))
            std::abort();
        keeper = QorShaderManager::CreateShader();
        keeper->SetFileName(QorString(effect.c_str()));
        if (!keeper->GenerateParameters() || keeper->SetParameterString(3, image.c_str()) != 0)
            std::abort();
        QorResourceZPKContainer saving;
        QorStreamer stream;
        stream.SetResourceZPKContainer(&saving);
        keeper->Stream(stream);
        const std::string path = folder + "/fixed.zpk";
        QorStreamer loaded;
        if (saving.SaveToFile(path.c_str(), stream, nullptr) != 0 ||
            container.LoadFromFile(path.c_str(), loaded, nullptr) != 0)
            std::abort();
    }
    ~Package()
    {
        keeper->Destroy();
        QorShaderManager::CleanShaderTextureToDestroyList();
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string folder;
    QorIShader* keeper = nullptr;
    QorResourceZPKContainer container;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Package package;
    QorStreamer stream(data, size);
    stream.SetResourceZPKContainer(&package.container);
    QorIShader* shader = QorShaderManager::CreateShader();
    shader->UnStream(stream);
    // Read back every value the stream gave, by its kind, as a renderer's property panel would.
    for (int index = 1; index < shader->GetNbParameters(); ++index) {
        float numbers[4] = {};
        char file[QorMaxParameterStringLength] = {};
        const int type = shader->GetParameterType(index);
        if (type == QorValueFloat)
            shader->GetParameterFloat(index, numbers);
        else if (type == QorValueTexture)
            shader->GetParameterString(index, file);
        else
            shader->GetParameterColor(index, &numbers[0], &numbers[1], &numbers[2], &numbers[3]);
    }
    shader->Destroy();
    QorShaderManager::CleanShaderTextureToDestroyList();
    QorTexturePixelImage::ClearList();
    return 0;
}
