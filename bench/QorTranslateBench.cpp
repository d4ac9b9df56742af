// Translating a CgFX effect into a GLSL effect against compiling it through the CgFX
// road. A translation compiles the effect as the CgFX road does, compiles each pass
// program again for its GLSL profile, writes the text and loads it through the GLSL
// effect runtime (glslang) to check it. The CgFX road's cost is counted two ways: the
// effect alone (GenerateShader; "compile_ms", "ratio"), and the effect with every pass
// program compiled for its own profile, as validating each technique compiles them
// ("road_ms", "road_ratio"). All run over the same sample in every iteration, so the
// ratios come from one run.
#include "QorBenchSupport.h"

#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaderTranslate/QorCgFXTranslator.h"

#include <cstdio>
#include <string>

namespace {

using QorBench::Clock;
using QorBench::SecondsSince;

void Translate(benchmark::State& state, std::string sample)
{
    QorBench::EffectFolder folder;
    const std::optional<std::string> text = QorBench::Sample("materials/" + sample + ".cgfx");
    if (!folder.Ready() || !text)
        return QorBench::Fail(state, "cannot lay out the sample");
    const QorCgFXTranslator translator;
    double compileTotal = 0, roadTotal = 0, translateTotal = 0;
    for (auto _ : state) {
        auto start = Clock::now();
        QorShaderEffect* effect = QorShaderEffect::AddShaderEffect(nullptr);
        effect->setBuffer(text->c_str());
        const bool compiled = effect->GenerateShader() != nullptr;
        const double compile = SecondsSince(start);
        for (CGtechnique technique = cgGetFirstTechnique(effect->GetCgEffect()); technique;
             technique = cgGetNextTechnique(technique))
            for (CGpass pass = cgGetFirstPass(technique); pass; pass = cgGetNextPass(pass))
                for (const CGdomain domain : {CG_VERTEX_DOMAIN, CG_GEOMETRY_DOMAIN, CG_FRAGMENT_DOMAIN})
                    if (const CGprogram program = cgGetPassProgram(pass, domain))
                        cgCompileProgram(program);
        const double road = SecondsSince(start);
        effect->Release();

        start = Clock::now();
        const QorCgFXTranslation translation = translator.TranslateText(sample + ".cgfx", *text);
        const double translate = SecondsSince(start);
        if (!compiled || !translation.translated)
            return QorBench::Fail(state, "the sample does not compile or translate");
        compileTotal += compile;
        roadTotal += road;
        translateTotal += translate;
        state.SetIterationTime(translate);
    }
    state.counters["compile_ms"] = benchmark::Counter(compileTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = compileTotal > 0 ? translateTotal / compileTotal : 0;
    state.counters["road_ms"] = benchmark::Counter(roadTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["road_ratio"] = roadTotal > 0 ? translateTotal / roadTotal : 0;
}

} // namespace

int main(int argc, char** argv)
{
    // The GLSL runtime's load prints its notes on standard output; the figures go there too.
    return QorBench::Main(argc, argv, [](bool) {
        for (const std::string& sample : QorBench::SampleMaterials())
            benchmark::RegisterBenchmark(("Translate/" + sample).c_str(), Translate, sample)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
    });
}
