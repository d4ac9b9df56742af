// libFuzzer target for the ".glslfx" parser of the GLSL effect runtime and the assembly
// of each pass's stages. The input up to its first NUL byte is the effect; what follows
// is the answer of the include callback to every name, so includes nest, repeat and
// cycle. The parser must refuse or accept without reading out of bounds, leaking,
// recursing without bound or passing libFuzzer's memory limit; an accepted effect's
// passes must name only declared code. glslang is not run here: its own parser is not
// ours to fuzz, and its compile time would drown the parser's.

#include "nvFX/nvFX.h"

#include "EffectParser_p.h"
#include "StageAssembler_p.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

std::string g_included;

void AnswerEveryInclude(const char*, FILE*&, const char*& text)
{
    text = g_included.c_str();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool quiet = [] {
        nvFX::setMessageSink([](const char*) {});
        nvFX::setIncludeCallback(AnswerEveryInclude);
        return true;
    }();
    (void)quiet;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t split = input.find('\0');
    const std::string effectText = input.substr(0, split);
    g_included = split == std::string::npos ? std::string() : input.substr(split + 1);

    nvFX::detail::EffectDescription effect("fuzz");
    if (!nvFX::detail::parseEffect(effectText.c_str(), effect))
        return 0;
    for (const nvFX::detail::TechniqueDescription& technique : effect.techniques) {
        for (const nvFX::detail::PassDescription& pass : technique.passes) {
            bool any = false;
            for (const auto& stage : pass.stages) {
                for (const nvFX::detail::CodeReference& reference : stage)
                    if (!effect.findCode(reference.name))
                        std::abort();
                if (!stage.empty() && nvFX::detail::assembleStage(effect, stage).empty())
                    std::abort();
                any = any || !stage.empty();
            }
            if (!any)
                std::abort();
        }
    }
    return 0;
}
