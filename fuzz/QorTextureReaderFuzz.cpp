// libFuzzer target for readTexture: each input is written to a file (readTexture takes a
// path) and decoded. The reader must refuse or decode without reading out of bounds,
// leaking or passing libFuzzer's memory limit; a refusal must leave every output at 0
// and a decoded picture must report sizes that fit its buffer.

#include "QorVisFoundation/QorTextureReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

// One file per fuzzing process, rewritten for every input and removed at exit.
class InputFile
{
public:
    InputFile()
    {
        const char* folder = std::getenv("TMPDIR");
        m_path = std::string(folder && *folder ? folder : "/tmp") + "/qorsgifuzz-XXXXXX";
        const int fd = mkstemp(m_path.data());
        if (fd < 0)
            std::abort();
        close(fd);
    }
    ~InputFile() { std::remove(m_path.c_str()); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const char* Write(const std::uint8_t* data, std::size_t size)
    {
        std::FILE* file = std::fopen(m_path.c_str(), "wb");
        if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0)
            std::abort();
        return m_path.c_str();
    }

private:
    std::string m_path;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static InputFile input;
    int dimension = -1, width = -1, height = -1, components = -1;
    unsigned int* pixels = readTexture(input.Write(data, size), &dimension, &width, &height, &components);
    if (!pixels) {
        if (dimension != 0 || width != 0 || height != 0 || components != 0)
            std::abort();
        return 0;
    }
    if (width < 1 || height < 1 || components < 1 || dimension != (height == 1 ? 1 : 2))
        std::abort();
    // Touch the first and last pixel so AddressSanitizer checks the buffer's extent.
    volatile unsigned int sum = pixels[0] + pixels[static_cast<std::size_t>(width) * height - 1];
    (void)sum;
    std::free(pixels);
    return 0;
}
