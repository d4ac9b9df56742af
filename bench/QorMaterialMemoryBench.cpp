// Memory of one material: what a shader object and its parameter set cost once their
// effect is compiled and shared. The program replaces the global operator new and delete
// to count the bytes and blocks the library asks for; the C heap's own figure (glibc's
// mallinfo2) adds the names it copies with strdup and the allocator's per-block
// overhead. Every iteration builds a batch of materials on the shared effect and
// measures the heap grown while they live.
#include "QorBenchSupport.h"

#include "CgFXShader.h"
#include "QorShaderParameters.h"
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorShaderManager.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

// Live bytes and blocks handed out by this program's operator new.
std::atomic<std::size_t> g_liveBytes{0};
std::atomic<std::size_t> g_blocks{0};

// Each block starts with its requested size, so delete can count what it frees; the
// header keeps the block aligned for any fundamental type.
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* CountedNew(std::size_t size) noexcept
{
    void* block = std::malloc(size + kHeader);
    if (!block)
        return nullptr;
    *static_cast<std::size_t*>(block) = size;
    g_liveBytes.fetch_add(size, std::memory_order_relaxed);
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    return static_cast<char*>(block) + kHeader;
}

void CountedDelete(void* memory) noexcept
{
    if (!memory)
        return;
    void* block = static_cast<char*>(memory) - kHeader;
    g_liveBytes.fetch_sub(*static_cast<std::size_t*>(block), std::memory_order_relaxed);
    g_blocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

void* ThrowingNew(std::size_t size)
{
    if (void* memory = CountedNew(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return ThrowingNew(size); }
void* operator new[](std::size_t size) { return ThrowingNew(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return CountedNew(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return CountedNew(size); }
void operator delete(void* memory) noexcept { CountedDelete(memory); }
void operator delete[](void* memory) noexcept { CountedDelete(memory); }
void operator delete(void* memory, std::size_t) noexcept { CountedDelete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { CountedDelete(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { CountedDelete(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { CountedDelete(memory); }

namespace {

using QorBench::Shader;

// Bytes in use on the C heap; 0 where the allocator does not report it (a sanitizer's).
std::size_t HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

struct Footprint
{
    std::size_t newBytes;
    std::size_t blocks;
    std::size_t heapBytes;
};

Footprint Now()
{
    return {g_liveBytes.load(std::memory_order_relaxed), g_blocks.load(std::memory_order_relaxed), HeapInUse()};
}

Shader MakeMaterial(const char* file)
{
    Shader shader(QorShaderManager::CreateShader());
    if (!shader)
        return nullptr;
    shader->SetFileName(QorString(file));
    return shader->GenerateParameters() ? std::move(shader) : nullptr;
}

void MaterialMemory(benchmark::State& state, const std::string& file, const std::string& text, int batch)
{
    QorBench::EffectFolder folder;
    if (text.empty() || !folder.Ready() || folder.Write(file, text).empty()) {
        QorBench::Fail(state, "cannot write the effect file");
        return;
    }
    // The first material compiles the effect; the measured ones share it.
    const Shader first = MakeMaterial(file.c_str());
    if (!first) {
        QorBench::Fail(state, "the effect gives no parameters");
        return;
    }
    double newBytes = 0;
    double blocks = 0;
    double heapBytes = 0;
    std::vector<Shader> materials;
    materials.reserve(static_cast<size_t>(batch));
    for (auto _ : state) {
        const Footprint before = Now();
        for (int i = 0; i < batch; ++i)
            materials.push_back(MakeMaterial(file.c_str()));
        state.PauseTiming();
        const Footprint after = Now();
        const bool complete = std::find(materials.begin(), materials.end(), nullptr) == materials.end();
        materials.clear();
        QorShaderManager::CleanShaderTextureToDestroyList();
        state.ResumeTiming();
        if (!complete) {
            QorBench::Fail(state, "a material gives no parameters");
            return;
        }
        // Signed: the allocator may hand back memory while the batch grows.
        newBytes += static_cast<double>(after.newBytes) - static_cast<double>(before.newBytes);
        blocks += static_cast<double>(after.blocks) - static_cast<double>(before.blocks);
        heapBytes += static_cast<double>(after.heapBytes) - static_cast<double>(before.heapBytes);
    }
    const double materialsBuilt = static_cast<double>(state.iterations()) * batch;
    state.SetItemsProcessed(static_cast<int64_t>(materialsBuilt));
    state.counters["parameters"] = first->GetNbParameters() - 1;
    state.counters["new_bytes_per_material"] = newBytes / materialsBuilt;
    state.counters["blocks_per_material"] = blocks / materialsBuilt;
    // The C heap figure without the size header this program adds to each counted block.
    const double heapOfLibrary = heapBytes - blocks * static_cast<double>(kHeader);
    state.counters["heap_bytes_per_material"] = heapOfLibrary > 0 ? heapOfLibrary / materialsBuilt : 0;
    state.counters["sizeof_shader"] = sizeof(CgFXShader);
    state.counters["sizeof_parameter_set"] = sizeof(QorShaderParameters);
}

} // namespace

int main(int argc, char** argv)
{
    return QorBench::Main(argc, argv, [](bool smoke) {
        const int batch = smoke ? 10 : 200;
        benchmark::RegisterBenchmark("MaterialMemory/Wide64", MaterialMemory, std::string("wide.cgfx"),
                                     QorBench::WideEffect(64), batch)
            ->Unit(benchmark::kMicrosecond);
        // A small material with an interface: each material connects its own Cg instance.
        benchmark::RegisterBenchmark("MaterialMemory/Plastic", MaterialMemory, std::string("plastic.cgfx"),
                                     QorBench::Sample("materials/plastic.cgfx").value_or(""), batch)
            ->Unit(benchmark::kMicrosecond);
    });
}
