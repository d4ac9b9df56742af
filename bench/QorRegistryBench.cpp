// Registry scaling: the cost of one operation on the effect registry and the texture
// registry as the number of registered entries grows. Operations visit entries in a
// fixed pseudo-random order. Look-ups run twice: over 16 names spread evenly through the
// registry (the same amount of work at every size, so only the registry's structure can
// make it grow) and over every registered name (which adds the memory latency of a data
// set that outgrows the caches). Nothing is compiled: registering an effect does not
// compile it.
#include "QorBenchSupport.h"

#include "QorVisShaders/QorShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

// Names as a renderer gives them: a folder and a file, longer than a short-string buffer.
std::vector<std::string> EntryNames(const char* kind, int count)
{
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        names.push_back(std::string("materials/library/") + kind + "_" + std::to_string(i) + ".entry");
    return names;
}

// A fixed permutation of `distinct` entries of [0, count), spread evenly over the range,
// visited in a loop by the timed operations. A `distinct` of 0 or above `count` takes
// every entry.
class LookupOrder
{
public:
    LookupOrder(int count, int distinct)
    {
        if (distinct <= 0 || distinct > count)
            distinct = count;
        for (int i = 0; i < distinct; ++i)
            m_order.push_back(static_cast<int>(static_cast<std::int64_t>(i) * count / distinct));
        std::uint32_t state = 0x9e3779b9u;
        for (size_t i = m_order.size(); i > 1; --i) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            std::swap(m_order[i - 1], m_order[state % i]);
        }
    }
    int Next()
    {
        const int next = m_order[m_position];
        m_position = m_position + 1 == m_order.size() ? 0 : m_position + 1;
        return next;
    }

private:
    std::vector<int> m_order;
    size_t m_position = 0;
};

// Effects registered under `names`, each with the one reference made at registration;
// released newest first, so that every removal finds its entry at the end.
class RegisteredEffects
{
public:
    explicit RegisteredEffects(const std::vector<std::string>& names)
    {
        m_effects.reserve(names.size());
        for (const std::string& name : names)
            m_effects.push_back(QorShaderEffect::AddShaderEffect(name.c_str()));
    }
    ~RegisteredEffects()
    {
        for (auto effect = m_effects.rbegin(); effect != m_effects.rend(); ++effect)
            if (*effect)
                (*effect)->Release();
    }
    RegisteredEffects(const RegisteredEffects&) = delete;
    RegisteredEffects& operator=(const RegisteredEffects&) = delete;

    bool Complete() const { return std::find(m_effects.begin(), m_effects.end(), nullptr) == m_effects.end(); }
    QorShaderEffect*& operator[](int i) { return m_effects[static_cast<size_t>(i)]; }

private:
    std::vector<QorShaderEffect*> m_effects;
};

// Textures registered under `names`, each with the one reference handed to the caller.
// The references go back in batches, each followed by a clean, so the destroy list never
// grows long while the registry empties.
class RegisteredTextures
{
public:
    explicit RegisteredTextures(const std::vector<std::string>& names)
    {
        m_textures.reserve(names.size());
        for (const std::string& name : names)
            m_textures.push_back(QorShaderManager::AddShaderTexture(name.c_str()));
    }
    ~RegisteredTextures()
    {
        // Entries listed by a benchmark keep a count above 1, so this clean only empties the list.
        QorShaderManager::CleanShaderTextureToDestroyList();
        constexpr size_t kBatch = 1000;
        for (size_t i = 0; i < m_textures.size(); ++i) {
            QorShaderManager::AddShaderTextureToDestroyList(m_textures[i]);
            if ((i + 1) % kBatch == 0)
                QorShaderManager::CleanShaderTextureToDestroyList();
        }
        QorShaderManager::CleanShaderTextureToDestroyList();
    }
    RegisteredTextures(const RegisteredTextures&) = delete;
    RegisteredTextures& operator=(const RegisteredTextures&) = delete;

    bool Complete() const { return std::find(m_textures.begin(), m_textures.end(), nullptr) == m_textures.end(); }
    QorShaderTexture* operator[](int i) const { return m_textures[static_cast<size_t>(i)]; }

private:
    std::vector<QorShaderTexture*> m_textures;
};

// How many entries a benchmark registers: its first argument.
int Entries(const benchmark::State& state)
{
    return static_cast<int>(state.range(0));
}

// The order of a look-up benchmark, whose second argument is how many names it visits.
LookupOrder VisitedOf(const benchmark::State& state)
{
    return LookupOrder(Entries(state), static_cast<int>(state.range(1)));
}

// The order of a benchmark visiting every entry.
LookupOrder EveryEntryOf(const benchmark::State& state)
{
    return LookupOrder(Entries(state), 0);
}

// AddShaderEffect of a registered name: the look-up every shader naming an effect makes.
void EffectLookup(benchmark::State& state)
{
    const std::vector<std::string> names = EntryNames("effect", Entries(state));
    RegisteredEffects effects(names);
    if (!effects.Complete()) {
        QorBench::Fail(state, "cannot register the effects");
        return;
    }
    LookupOrder order = VisitedOf(state);
    for (auto _ : state) {
        // The Release keeps the look-up alive: no DoNotOptimize, whose in-out form GCC
        // miscompiles under the sanitizers.
        QorShaderEffect::AddShaderEffect(names[static_cast<size_t>(order.Next())].c_str())->Release();
    }
}

// The last Release of a registered effect (it leaves the registry) and the registration
// of its name again: what replacing one material's effect costs among many.
void EffectReregister(benchmark::State& state)
{
    const std::vector<std::string> names = EntryNames("effect", Entries(state));
    RegisteredEffects effects(names);
    if (!effects.Complete()) {
        QorBench::Fail(state, "cannot register the effects");
        return;
    }
    LookupOrder order = EveryEntryOf(state);
    for (auto _ : state) {
        const int i = order.Next();
        effects[i]->Release();
        effects[i] = QorShaderEffect::AddShaderEffect(names[static_cast<size_t>(i)].c_str());
    }
    if (!effects.Complete())
        QorBench::Fail(state, "cannot register an effect again");
}

// GetShaderTexture: the look-up of every texture value pushed to the effect.
void TextureLookup(benchmark::State& state)
{
    const std::vector<std::string> names = EntryNames("texture", Entries(state));
    RegisteredTextures textures(names);
    if (!textures.Complete()) {
        QorBench::Fail(state, "cannot register the textures");
        return;
    }
    LookupOrder order = VisitedOf(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(QorShaderManager::GetShaderTexture(names[static_cast<size_t>(order.Next())].c_str()));
}

// AddShaderTexture of a registered name: every copy of a parameter set naming a texture.
void TextureShare(benchmark::State& state)
{
    const std::vector<std::string> names = EntryNames("texture", Entries(state));
    RegisteredTextures textures(names);
    if (!textures.Complete()) {
        QorBench::Fail(state, "cannot register the textures");
        return;
    }
    LookupOrder order = VisitedOf(state);
    for (auto _ : state) {
        // The map and RegisteredTextures still hold their references.
        QorShaderManager::AddShaderTexture(names[static_cast<size_t>(order.Next())].c_str())->Release();
    }
}

// AddShaderTextureToDestroyList of a reference whose texture is listed already, with
// every registered texture listed: a material handing its textures back while many
// others did so since the last clean.
void TextureHandBack(benchmark::State& state)
{
    const std::vector<std::string> names = EntryNames("texture", Entries(state));
    RegisteredTextures textures(names);
    if (!textures.Complete()) {
        QorBench::Fail(state, "cannot register the textures");
        return;
    }
    // List every texture once; each keeps the map's and RegisteredTextures' references.
    for (const std::string& name : names)
        QorShaderManager::AddShaderTextureToDestroyList(QorShaderManager::AddShaderTexture(name.c_str()));
    LookupOrder order = EveryEntryOf(state);
    for (auto _ : state) {
        QorShaderTexture* texture = textures[order.Next()];
        texture->AddRef(); // the reference handed back
        QorShaderManager::AddShaderTextureToDestroyList(texture);
    }
}

} // namespace

int main(int argc, char** argv)
{
    return QorBench::Main(argc, argv, [](bool smoke) {
        const std::vector<int64_t> sizes = smoke ? std::vector<int64_t>{10, 100, 1000}
                                                 : std::vector<int64_t>{10, 1000, 100000};
        constexpr int64_t kSpread = 16;
        for (const auto& [name, function] : {std::pair{"EffectLookup", EffectLookup},
                                             std::pair{"TextureLookup", TextureLookup},
                                             std::pair{"TextureShare", TextureShare}}) {
            benchmark::internal::Benchmark* benchmark = benchmark::RegisterBenchmark(name, function);
            benchmark->ArgNames({"entries", "visited"});
            for (int64_t size : sizes) {
                if (size > kSpread)
                    benchmark->Args({size, kSpread});
                benchmark->Args({size, size});
            }
        }
        // Each operation here moves or scans entries by position; every entry is visited.
        for (const auto& [name, function] : {std::pair{"EffectReregister", EffectReregister},
                                             std::pair{"TextureHandBack", TextureHandBack}}) {
            benchmark::internal::Benchmark* benchmark = benchmark::RegisterBenchmark(name, function);
            benchmark->ArgNames({"entries"});
            for (int64_t size : sizes)
                benchmark->Arg(size);
        }
    });
}
