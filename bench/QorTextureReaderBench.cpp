// readTexture against OpenImageIO on the same run-length RGBA SGI file, written at start
// into a temporary folder. ReadTextureVsOpenImageIO times both in each iteration and
// reports OpenImageIO's time over readTexture's as "speedup" (above 1: readTexture is
// faster).
//
// The picture is 2048 x 2048; with a tiny --benchmark_min_time (the CTest run) it is
// 128 x 128 so the run stays quick under the sanitizers. --sgi_size=N picks any size.

#include "QorVisFoundation/QorTextureReader.h"

#include <OpenImageIO/imageio.h>
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

namespace {

int g_size = 2048;
std::string g_path;

void PutBigEndian(std::string& out, std::uint32_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift & 0xff);
}

// One row of one channel in SGI run-length packets: runs of three or more equal bytes
// become repeat packets, the rest literal packets, each at most 127 pixels, then a 0.
std::string EncodeRow(const unsigned char* row, int width)
{
    std::string out;
    int x = 0;
    while (x < width) {
        int run = 1;
        while (x + run < width && run < 127 && row[x + run] == row[x])
            ++run;
        if (run >= 3) {
            out += static_cast<char>(run);
            out += static_cast<char>(row[x]);
            x += run;
            continue;
        }
        int literal = 0;
        while (x + literal < width && literal < 127
               && !(x + literal + 2 < width && row[x + literal] == row[x + literal + 1]
                    && row[x + literal] == row[x + literal + 2]))
            ++literal;
        out += static_cast<char>(0x80 | literal);
        out.append(reinterpret_cast<const char*>(row + x), static_cast<std::size_t>(literal));
        x += literal;
    }
    out += '\0';
    return out;
}

// A texture-like picture: 64-pixel tiles alternately flat (long runs) and noisy (literal
// packets), so both kinds of packet weigh in.
std::string MakeRunLengthFile(int size)
{
    const int channels = 4;
    std::vector<std::string> rows(static_cast<std::size_t>(size) * channels);
    std::vector<unsigned char> plane(static_cast<std::size_t>(size));
    std::uint32_t noise = 2463534242u;
    for (int c = 0; c < channels; ++c)
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                noise ^= noise << 13;
                noise ^= noise >> 17;
                noise ^= noise << 5;
                const bool flat = (x / 64 + y / 64) % 2 == 0;
                plane[x] = static_cast<unsigned char>(flat ? (x / 64 * 37 + y / 64 * 11 + c * 60) : noise);
            }
            rows[static_cast<std::size_t>(y) + static_cast<std::size_t>(c) * size] = EncodeRow(plane.data(), size);
        }

    std::string file;
    PutBigEndian(file, 474, 2);
    PutBigEndian(file, 0x0101, 2);
    PutBigEndian(file, 3, 2);
    PutBigEndian(file, static_cast<std::uint32_t>(size), 2);
    PutBigEndian(file, static_cast<std::uint32_t>(size), 2);
    PutBigEndian(file, channels, 2);
    file.resize(512, '\0');
    std::uint32_t start = static_cast<std::uint32_t>(512 + rows.size() * 8);
    for (const std::string& row : rows) {
        PutBigEndian(file, start, 4);
        start += static_cast<std::uint32_t>(row.size());
    }
    for (const std::string& row : rows)
        PutBigEndian(file, static_cast<std::uint32_t>(row.size()), 4);
    for (const std::string& row : rows)
        file += row;
    return file;
}

// OpenImageIO's decoding as 8-bit RGBA (top row first); false when it fails.
bool ReadWithOpenImageIO(std::vector<unsigned char>& pixels)
{
    auto input = OIIO::ImageInput::open(g_path);
    if (!input)
        return false;
    const auto& layout = input->spec();
    pixels.resize(static_cast<std::size_t>(layout.width) * layout.height * 4);
    const bool read = input->read_image(0, 0, 0, 4, OIIO::TypeDesc::UINT8, pixels.data());
    input->close();
    return read;
}

struct FreePixels
{
    void operator()(unsigned int* pixels) const { std::free(pixels); }
};
using Pixels = std::unique_ptr<unsigned int, FreePixels>;

Pixels ReadWithQor()
{
    int dimension = 0, width = 0, height = 0, components = 0;
    return Pixels(readTexture(g_path.c_str(), &dimension, &width, &height, &components));
}

// Both readers must agree before their times mean anything (SGI rows are bottom first,
// OpenImageIO's top first).
bool ReadersAgree()
{
    std::vector<unsigned char> oiio;
    const Pixels qor = ReadWithQor();
    if (!qor || !ReadWithOpenImageIO(oiio))
        return false;
    const std::size_t rowBytes = static_cast<std::size_t>(g_size) * 4;
    const auto* bytes = reinterpret_cast<const unsigned char*>(qor.get());
    for (int row = 0; row < g_size; ++row)
        if (std::memcmp(bytes + row * rowBytes, oiio.data() + (g_size - 1 - row) * rowBytes, rowBytes) != 0)
            return false;
    return true;
}

void ReadTexture(benchmark::State& state)
{
    for (auto _ : state) {
        Pixels pixels = ReadWithQor();
        benchmark::DoNotOptimize(pixels.get());
    }
    state.SetItemsProcessed(state.iterations() * g_size * g_size);
}

void OpenImageIO(benchmark::State& state)
{
    std::vector<unsigned char> pixels;
    for (auto _ : state) {
        ReadWithOpenImageIO(pixels);
        benchmark::DoNotOptimize(pixels.data());
    }
    state.SetItemsProcessed(state.iterations() * g_size * g_size);
}

void ReadTextureVsOpenImageIO(benchmark::State& state)
{
    if (!ReadersAgree()) {
        state.SkipWithError("readTexture and OpenImageIO decode the file differently");
        return;
    }
    using Clock = std::chrono::steady_clock;
    Clock::duration qorTime{}, oiioTime{};
    std::vector<unsigned char> oiio;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        Pixels pixels = ReadWithQor();
        benchmark::DoNotOptimize(pixels.get());
        const auto t1 = Clock::now();
        ReadWithOpenImageIO(oiio);
        benchmark::DoNotOptimize(oiio.data());
        qorTime += t1 - t0;
        oiioTime += Clock::now() - t1;
    }
    const double iterations = static_cast<double>(state.iterations());
    const double qorMs = std::chrono::duration<double, std::milli>(qorTime).count() / iterations;
    const double oiioMs = std::chrono::duration<double, std::milli>(oiioTime).count() / iterations;
    state.counters["readTexture_ms"] = qorMs;
    state.counters["OpenImageIO_ms"] = oiioMs;
    state.counters["speedup"] = qorMs > 0 ? oiioMs / qorMs : 0;
    state.SetLabel(std::to_string(g_size) + "x" + std::to_string(g_size) + " RGBA run-length");
}

// Takes --sgi_size=N out of the arguments; without it, a tiny --benchmark_min_time picks
// the small picture.
void ChooseSize(int& argc, char** argv)
{
    int kept = 1;
    int chosen = 0;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        if (std::strncmp(arg, "--sgi_size=", 11) == 0) {
            chosen = std::atoi(arg + 11);
            continue;
        }
        if (std::strncmp(arg, "--benchmark_min_time=", 21) == 0 && std::strtod(arg + 21, nullptr) < 0.01)
            g_size = 128;
        argv[kept++] = argv[i];
    }
    argc = kept;
    if (chosen >= 1 && chosen <= 8192)
        g_size = chosen;
}

} // namespace

BENCHMARK(ReadTexture)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenImageIO)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadTextureVsOpenImageIO)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    ChooseSize(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;

    std::error_code error;
    std::string pattern = (std::filesystem::temp_directory_path(error) / "qorsgibench-XXXXXX").string();
    if (error || !mkdtemp(pattern.data())) {
        std::fprintf(stderr, "cannot make a temporary folder\n");
        return 1;
    }
    const std::filesystem::path folder(pattern);
    g_path = (folder / "texture.rgb").string();
    {
        const std::string bytes = MakeRunLengthFile(g_size);
        std::ofstream(g_path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        std::printf("%s: %d x %d RGBA run-length, %zu bytes\n", g_path.c_str(), g_size, g_size, bytes.size());
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::filesystem::remove_all(folder, error);
    return 0;
}
