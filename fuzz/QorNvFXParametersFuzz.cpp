// libFuzzer target for reading a parameter stream into a GLSL-effect parameter set, as
// migrating a stored material does: hostile names, counts and type codes must end in a
// set that answers its queries from what it holds, without reading past the bytes,
// leaking or allocating beyond what they could describe. Texture records find no
// container here, so they are dropped.

#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorShaderManager.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QorStreamer stream(data, size);
    QorNvFXShaderParameters set;
    set.UnStream(stream);
    const int count = set.GetNbParameters();
    if (count < 1)
        std::abort();
    float components[4] = {};
    char* text = nullptr;
    for (int index = 0; index <= count; ++index) {
        set.GetParameterName(index);
        set.GetParameterType(index);
        set.GetColorValue(index, components, 0);
        set.GetFloatValue(index, components, 0);
        set.GetTextureValue(index, &text, 0);
    }
    QorNvFXShaderParameters copy(set);
    if (copy.GetNbParameters() != count)
        std::abort();
    QorShaderManager::CleanShaderTextureToDestroyList();
    return 0;
}
