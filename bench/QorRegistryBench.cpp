// Registry scaling: the cost of one operation on the effect registry and the texture
// registry as the number of registered entries grows. Operations visit entries in a
// fixed pseudo-random order. Look-ups run twice: over 16 names spread evenly through the
// registry (the same amount of work at every size, so only the registry's structure can
// make it grow) and over every registered name (which adds the memory latency of a data
// set that outgrows the caches). Nothing is compiled: registering an effect does not
// compile it.
#include "QorBenchSupport.h"

#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>
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

// The two registries the benchmarks fill: how an entry is registered under a name and how
// the references made at registration go back.
struct Effects
{
    static constexpr const char* kKind = "effect";
    static QorShaderEffect* Add(const char* name) { return QorShaderEffect::AddShaderEffect(name); }
    // Newest first, so that every removal finds its entry at the end.
    static void ReleaseAll(const std::vector<QorShaderEffect*>& effects)
    {
        for (auto effect = effects.rbegin(); effect != effects.rend(); ++effect)
            if (*effect)
                (*effect)->Release();
    }
};

struct Textures
{
    static constexpr const char* kKind = "texture";
    static QorShaderTexture* Add(const char* name) { return QorShaderManager::AddShaderTexture(name); }
    // In batches, each followed by a clean, so the destroy list never grows long while the
    // registry empties.
    static void ReleaseAll(const std::vector<QorShaderTexture*>& textures)
    {
        // Entries listed by a benchmark keep a count above 1, so this clean only empties the list.
        QorShaderManager::CleanShaderTextureToDestroyList();
        constexpr size_t kBatch = 1000;
        for (size_t i = 0; i < textures.size(); ++i) {
            QorShaderManager::AddShaderTextureToDestroyList(textures[i]);
            if ((i + 1) % kBatch == 0)
                QorShaderManager::CleanShaderTextureToDestroyList();
        }
        QorShaderManager::CleanShaderTextureToDestroyList();
    }
};

// How many entries a benchmark registers: its first argument.
int Entries(const benchmark::State& state)
{
    return static_cast<int>(state.range(0));
}

// As many entries of `Registry` as the benchmark's first argument asks for, each with the
// one reference made at registration, and their names. A registration that fails fails
// the benchmark: it then returns at once when Ready() is false.
template <typename Registry>
class Registered
{
public:
    using Entry = std::remove_pointer_t<decltype(Registry::Add(""))>;

    explicit Registered(benchmark::State& state) : m_names(EntryNames(Registry::kKind, Entries(state)))
    {
        m_entries.reserve(m_names.size());
        for (const std::string& name : m_names)
            m_entries.push_back(Registry::Add(name.c_str()));
        m_ready = Complete();
        if (!m_ready)
            QorBench::Fail(state, (std::string("cannot register the ") + Registry::kKind + "s").c_str());
    }
    ~Registered() { Registry::ReleaseAll(m_entries); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

    bool Ready() const { return m_ready; }
    bool Complete() const { return std::find(m_entries.begin(), m_entries.end(), nullptr) == m_entries.end(); }
    const std::vector<std::string>& Names() const { return m_names; }
    const char* Name(int i) const { return m_names[static_cast<size_t>(i)].c_str(); }
    Entry*& operator[](int i) { return m_entries[static_cast<size_t>(i)]; }

private:
    std::vector<std::string> m_names;
    std::vector<Entry*> m_entries;
    bool m_ready = false;
};

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

// `LookUp` of registered names, visited in the order of VisitedOf.
template <typename Registry, void (*LookUp)(const char* name)>
void Lookup(benchmark::State& state)
{
    Registered<Registry> entries(state);
    if (!entries.Ready())
        return;
    LookupOrder order = VisitedOf(state);
    for (auto _ : state)
        LookUp(entries.Name(order.Next()));
}

// AddShaderEffect of a registered name: the look-up every shader naming an effect makes.
// The Release keeps the look-up alive: no DoNotOptimize, whose in-out form GCC
// miscompiles under the sanitizers.
void AddEffect(const char* name)
{
    QorShaderEffect::AddShaderEffect(name)->Release();
}

// GetShaderTexture: the look-up of every texture value pushed to the effect.
void GetTexture(const char* name)
{
    benchmark::DoNotOptimize(QorShaderManager::GetShaderTexture(name));
}

// AddShaderTexture of a registered name: every copy of a parameter set naming a texture.
// The map and the registered entries still hold their references.
void ShareTexture(const char* name)
{
    QorShaderManager::AddShaderTexture(name)->Release();
}

// The last Release of a registered effect (it leaves the registry) and the registration
// of its name again: what replacing one material's effect costs among many.
void EffectReregister(benchmark::State& state)
{
    Registered<Effects> effects(state);
    if (!effects.Ready())
        return;
    LookupOrder order = EveryEntryOf(state);
    for (auto _ : state) {
        const int i = order.Next();
        effects[i]->Release();
        effects[i] = QorShaderEffect::AddShaderEffect(effects.Name(i));
    }
    if (!effects.Complete())
        QorBench::Fail(state, "cannot register an effect again");
}

// AddShaderTextureToDestroyList of a reference whose texture is listed already, with
// every registered texture listed: a material handing its textures back while many
// others did so since the last clean.
void TextureHandBack(benchmark::State& state)
{
    Registered<Textures> textures(state);
    if (!textures.Ready())
        return;
    // List every texture once; each keeps the map's and the registered entries' references.
    for (const std::string& name : textures.Names())
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
        for (const auto& [name, function] : {std::pair{"EffectLookup", &Lookup<Effects, AddEffect>},
                                             std::pair{"TextureLookup", &Lookup<Textures, GetTexture>},
                                             std::pair{"TextureShare", &Lookup<Textures, ShareTexture>}}) {
            benchmark::internal::Benchmark* benchmark = benchmark::RegisterBenchmark(name, function);
            benchmark->ArgNames({"entries", "visited"});
            for (int64_t size : sizes) {
                if (size > kSpread)
                    benchmark->Args({size, kSpread});
                benchmark->Args({size, size});
            }
        }
        // Removal from the effect registry and hand-backs to the destroy list, every entry visited.
        for (const auto& [name, function] : {std::pair{"EffectReregister", EffectReregister},
                                             std::pair{"TextureHandBack", TextureHandBack}}) {
            benchmark::internal::Benchmark* benchmark = benchmark::RegisterBenchmark(name, function);
            benchmark->ArgNames({"entries"});
            for (int64_t size : sizes)
                benchmark->Arg(size);
        }
    });
}
