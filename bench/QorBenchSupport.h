/// @file
/// Helpers shared by the benchmark programs: how big a run is, a temporary folder that
/// the library's search paths point at (with the samples' lighting include under
/// "shaders"), generated effects, the Cg context holder of the raw roads, and a `main`
/// that turns a failed setup into a failed run. Header-only: each benchmark program is
/// one source file.
#pragma once

#include "QorSystem/QorEnvironment.h"
#include "QorVisShaders/QorIShader.h"

#include <Cg/cg.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <unistd.h>

namespace QorBench {

/// True when the command line asks for a smoke run: a --benchmark_min_time below 0.01 s
/// or counted in iterations ("10x"), as CTest passes. Benchmarks then shrink their sizes
/// so that every program stays a matter of seconds, also in the sanitizer build;
/// scripts/bench passes no such option and measures the full sizes.
inline bool IsSmokeRun(int argc, char** argv)
{
    const std::string option = "--benchmark_min_time=";
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, option.size(), option) != 0)
            continue;
        const std::string value = argument.substr(option.size());
        if (!value.empty() && value.back() == 'x')
            return true;
        return std::strtod(value.c_str(), nullptr) < 0.01;
    }
    return false;
}

/// Set when a benchmark could not build what it measures; main then fails the run so a
/// broken benchmark cannot pass unnoticed in CI.
inline bool& SetupFailed()
{
    static bool failed = false;
    return failed;
}

/// Ends the benchmark with an error (Google Benchmark prints it) and fails the run.
inline void Fail(benchmark::State& state, const char* message)
{
    SetupFailed() = true;
    state.SkipWithError(message);
}

/// The whole content of a file; nothing when it cannot be read.
inline std::optional<std::string> ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

/// A sample shipped with the library, by its path under samples/.
inline std::optional<std::string> Sample(const std::string& relative)
{
    return ReadFile(std::string(QOR_SAMPLES_DIR) + "/" + relative);
}

/// Sets a variable for the folder's lifetime and restores its earlier state after.
class ScopedEnv
{
public:
    ScopedEnv(const char* name, const char* value) : m_name(name)
    {
        if (const char* old = QorGetEnv(name))
            m_old = old;
        QorSetEnv(name, value);
    }
    ~ScopedEnv() { QorSetEnv(m_name.c_str(), m_old ? m_old->c_str() : nullptr); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

/// A fresh temporary folder laid out as the framework's graphic path: effects at its
/// top, the samples' QorLighting.cgh under "shaders/". While it lives, "QorGraphicPath"
/// and "QorTemp" name it and "QorStartupPath" is unset, so the library finds effects and
/// includes there and nowhere else; "QorShaderCache" is "", so GLSL effects are compiled
/// from source, not read from a cache an earlier iteration filled. Removed with its content.
class EffectFolder
{
public:
    EffectFolder()
    {
        std::error_code error;
        std::string pattern = (std::filesystem::temp_directory_path(error) / "qorbench-XXXXXX").string();
        if (error || !mkdtemp(pattern.data()))
            return;
        m_path = pattern;
        const std::optional<std::string> lighting = Sample("shaders/QorLighting.cgh");
        m_ready = lighting && !Write("shaders/QorLighting.cgh", *lighting).empty();
        m_graphic.emplace("QorGraphicPath", m_path.c_str());
        m_temp.emplace("QorTemp", m_path.c_str());
    }
    ~EffectFolder()
    {
        if (m_path.empty())
            return;
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    EffectFolder(const EffectFolder&) = delete;
    EffectFolder& operator=(const EffectFolder&) = delete;

    /// False when the folder or the lighting include could not be made.
    bool Ready() const { return m_ready; }
    const std::string& Path() const { return m_path; }
    /// Writes `content` to Path()/relative, making folders on the way; the written
    /// path, or "" on failure.
    std::string Write(const std::string& relative, const std::string& content) const
    {
        const std::filesystem::path path = std::filesystem::path(m_path) / relative;
        std::error_code error;
        std::filesystem::create_directories(path.parent_path(), error);
        std::ofstream out(path, std::ios::binary);
        out << content;
        return !error && out ? path.string() : std::string();
    }

private:
    std::string m_path;
    bool m_ready = false;
    ScopedEnv m_startup{"QorStartupPath", nullptr};
    ScopedEnv m_cache{"QorShaderCache", ""};
    std::optional<ScopedEnv> m_graphic;
    std::optional<ScopedEnv> m_temp;
};

/// The five sample materials the sharing benchmark derives its effect files from.
inline const std::vector<std::string>& SampleMaterials()
{
    static const std::vector<std::string> names = {"plastic", "brushed_metal", "chrome", "textured", "toon"};
    return names;
}

/// A distinct effect file made from a sample: its text after two lines naming the
/// variant, so that no two variants are the same file while each compiles as the
/// sample does.
inline std::string EffectVariant(const std::string& sampleText, int variant)
{
    return "// generated variant " + std::to_string(variant) + " of a sample material\n" +
           "#define QOR_VARIANT " + std::to_string(variant) + "\n" + sampleText;
}

/// User parameters of the wide effect: in every run of eight, the fourth and the eighth
/// are colours (float4), the others floats with UI ranges.
inline bool WideParameterIsColor(int parameter)
{
    return parameter % 8 == 3 || parameter % 8 == 7;
}

inline std::string WideParameterName(int parameter)
{
    return (WideParameterIsColor(parameter) ? "Color" : "Value") + std::to_string(parameter);
}

/// An effect with `userParameters` user parameters (see WideParameterIsColor), the four
/// matrices a renderer binds by semantic, and one technique whose fragment program reads
/// every parameter, so none is a dead uniform.
inline std::string WideEffect(int userParameters)
{
    std::ostringstream text;
    text << "// A material with many user parameters, generated for the benchmarks.\n"
            "float4x4 WorldViewProj : WORLDVIEWPROJECTION;\n"
            "float4x4 World : WORLD;\n"
            "float4x4 WorldIT : WORLDINVERSETRANSPOSE;\n"
            "float4x4 ViewI : VIEWINVERSE;\n";
    for (int i = 0; i < userParameters; ++i) {
        if (WideParameterIsColor(i))
            text << "float4 " << WideParameterName(i) << " < string UIWidget = \"Color\"; > = {0.5, 0.25, "
                 << i % 10 * 0.1 << ", 1.0};\n";
        else
            text << "float " << WideParameterName(i) << " < float UIMin = 0.0; float UIMax = 10.0; "
                 << "float UIStep = 0.5; > = " << i % 10 << ".0;\n";
    }
    text << "struct VertexOut { float4 position : POSITION; float3 normal : TEXCOORD0; };\n"
            "VertexOut WideVS(float4 position : POSITION, float3 normal : NORMAL)\n"
            "{\n"
            "    VertexOut result;\n"
            "    result.position = mul(WorldViewProj, position);\n"
            "    result.normal = mul(WorldIT, float4(normal, 0)).xyz + mul(World, position).xyz + ViewI[0].xyz;\n"
            "    return result;\n"
            "}\n"
            "float4 WidePS(VertexOut input) : COLOR\n"
            "{\n"
            "    float4 sum = float4(input.normal, 1);\n";
    for (int i = 0; i < userParameters; ++i)
        text << "    sum " << (WideParameterIsColor(i) ? "*= " : "+= ") << WideParameterName(i) << ";\n";
    text << "    return sum;\n"
            "}\n"
            "technique Wide\n"
            "{\n"
            "    pass p0\n"
            "    {\n"
            "        VertexProgram = compile glslv WideVS();\n"
            "        FragmentProgram = compile glslf WidePS();\n"
            "    }\n"
            "}\n";
    return text.str();
}

struct ShaderDestroy
{
    void operator()(QorIShader* shader) const { shader->Destroy(); }
};
/// A material: a shader object from QorShaderManager::CreateShader, owned by the caller.
using Shader = std::unique_ptr<QorIShader, ShaderDestroy>;

using Clock = std::chrono::steady_clock;

inline double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The seconds of one frame on each of two roads measured against each other.
struct RoadTimes
{
    double library = 0;
    double other = 0;
};

/// Runs `library` and `other` once each, the library first on even `frame`s and second
/// on odd ones, so that neither road always finds the caches the other warmed.
/// `finish` runs after each road, inside its time (a GL road waits for the driver).
template <typename Library, typename Other, typename Finish>
RoadTimes TimeBothRoads(int frame, Library library, Other other, Finish finish)
{
    RoadTimes times;
    for (int road = 0; road < 2; ++road) {
        const bool libraryRoad = (road == 0) == (frame % 2 == 0);
        const Clock::time_point start = Clock::now();
        if (libraryRoad)
            library();
        else
            other();
        finish();
        (libraryRoad ? times.library : times.other) = SecondsSince(start);
    }
    return times;
}

/// The frames of two roads measured against each other. The overhead reported is the
/// median of each frame's own ratio: both roads of a frame run microseconds apart, so a
/// frame the machine interrupted on one road moves one ratio, not the result.
class RoadComparison
{
public:
    void Add(const RoadTimes& times)
    {
        m_library += times.library;
        m_other += times.other;
        if (times.other > 0)
            m_ratios.push_back(times.library / times.other);
    }

    /// Sets "overhead" (library over other) and "raw_us" (the other road's mean frame).
    void Report(benchmark::State& state)
    {
        state.counters["raw_us"] = benchmark::Counter(m_other * 1e6, benchmark::Counter::kAvgIterations);
        if (m_ratios.empty())
            return;
        const auto middle = m_ratios.begin() + static_cast<std::ptrdiff_t>(m_ratios.size() / 2);
        std::nth_element(m_ratios.begin(), middle, m_ratios.end());
        state.counters["overhead"] = *middle;
    }

    double Library() const { return m_library; }
    double Other() const { return m_other; }

private:
    double m_library = 0;
    double m_other = 0;
    std::vector<double> m_ratios;
};

struct CgContextFree
{
    void operator()(CGcontext context) const { cgDestroyContext(context); }
};
/// A Cg context of a raw road; destroying it destroys every effect made in it.
using CgContext = std::unique_ptr<std::remove_pointer_t<CGcontext>, CgContextFree>;

/// Google Benchmark's main with the smoke-run switch: `registerAll(smoke)` registers the
/// program's benchmarks at the sizes of the run. Returns non-zero when a benchmark
/// failed its setup or an argument was not understood.
template <typename Register>
int Main(int argc, char** argv, Register registerAll)
{
    registerAll(IsSmokeRun(argc, argv));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return SetupFailed() ? 1 : 0;
}

} // namespace QorBench
