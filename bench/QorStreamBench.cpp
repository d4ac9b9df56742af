// Stream write and read of a 64-parameter CgFX parameter set, beside a memcpy of the same
// bytes. The set comes from a generated effect (32 floats, 32 float4 colours) compiled and
// reflected by the Cg runtime, which needs no GL context.
#include "QorShaderParameters.h"

#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

const int kParameterCount = 64;

std::string GeneratedEffect()
{
    std::string source;
    std::string sum = "float4(0, 0, 0, 0)";
    for (int i = 0; i < kParameterCount; ++i) {
        const std::string n = std::to_string(i);
        if (i % 2) {
            source += "float4 colour" + n + " = {" + n + ", 0.5, 0.25, 1};\n";
            sum += " + colour" + n;
        } else {
            source += "float value" + n + " = " + n + ".5;\n";
            sum += " + value" + n;
        }
    }
    return source + "float4 mainPS() : COLOR { return " + sum + "; }\n" +
           "technique t { pass p { FragmentProgram = compile arbfp1 mainPS(); } }\n";
}

// The effect stays registered for the whole run; its default set is what is streamed.
QorShaderParameters* SixtyFourParameters(benchmark::State& state)
{
    static QorShaderEffect* effect = [] {
        static const std::string source = GeneratedEffect();
        QorShaderEffect* made = QorShaderEffect::AddShaderEffect("QorStreamBench64.cgfx");
        made->setBuffer(source.c_str());
        made->Generate();
        return made;
    }();
    auto* set = static_cast<QorShaderParameters*>(effect->GetParameters());
    if (!set || set->GetNbParameters() != kParameterCount + 1) {
        state.SkipWithError("the generated effect did not give 64 parameters");
        return nullptr;
    }
    return set;
}

std::vector<unsigned char> StreamedBytes(QorShaderParameters& set)
{
    QorStreamer streamer;
    set.Stream(streamer);
    return streamer.GetBytes();
}

void Report(benchmark::State& state, std::size_t bytes)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kParameterCount));
    state.counters["bytes"] = static_cast<double>(bytes);
}

void StreamWrite(benchmark::State& state)
{
    QorShaderParameters* set = SixtyFourParameters(state);
    if (!set)
        return;
    for (auto _ : state) {
        QorStreamer streamer;
        set->Stream(streamer);
        benchmark::DoNotOptimize(streamer.GetBytes().data());
    }
    Report(state, StreamedBytes(*set).size());
}
BENCHMARK(StreamWrite);

// Each read builds a fresh set, as UnStream appends to the values it finds.
void StreamRead(benchmark::State& state)
{
    QorShaderParameters* set = SixtyFourParameters(state);
    if (!set)
        return;
    QorStreamer streamer(StreamedBytes(*set));
    for (auto _ : state) {
        streamer.Rewind();
        QorShaderParameters read;
        read.UnStream(streamer);
        benchmark::DoNotOptimize(read.GetNbParameters());
    }
    if (streamer.IsFailed())
        state.SkipWithError("the stream did not read back");
    Report(state, streamer.GetBytes().size());
}
BENCHMARK(StreamRead);

void MemcpySameBytes(benchmark::State& state)
{
    QorShaderParameters* set = SixtyFourParameters(state);
    if (!set)
        return;
    const std::vector<unsigned char> bytes = StreamedBytes(*set);
    std::vector<unsigned char> copy(bytes.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    Report(state, bytes.size());
}
BENCHMARK(MemcpySameBytes);

} // namespace

BENCHMARK_MAIN();
