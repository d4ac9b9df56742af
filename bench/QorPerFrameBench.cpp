// Per-frame cost of driving many CgFX materials. Each frame, every material sets some of
// its values through the shader object, is made current (SetCurrentParameters, then the
// effect's UploadCurrentParameters through the neutral interface, pushing only what
// changed) and gets its effect's bound matrices; the raw road makes the same
// cgSetParameter* calls directly. Every iteration draws one frame on each road,
// alternating which goes first, so their ratio comes from one run. No GL context:
// cgSetParameter* works without one, and nothing is drawn.
#include "QorBenchSupport.h"

#include "QorMath/Qor4x4Matrix.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorIShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace {

using QorBench::Clock;
using QorBench::SecondsSince;
using QorBench::Shader;

constexpr int kUserParameters = 64;
constexpr int kValuesPerMaterial = 8;
constexpr QorFeed kBoundMatrices[] = {QorFeedWorldViewProjection, QorFeedWorld, QorFeedWorldInverseTranspose,
                                      QorFeedViewInverse};

// One value a material changes every frame: where the shader object finds it and the
// Cg parameter the raw road sets.
struct ChangedValue
{
    int index;         // parameter index of the shader object (from 1)
    bool color;        // float4 colour, else float
    CGparameter handle;
};

struct Material
{
    Shader shader;
    QorIShaderEffect* effect = nullptr; // borrowed: the shader holds it
    std::array<ChangedValue, kValuesPerMaterial> changed;
    std::vector<ChangedValue> all;      // every user value, for the raw road's switches
    std::vector<CGparameter> matrices;  // the bound matrices the renderer feeds
    Qor4x4Matrix world;
};

// What a frame does besides making materials current.
enum class FrameKind
{
    Changed,   // each material sets its values; only those are pushed
    Unchanged, // no value changes: the library walks values that need no push
    Full,      // each material sets its values and pushes all of them
};

// The materials and the handles both roads feed. Each material has an effect of its own
// (the same source under its own name), as a scene of distinct materials does: its
// parameters keep its values between frames, so a frame pushes what changed. With
// `sharedEffect`, every material draws with one effect: switching materials pushes each
// whole on both roads, since the effect's parameters hold the previous material's values.
class Scene
{
public:
    bool Build(int materials, bool sharedEffect)
    {
        const std::string text = QorBench::WideEffect(kUserParameters);
        m_shared = sharedEffect;
        if (!m_folder.Ready())
            return false;
        for (int m = 0; m < materials; ++m) {
            Material material{Shader(QorShaderManager::CreateShader()), nullptr, {}, {}, {}, {}};
            if (!material.shader)
                return false;
            material.shader->SetBuffer(text.c_str(), sharedEffect ? "wide.cgfx" : ("wide-" + std::to_string(m)).c_str());
            if (!material.shader->GenerateParameters() ||
                material.shader->GetNbParameters() != kUserParameters + 1 ||
                material.shader->GetImplementation() != QorFxCgFX)
                return false;
            material.effect = material.shader->GetIShaderEffect();
            // The raw road feeds the Cg parameters of the material's effect directly, as a
            // renderer's CgFX driver does.
            const auto& effect = static_cast<const QorShaderEffect&>(*material.effect);
            for (int parameter = 0; parameter < kUserParameters; ++parameter) {
                const std::string name = QorBench::WideParameterName(parameter);
                material.all.push_back({material.shader->GetParameterIndex(name.c_str()),
                                        QorBench::WideParameterIsColor(parameter),
                                        cgGetNamedEffectParameter(effect.GetCgEffect(), name.c_str())});
                if (material.all.back().index < 1 || !material.all.back().handle)
                    return false;
            }
            for (int k = 0; k < kValuesPerMaterial; ++k)
                material.changed[static_cast<size_t>(k)] =
                    material.all[static_cast<size_t>((m * kValuesPerMaterial + k) % kUserParameters)];
            for (QorFeed which : kBoundMatrices) {
                material.matrices.push_back(effect.GetFeedParameter(which));
                if (!material.matrices.back())
                    return false;
            }
            material.world.At(0, 3) = static_cast<float>(m);
            m_materials.push_back(std::move(material));
        }
        return true;
    }

    // The library's road for one frame, through the renderer's calls: the shader object's
    // setters, SetCurrentParameters and the effect's upload.
    void LibraryFrame(FrameKind kind, float time)
    {
        for (Material& material : m_materials) {
            QorIShader& shader = *material.shader;
            if (kind != FrameKind::Unchanged)
                for (const ChangedValue& value : material.changed) {
                    if (value.color)
                        shader.SetParameterColor(value.index, time, 0.5f, 0.25f, 1.0f);
                    else
                        shader.SetParameterFloat(value.index, time);
                }
            shader.SetCurrentParameters();
            material.effect->UploadCurrentParameters(kind != FrameKind::Full);
            if (m_feedMatrices)
                SetMatrices(material);
        }
    }

    // The same frame with raw Cg calls; a material switch on a shared effect sets all its
    // values.
    void RawFrame(FrameKind kind, float time)
    {
        for (Material& material : m_materials) {
            if (kind == FrameKind::Changed && !m_shared)
                SetRaw(material.changed.begin(), material.changed.end(), time);
            else if (kind != FrameKind::Unchanged)
                SetRaw(material.all.begin(), material.all.end(), time);
            SetMatrices(material);
        }
    }

    int Materials() const { return static_cast<int>(m_materials.size()); }
    /// Whether frames feed the bound matrices (the same work on both roads).
    void FeedMatrices(bool feed) { m_feedMatrices = feed; }

private:
    template <typename Iterator>
    static void SetRaw(Iterator first, Iterator last, float time)
    {
        for (; first != last; ++first) {
            if (first->color)
                cgSetParameter4f(first->handle, time, 0.5f, 0.25f, 1.0f);
            else
                cgSetParameter1f(first->handle, time);
        }
    }

    static void SetMatrices(const Material& material)
    {
        for (CGparameter matrix : material.matrices)
            cgSetMatrixParameterfr(matrix, material.world.Data());
    }

    QorBench::EffectFolder m_folder;
    std::vector<Material> m_materials;
    bool m_shared = false;
    bool m_feedMatrices = true;
};

// Builds the scene or fails the benchmark.
bool Build(Scene& scene, benchmark::State& state, int materials, bool sharedEffect = false)
{
    if (scene.Build(materials, sharedEffect))
        return true;
    QorBench::Fail(state, "cannot build the materials of the wide effect");
    return false;
}

void PerFrame(benchmark::State& state, FrameKind kind, int materials, bool sharedEffect)
{
    Scene scene;
    if (!Build(scene, state, materials, sharedEffect))
        return;
    // One frame on each road first, so both start from values already pushed once.
    scene.LibraryFrame(FrameKind::Full, 0.0f);
    scene.RawFrame(FrameKind::Full, 0.0f);
    QorBench::RoadComparison roads;
    int frame = 0;
    for (auto _ : state) {
        const float time = static_cast<float>(++frame) * 1e-3f;
        const QorBench::RoadTimes times = QorBench::TimeBothRoads(
            frame, [&] { scene.LibraryFrame(kind, time); }, [&] { scene.RawFrame(kind, time); }, [] {});
        state.SetIterationTime(times.library);
        roads.Add(times);
    }
    state.counters["materials"] = scene.Materials();
    roads.Report(state);
    if (kind == FrameKind::Unchanged) {
        // What the values that no one touched cost the library, each.
        const double values = static_cast<double>(state.iterations()) * scene.Materials() * kUserParameters;
        state.counters["ns_per_unchanged_value"] = values > 0 ? (roads.Library() - roads.Other()) * 1e9 / values : 0;
    }
}

// The library's frame where no value changed against its frame where all 64 values of
// every material changed and were pushed, both without the matrices: what the values
// alone cost when nothing needs pushing.
void UnchangedShare(benchmark::State& state, int materials)
{
    Scene scene;
    if (!Build(scene, state, materials))
        return;
    scene.FeedMatrices(false);
    scene.LibraryFrame(FrameKind::Full, 0.0f);
    double unchanged = 0;
    double full = 0;
    int frame = 0;
    for (auto _ : state) {
        const float time = static_cast<float>(++frame) * 1e-3f;
        Clock::time_point start = Clock::now();
        scene.LibraryFrame(FrameKind::Unchanged, time);
        const double quiet = SecondsSince(start);
        start = Clock::now();
        scene.LibraryFrame(FrameKind::Full, time);
        full += SecondsSince(start);
        unchanged += quiet;
        state.SetIterationTime(quiet);
    }
    state.counters["unchanged_over_full"] = full > 0 ? unchanged / full : 0;
}

} // namespace

int main(int argc, char** argv)
{
    return QorBench::Main(argc, argv, [](bool smoke) {
        // The sizes are small enough for a smoke run as they are.
        const int materials = 200;
        for (const auto& [name, kind] : {std::pair{"PerFrame/Changed8", FrameKind::Changed},
                                         std::pair{"PerFrame/Unchanged", FrameKind::Unchanged},
                                         std::pair{"PerFrame/FullUpload", FrameKind::Full}})
            benchmark::RegisterBenchmark(name, PerFrame, kind, materials, false)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
        // Materials that share one effect: every switch pushes the whole set on both roads.
        benchmark::RegisterBenchmark("PerFrame/SharedEffectSwitch", PerFrame, FrameKind::Changed, materials, true)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
        // How the ratio moves with the number of materials: from 8 on, the frame reaches
        // all 64 Cg parameters, and every material adds its own data to what Cg works beside.
        for (int count : {1, 10, 800})
            benchmark::RegisterBenchmark(("PerFrame/Changed8/materials:" + std::to_string(count)).c_str(), PerFrame,
                                         FrameKind::Changed, count, false)
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
        // Each iteration also draws a full frame, a hundred times longer than the timed one.
        benchmark::RegisterBenchmark("PerFrame/UnchangedShare", UnchangedShare, materials)
            ->UseManualTime()
            ->Iterations(smoke ? 2 : 300)
            ->Unit(benchmark::kMicrosecond);
    });
}
