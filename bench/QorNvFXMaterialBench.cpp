// GLSL-effect materials through the library's QRFX road.
//
// Sharing: many materials over a few ".glslfx" files. The library loads each file once
// and shares the effect (a shader object per material: SetFileName, GenerateParameters);
// the naive road loads the text into an nvFX container once per material.
//
// Per frame: 200 materials, each with its own 64-uniform effect, 8 values changed per
// material per frame. The library's road sets them through the shader object, pushes the
// changed ones into the effect's uniforms (UploadCurrentParameters, through the neutral
// interface) and sets the pass up, which sends the changed uniforms to GL; the raw road
// makes the same glUniform calls on the same GL programs. Needs a display (xvfb-run);
// without one the benchmark says so.
//
// Migration: 1,000 stored CgFX-era materials over 50 effects, registered with one
// migration as un-streaming a document registers them (a stored name and a parameter
// set read back from a stream), then migrated: each ".glslfx" twin is loaded once and
// shared, and the stored values are copied in by name.
//
// Loads print the binding's warnings on standard output: it goes to /dev/null while
// benchmarks run, and the runtime's messages to a sink that drops them.
#define GL_GLEXT_PROTOTYPES 1

#include "QorBenchSupport.h"

#include "QorGL/QorGLContext.h"
#include "QorVisShaderQRFX/QorQRFXFactory.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <nvFX/IContainer.h>
#include <nvFX/IPass.h>
#include <nvFX/IPassEx.h>
#include <nvFX/ITechnique.h>
#include <nvFX/nvFX.h>

#include <fcntl.h>

#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using QorBench::Clock;
using QorBench::SecondsSince;
using QorBench::Shader;

constexpr int kUniforms = 64;
constexpr int kChanged = 8;

bool IsColor(int uniform)
{
    return uniform % 4 == 3;
}

std::string UniformName(int uniform)
{
    return "Value" + std::to_string(uniform);
}

// An effect whose fragment program reads each of `uniforms` user uniforms (every fourth
// a vec4, the others floats), with a matrix bound by semantic; `variant` makes the text
// of each file its own.
std::string WideEffect(int uniforms, int variant)
{
    std::string text = "// variant " + std::to_string(variant) + "\n";
    text += "uniform mat4 WorldViewProj : WORLDVIEWPROJECTION;\n";
    std::string sum = "vec4 sum = vec4(0.0);\n";
    for (int u = 0; u < uniforms; ++u) {
        text += "uniform " + std::string(IsColor(u) ? "vec4 " : "float ") + UniformName(u) + " < UIMin = 0; > = " +
                (IsColor(u) ? "{0.5, 0.5, 0.5, 1}" : "0.5") + ";\n";
        sum += "    sum += " + (IsColor(u) ? UniformName(u) : "vec4(" + UniformName(u) + ")") + ";\n";
    }
    text += "GLSLShader VS { void main() { gl_Position = WorldViewProj * gl_Vertex; } }\n";
    text += "GLSLShader FS { void main() { " + sum + " gl_FragColor = sum; } }\n";
    text += "Technique Wide { Pass p0 { VertexProgram = VS; FragmentProgram = FS; } }\n";
    return text;
}

// Standard output and the runtime's messages are silenced while a benchmark lives.
class Quiet
{
public:
    Quiet() : m_saved(dup(STDOUT_FILENO)), m_sink(nvFX::setMessageSink([](const char*) {}))
    {
        std::fflush(stdout);
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) {
            dup2(null, STDOUT_FILENO);
            close(null);
        }
    }
    ~Quiet()
    {
        std::fflush(stdout);
        if (m_saved >= 0) {
            dup2(m_saved, STDOUT_FILENO);
            close(m_saved);
        }
        nvFX::setMessageSink(std::move(m_sink));
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    int m_saved;
    nvFX::MessageSink m_sink;
};

struct ContainerDestroy
{
    void operator()(nvFX::IContainer* container) const { nvFX::IContainer::destroy(container); }
};
using Container = std::unique_ptr<nvFX::IContainer, ContainerDestroy>;

Shader NewShader()
{
    return Shader(QorCreateQRFXShader());
}

void Sharing(benchmark::State& state, int materials, int effects)
{
    QorBench::EffectFolder folder;
    std::vector<std::string> names, sources;
    for (int variant = 0; variant < effects; ++variant) {
        names.push_back("wide_" + std::to_string(variant) + ".glslfx");
        sources.push_back(WideEffect(16, variant));
        if (!folder.Ready() || folder.Write(names.back(), sources.back()).empty()) {
            QorBench::Fail(state, "cannot write the effect files");
            return;
        }
    }
    const Quiet quiet;
    double libraryTotal = 0, naiveTotal = 0;
    int loads = 0;
    for (auto _ : state) {
        std::vector<Shader> built;
        loads = 0;
        const Clock::time_point libraryStart = Clock::now();
        for (int material = 0; material < materials; ++material) {
            Shader shader = NewShader();
            shader->SetFileName(QorString(names[static_cast<size_t>(material % effects)].c_str()));
            const bool loaded = shader->GetIShaderEffect() && shader->GetIShaderEffect()->Generated();
            if (!shader->GenerateParameters()) {
                QorBench::Fail(state, "a material got no parameters");
                return;
            }
            loads += loaded ? 0 : 1;
            built.push_back(std::move(shader));
        }
        const double library = SecondsSince(libraryStart);
        built.clear();

        std::vector<Container> naive;
        const Clock::time_point naiveStart = Clock::now();
        for (int material = 0; material < materials; ++material) {
            naive.emplace_back(nvFX::IContainer::create("naive"));
            if (!nvFX::loadEffect(naive.back().get(), sources[static_cast<size_t>(material % effects)].c_str())) {
                QorBench::Fail(state, "a naive load failed");
                return;
            }
        }
        const double naiveTime = SecondsSince(naiveStart);
        if (loads != effects) {
            QorBench::Fail(state, "the library did not load each effect file exactly once");
            return;
        }
        state.SetIterationTime(library);
        libraryTotal += library;
        naiveTotal += naiveTime;
    }
    state.counters["materials"] = materials;
    state.counters["loads"] = loads;
    state.counters["naive_loads"] = materials;
    state.counters["speedup"] = libraryTotal > 0 ? naiveTotal / libraryTotal : 0;
}

// The CgFX effect a stored material of the migration benchmark was made with: the
// uniforms of WideEffect, in Cg.
std::string WideCgEffect(int uniforms, int variant)
{
    std::string text = "// variant " + std::to_string(variant) + "\n";
    text += "float4x4 WorldViewProj : WORLDVIEWPROJECTION;\n";
    std::string sum = "float4 sum = 0;\n";
    for (int u = 0; u < uniforms; ++u) {
        text += (IsColor(u) ? "float4 " : "float ") + UniformName(u) + " = " +
                (IsColor(u) ? "{0.5, 0.5, 0.5, 1}" : "0.5") + ";\n";
        sum += "    sum += " + UniformName(u) + ";\n";
    }
    text += "float4 VS(float4 p : POSITION) : POSITION { return mul(WorldViewProj, p); }\n";
    text += "float4 PS() : COLOR { " + sum + " return sum; }\n";
    text += "technique Wide { pass p0 { VertexProgram = compile arbvp1 VS(); FragmentProgram = compile arbfp1 PS(); } }\n";
    return text;
}

// The values a document stores for a CgFX material of `name`, with every float
// changed: its parameter set written to a stream, as a document holds it.
std::unique_ptr<QorStreamer> StoredValues(const std::string& name)
{
    Shader shader(QorShaderManager::CreateShader(QorFxCgFX));
    shader->SetFileName(QorString(name.c_str()));
    if (!shader->GenerateParameters())
        return nullptr;
    for (int index = 1; index < shader->GetNbParameters(); ++index)
        if (shader->GetParameterType(index) == QorValueFloat)
            shader->SetParameterFloat(index, 0.25f);
    auto stream = std::make_unique<QorStreamer>();
    shader->GetIShaderParameters()->Stream(*stream);
    return stream;
}

void Migration(benchmark::State& state, int materials, int effects)
{
    QorBench::EffectFolder folder;
    std::vector<std::unique_ptr<QorNvFXShaderParameters>> stored;
    const Quiet quiet;
    for (int variant = 0; variant < effects; ++variant) {
        const std::string name = "wide_" + std::to_string(variant);
        if (!folder.Ready() || folder.Write(name + ".glslfx", WideEffect(16, variant)).empty() ||
            folder.Write(name + ".cgfx", WideCgEffect(16, variant)).empty()) {
            QorBench::Fail(state, "cannot write the effect files");
            return;
        }
        const std::unique_ptr<QorStreamer> stream = StoredValues(name + ".cgfx");
        stored.push_back(std::make_unique<QorNvFXShaderParameters>());
        if (!stream || (stored.back()->UnStream(*stream), stored.back()->GetNbParameters() < 2)) {
            QorBench::Fail(state, "a CgFX effect did not compile");
            return;
        }
    }
    std::size_t loads = 0;
    double total = 0;
    for (auto _ : state) {
        std::vector<Shader> shaders;
        for (int material = 0; material < materials; ++material)
            shaders.push_back(NewShader());
        QorShaderQRFXMigration migration;
        const Clock::time_point start = Clock::now();
        for (int material = 0; material < materials; ++material) {
            const int variant = material % effects;
            const QorUnicodeString storedName(("C:\\old\\wide_" + std::to_string(variant) + ".cgfx").c_str());
            migration.AddShaderToMigrate(shaders[static_cast<size_t>(material)].get(), storedName,
                                         stored[static_cast<size_t>(variant)].get());
        }
        migration.MigrateToQRFX();
        const double seconds = SecondsSince(start);
        state.SetIterationTime(seconds);
        total += seconds;
        std::set<QorIShaderEffect*> loaded;
        for (const Shader& shader : shaders)
            loaded.insert(shader->GetIShaderEffect());
        loads = loaded.count(nullptr) ? 0 : loaded.size();
        float value = 0;
        shaders.back()->GetParameterFloat(1, &value);
        if (loads != static_cast<std::size_t>(effects) || value != 0.25f) {
            QorBench::Fail(state, "the migration did not load each effect once and carry the values");
            return;
        }
    }
    state.counters["materials"] = materials;
    state.counters["loads"] = static_cast<double>(loads);
    state.counters["us_per_material"] = total * 1e6 / (static_cast<double>(state.iterations()) * materials);
}

// The materials of the per-frame benchmark and the GL programs both roads feed. Each
// material has an effect of its own (the same source under its own name), so its
// uniforms keep its values between frames and a frame pushes what changed; each effect's
// pass links a GL program of its own, which both roads make current in turn.
struct Frame
{
    struct Material
    {
        Shader shader;
        QorIShaderEffect* effect = nullptr; // borrowed: the shader holds it
        nvFX::IPass* pass = nullptr;
        GLuint program = 0;
        std::vector<GLint> locations; // of Value0 ... Value63
        std::vector<int> changed;     // parameter indexes the material sets
    };
    std::vector<Material> materials;

    bool Build(int count)
    {
        const std::string text = WideEffect(kUniforms, 0);
        for (int m = 0; m < count; ++m) {
            Material material;
            material.shader = NewShader();
            material.shader->SetBuffer(text.c_str(), ("per-frame-" + std::to_string(m) + ".glslfx").c_str());
            if (!material.shader->GenerateParameters() || material.shader->GetNbParameters() != kUniforms + 1)
                return false;
            material.effect = material.shader->GetIShaderEffect();
            // The raw road drives the pass's program directly, as a renderer's driver does.
            auto* effect = static_cast<QorNvFXEffect*>(material.effect);
            material.pass = effect->GetCurrentTechnique() ? effect->GetCurrentTechnique()->getPass(0) : nullptr;
            if (!material.pass || !material.pass->validate())
                return false;
            material.program = material.pass->getExInterface()->getProgram();
            for (int u = 0; u < kUniforms; ++u)
                material.locations.push_back(glGetUniformLocation(material.program, UniformName(u).c_str()));
            for (int k = 0; k < kChanged; ++k)
                material.changed.push_back((m * kChanged + k) % kUniforms + 1);
            materials.push_back(std::move(material));
        }
        return true;
    }

    // The library's road through the renderer's calls: the shader object's setters,
    // SetCurrentParameters, the effect's upload, and the pass's setup, which sends the
    // changed uniforms to GL.
    void Library(float time)
    {
        for (Material& material : materials) {
            QorIShader& shader = *material.shader;
            for (int index : material.changed) {
                if (IsColor(index - 1))
                    shader.SetParameterColor(index, time, 0.5f, 0.25f, 1.0f);
                else
                    shader.SetParameterFloat(index, time);
            }
            shader.SetCurrentParameters();
            material.effect->UploadCurrentParameters(true);
            material.pass->setup();
            material.pass->restore();
        }
    }

    void Raw(float time)
    {
        for (Material& material : materials) {
            glUseProgram(material.program);
            for (int index : material.changed) {
                const GLint location = material.locations[static_cast<size_t>(index - 1)];
                if (IsColor(index - 1))
                    glUniform4f(location, time, 0.5f, 0.25f, 1.0f);
                else
                    glUniform1f(location, time);
            }
            glUseProgram(0);
        }
    }
};

void PerFrame(benchmark::State& state, int materials)
{
    QorGLContext gl;
    if (!gl.Open(16, 16)) {
        state.SkipWithError(("needs a display (xvfb-run): " + gl.GetError()).c_str());
        return;
    }
    const Quiet quiet;
    Frame frame;
    if (!frame.Build(materials)) {
        QorBench::Fail(state, "cannot build the materials of the wide effect");
        return;
    }
    frame.Library(0.0f);
    glFinish();
    QorBench::RoadComparison roads;
    int count = 0;
    for (auto _ : state) {
        const float time = static_cast<float>(++count) * 1e-3f;
        const QorBench::RoadTimes times = QorBench::TimeBothRoads(
            count, [&] { frame.Library(time); }, [&] { frame.Raw(time); }, [] { glFinish(); });
        state.SetIterationTime(times.library);
        roads.Add(times);
    }
    roads.Report(state);
}

} // namespace

int main(int argc, char** argv)
{
    return QorBench::Main(argc, argv, [](bool smoke) {
        benchmark::RegisterBenchmark("NvFXSharing", Sharing, smoke ? 40 : 1000, smoke ? 5 : 50)
            ->UseManualTime()
            ->Iterations(smoke ? 1 : 3)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("NvFXMigration", Migration, smoke ? 40 : 1000, smoke ? 5 : 50)
            ->UseManualTime()
            ->Iterations(smoke ? 1 : 3)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("NvFXPerFrame", PerFrame, 200)->UseManualTime()->Unit(benchmark::kMicrosecond);
        // How the ratio moves with the number of materials: one material's objects stay
        // in the caches; 200 materials' objects do not, where the raw road's few do.
        for (int count : {1, 10})
            benchmark::RegisterBenchmark(("NvFXPerFrame/materials:" + std::to_string(count)).c_str(), PerFrame, count)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
    });
}
