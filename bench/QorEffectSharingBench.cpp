// Effect sharing: many materials over a few effect files. The library's road (a shader
// object per material, SetFileName, GenerateParameters) compiles each effect once and
// shares it; the naive road calls cgCreateEffect on the raw Cg runtime once per
// material. Both roads run in every iteration, so their ratio comes from one run.
//
// Each effect of the library owns a Cg context, and cgGLRegisterStates loads libGL.so.1
// for every context and unloads it again when nothing else in the process holds it (our
// processes reach GL through GLVND's libOpenGL and libGLX). The second benchmark keeps
// libGL.so.1 loaded while it runs, as a renderer linked with it does.
#include "QorBenchSupport.h"

#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorIShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"

#include <Cg/cgGL.h>

#include <dlfcn.h>
#include <memory>
#include <string>
#include <vector>

namespace {

using QorBench::Clock;
using QorBench::SecondsSince;
using QorBench::Shader;

// The graphic-path folder of the naive road's include callback, which Cg calls
// without user data.
std::string& NaiveShaderFolder()
{
    static std::string folder;
    return folder;
}

// Cg asks for "/QorLighting.cgh"; it opens the file itself, so it gets the native path.
void NaiveInclude(CGcontext context, const char* name)
{
    cgSetCompilerIncludeFile(context, name, (NaiveShaderFolder() + name).c_str());
}

// The effect files of one run, written once for all its iterations.
struct SharingFiles
{
    QorBench::EffectFolder folder;
    std::vector<std::string> names;   // file names as materials give them to SetFileName
    std::vector<std::string> sources; // the same files' texts, for the naive road

    bool Make(int effects)
    {
        if (!folder.Ready())
            return false;
        const std::vector<std::string>& samples = QorBench::SampleMaterials();
        for (int variant = 0; variant < effects; ++variant) {
            const std::string& sample = samples[static_cast<size_t>(variant) % samples.size()];
            const std::optional<std::string> text = QorBench::Sample("materials/" + sample + ".cgfx");
            if (!text)
                return false;
            names.push_back(sample + "_" + std::to_string(variant) + ".cgfx");
            sources.push_back(QorBench::EffectVariant(*text, variant));
            if (folder.Write(names.back(), sources.back()).empty())
                return false;
        }
        NaiveShaderFolder() = folder.Path() + "/shaders";
        return true;
    }
};

// The library's road for every material; the number of effects it compiled, or -1 when
// a material got no parameters. Materials are destroyed (and the effects with the last
// of them) only after the clock stopped.
int BuildMaterials(const SharingFiles& files, int materials, std::vector<Shader>& built)
{
    int compilations = 0;
    for (int material = 0; material < materials; ++material) {
        Shader shader(QorShaderManager::CreateShader());
        if (!shader)
            return -1;
        shader->SetFileName(QorString(files.names[static_cast<size_t>(material) % files.names.size()].c_str()));
        QorIShaderEffect* effect = shader->GetIShaderEffect();
        const bool wasCompiled = effect && effect->Generated();
        if (!shader->GenerateParameters())
            return -1;
        if (!wasCompiled && effect->Generated())
            ++compilations;
        built.push_back(std::move(shader));
    }
    return compilations;
}

// The naive road: one context, one cgCreateEffect per material. False when one failed.
bool CreateEffectPerMaterial(const SharingFiles& files, int materials, QorBench::CgContext& context)
{
    context.reset(cgCreateContext());
    if (!context)
        return false;
    cgGLRegisterStates(context.get());
    cgSetAutoCompile(context.get(), CG_COMPILE_MANUAL);
    cgSetCompilerIncludeCallback(context.get(), NaiveInclude);
    for (int material = 0; material < materials; ++material)
        if (!cgCreateEffect(context.get(), files.sources[static_cast<size_t>(material) % files.sources.size()].c_str(),
                            nullptr))
            return false;
    return true;
}

struct LibraryClose
{
    void operator()(void* library) const { dlclose(library); }
};
using LoadedLibrary = std::unique_ptr<void, LibraryClose>;

void EffectSharing(benchmark::State& state, int materials, int effects, bool residentGL)
{
    SharingFiles files;
    if (!files.Make(effects)) {
        QorBench::Fail(state, "cannot write the effect files");
        return;
    }
    const LoadedLibrary gl(residentGL ? dlopen("libGL.so.1", RTLD_NOW | RTLD_LOCAL) : nullptr);
    if (residentGL && !gl) {
        QorBench::Fail(state, "cannot load libGL.so.1");
        return;
    }
    {
        // The Cg runtime's first context pays its one-time start-up; neither road should.
        const QorBench::CgContext warmUp(cgCreateContext());
    }
    double libraryTotal = 0;
    double naiveTotal = 0;
    int compilations = 0;
    for (auto _ : state) {
        std::vector<Shader> built;
        built.reserve(static_cast<size_t>(materials));
        const Clock::time_point libraryStart = Clock::now();
        compilations = BuildMaterials(files, materials, built);
        const double library = SecondsSince(libraryStart);
        built.clear();
        // The textured sample's file name was registered; its record goes now.
        QorShaderManager::CleanShaderTextureToDestroyList();

        QorBench::CgContext context;
        const Clock::time_point naiveStart = Clock::now();
        const bool naiveBuilt = CreateEffectPerMaterial(files, materials, context);
        const double naive = SecondsSince(naiveStart);
        context.reset();

        if (compilations < 0 || !naiveBuilt) {
            QorBench::Fail(state, compilations < 0 ? "a material got no parameters" : "cgCreateEffect failed");
            return;
        }
        if (compilations != effects) {
            // Not a time: a road that compiles more than once per file measures nothing shared.
            QorBench::Fail(state, "the library did not compile each effect file exactly once");
            return;
        }
        state.SetIterationTime(library);
        libraryTotal += library;
        naiveTotal += naive;
    }
    state.counters["materials"] = materials;
    state.counters["effects"] = effects;
    state.counters["compilations"] = compilations;
    state.counters["naive_compilations"] = materials;
    state.counters["naive_ms"] = benchmark::Counter(naiveTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["speedup"] = libraryTotal > 0 ? naiveTotal / libraryTotal : 0;
}

} // namespace

int main(int argc, char** argv)
{
    return QorBench::Main(argc, argv, [](bool smoke) {
        const int materials = smoke ? 40 : 1000;
        const int effects = smoke ? 5 : 50;
        for (const auto& [name, residentGL] :
             {std::pair{"EffectSharing", false}, std::pair{"EffectSharing/LibGLResident", true}})
            benchmark::RegisterBenchmark(name, EffectSharing, materials, effects, residentGL)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
    });
}
