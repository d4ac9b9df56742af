#include "QorVisFoundation/QorTextureReader.h"

#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string Fixture(const std::string& name)
{
    return std::string(QOR_TEST_DATA_DIR) + "/sgi/" + name;
}

struct FreePixels
{
    void operator()(unsigned int* pixels) const { std::free(pixels); }
};

// One readTexture call; the outputs start at a value the reader never stores, so a
// forgotten output shows.
struct Decoded
{
    explicit Decoded(const std::string& path)
        : pixels(readTexture(path.c_str(), &dimension, &width, &height, &components))
    {
    }
    const unsigned char* Bytes() const { return reinterpret_cast<const unsigned char*>(pixels.get()); }

    int dimension = -7;
    int width = -7;
    int height = -7;
    int components = -7;
    std::unique_ptr<unsigned int, FreePixels> pixels;
};

void ExpectRefused(const std::string& path, const std::string& why)
{
    const Decoded decoded(path);
    EXPECT_EQ(decoded.pixels, nullptr) << why;
    EXPECT_EQ(decoded.dimension, 0) << why;
    EXPECT_EQ(decoded.width, 0) << why;
    EXPECT_EQ(decoded.height, 0) << why;
    EXPECT_EQ(decoded.components, 0) << why;
}

// OpenImageIO's decoding of the file as RGBA rows in SGI file order (bottom row first;
// OpenImageIO hands the top row first), with readTexture's mapping of 1 to 3 channels.
std::vector<unsigned char> OpenImageIORgba(const std::string& path, int& channels)
{
    const QorTexturePixelImage::Ptr image(QorTexturePixelImage::ReadFromFile(path.c_str(), QorString("sgi")));
    if (!image)
        return {};
    channels = static_cast<int>(image->GetBytesPerPixel());
    const unsigned width = image->GetWidth();
    const unsigned height = image->GetHeight();
    std::vector<unsigned char> rgba;
    for (unsigned row = height; row-- > 0;) {
        const unsigned char* in = image->GetPixels() + std::size_t{row} * width * channels;
        for (unsigned x = 0; x < width; ++x, in += channels) {
            const unsigned char grey = in[0];
            switch (channels) {
            case 1: rgba.insert(rgba.end(), {grey, grey, grey, 255}); break;
            case 2: rgba.insert(rgba.end(), {grey, grey, grey, in[1]}); break;
            case 3: rgba.insert(rgba.end(), {in[0], in[1], in[2], 255}); break;
            default: rgba.insert(rgba.end(), {in[0], in[1], in[2], in[3]}); break;
            }
        }
    }
    return rgba;
}

void ExpectSameAsOpenImageIO(const std::string& path, int expectedChannels, int expectedHeight)
{
    SCOPED_TRACE(path);
    int oiioChannels = 0;
    const std::vector<unsigned char> expected = OpenImageIORgba(path, oiioChannels);
    ASSERT_FALSE(expected.empty()) << "OpenImageIO could not decode the file";
    ASSERT_EQ(oiioChannels, expectedChannels);

    const Decoded decoded(path);
    ASSERT_NE(decoded.pixels, nullptr);
    EXPECT_EQ(decoded.components, expectedChannels);
    EXPECT_EQ(decoded.height, expectedHeight);
    EXPECT_EQ(decoded.dimension, expectedHeight == 1 ? 1 : 2);
    ASSERT_EQ(std::size_t(decoded.width) * decoded.height * 4, expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(decoded.Bytes()[i], expected[i]) << "pixel " << i / 4 << " byte " << i % 4;
}

void Put16(std::string& bytes, std::size_t offset, unsigned value)
{
    bytes[offset] = static_cast<char>(value >> 8);
    bytes[offset + 1] = static_cast<char>(value);
}

void Put32(std::string& bytes, std::size_t offset, unsigned value)
{
    Put16(bytes, offset, value >> 16);
    Put16(bytes, offset + 2, value & 0xffff);
}

// A run-length SGI file built byte by byte, for packets the encoders never write. Rows
// are listed in file order: row r of channel c is rows[r + c * height].
std::string RunLengthFile(unsigned width, unsigned height, unsigned channels, const std::vector<std::string>& rows)
{
    std::string bytes(512, '\0');
    Put16(bytes, 0, 474);
    Put16(bytes, 2, 0x0101);
    Put16(bytes, 4, channels > 1 ? 3 : 2);
    Put16(bytes, 6, width);
    Put16(bytes, 8, height);
    Put16(bytes, 10, channels);
    bytes.resize(512 + rows.size() * 8);
    std::size_t start = bytes.size();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Put32(bytes, 512 + i * 4, static_cast<unsigned>(start));
        Put32(bytes, 512 + (rows.size() + i) * 4, static_cast<unsigned>(rows[i].size()));
        start += rows[i].size();
    }
    for (const std::string& row : rows)
        bytes += row;
    return bytes;
}

// Literal packets (high bit set) followed by their bytes; repeat packets by one value.
std::string Literal(std::initializer_list<unsigned char> values)
{
    std::string packet(1, static_cast<char>(0x80 | values.size()));
    for (unsigned char value : values)
        packet += static_cast<char>(value);
    return packet;
}

std::string Repeat(unsigned count, unsigned char value)
{
    return {static_cast<char>(count), static_cast<char>(value)};
}

const std::string kEnd(1, '\0');

} // namespace

TEST(QorTextureReaderTest, VerbatimAndRunLengthFilesMatchOpenImageIO)
{
    // The header's storage byte: 0 verbatim, 1 run-length.
    const struct
    {
        const char* name;
        unsigned storage;
        int channels;
        int height;
    } files[] = {
        {"verbatim-1ch.rgb", 0, 1, 7}, {"verbatim-2ch.rgb", 0, 2, 7}, {"verbatim-3ch.rgb", 0, 3, 7},
        {"verbatim-4ch.rgb", 0, 4, 7}, {"verbatim-1row.rgb", 0, 3, 1},
        {"rle-1ch.rgb", 1, 1, 9}, {"rle-3ch.rgb", 1, 3, 9}, {"rle-4ch.rgb", 1, 4, 9}, {"rle-1row.rgb", 1, 4, 1},
        {"rle-wide.rgb", 1, 4, 3},
    };
    for (const auto& file : files) {
        EXPECT_EQ(QorReadFile(Fixture(file.name)).substr(2, 1), std::string(1, char(file.storage))) << file.name;
        ExpectSameAsOpenImageIO(Fixture(file.name), file.channels, file.height);
    }
}

TEST(QorTextureReaderTest, RunLengthPacketsDecodeToTheirPixelsAndShortRowsEndInZeros)
{
    QorTempDir dir;
    // Two channels (grey, alpha), 8 wide, 2 rows; ImageMagick writes no such file. Grey
    // row 0 is a literal of 3 then a repeat of 5; alpha row 1 shares the encoded bytes of
    // alpha row 0.
    const std::string alpha = Repeat(4, 0x40) + Literal({1, 2, 3, 4}) + kEnd;
    const std::vector<std::string> rows = {Literal({10, 20, 30}) + Repeat(5, 99) + kEnd, Repeat(8, 7) + kEnd,
                                           alpha, alpha};
    std::string file = RunLengthFile(8, 2, 2, rows);
    file.replace(512 + 3 * 4, 4, file.substr(512 + 2 * 4, 4));
    ExpectSameAsOpenImageIO(dir.Write("packets.rgb", file), 2, 2);

    // A 0 count ends the row even when encoded bytes follow it (OpenImageIO calls such a
    // row corrupt; the framework's textures have always been read this way).
    std::vector<std::string> trailing = rows;
    trailing[1] += Repeat(8, 200);
    const Decoded ended(dir.Write("trailing.rgb", RunLengthFile(8, 2, 2, trailing)));
    ASSERT_NE(ended.pixels, nullptr);
    for (int x = 0; x < 8; ++x)
        EXPECT_EQ(ended.Bytes()[32 + 4 * x], 7) << "pixel " << x;

    // One channel, 6 wide: row 1 stops after 2 pixels at a 0 count, row 2 runs out of
    // encoded bytes after 3 pixels. The reader's row buffer is reused, so stale pixels of
    // row 0 would show in rows 1 and 2 if the rest were not cleared.
    const Decoded decoded(dir.Write("short.rgb", RunLengthFile(6, 3, 1,
        {Repeat(6, 9) + kEnd, Repeat(2, 5) + kEnd, Literal({1, 2, 3})})));
    ASSERT_NE(decoded.pixels, nullptr);
    const unsigned char expected[] = {9, 9, 9, 9, 9, 9, 5, 5, 0, 0, 0, 0, 1, 2, 3, 0, 0, 0};
    for (int i = 0; i < 18; ++i) {
        EXPECT_EQ(decoded.Bytes()[4 * i], expected[i]) << "pixel " << i;
        EXPECT_EQ(decoded.Bytes()[4 * i + 3], 255) << "pixel " << i;
    }
}

TEST(QorTextureReaderTest, OpensFrameworkPathsAndSkipsNullOutputs)
{
    QorTempDir dir;
    dir.Write("textures/wood.rgb", QorReadFile(Fixture("rle-3ch.rgb")));
    const std::string frameworkPath = dir.Path() + "\\textures\\wood.rgb";
    const Decoded decoded(frameworkPath);
    ASSERT_NE(decoded.pixels, nullptr);
    EXPECT_EQ(decoded.width, 21);

    std::unique_ptr<unsigned int, FreePixels> pixels(
        readTexture(frameworkPath.c_str(), nullptr, nullptr, nullptr, nullptr));
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(std::memcmp(pixels.get(), decoded.pixels.get(), 21 * 9 * 4), 0);
}

TEST(QorTextureReaderTest, RefusesMissingTruncatedDeepAndOversizedFiles)
{
    QorTempDir dir;
    ExpectRefused(dir.File("missing.rgb"), "missing file");
    ExpectRefused(dir.Path(), "a folder");
    ExpectRefused(dir.Write("empty.rgb", ""), "empty file");
    ExpectRefused(dir.Write("short-header.rgb", QorReadFile(Fixture("verbatim-3ch.rgb")).substr(0, 11)),
                  "header cut short");
    for (const char* name : {"verbatim-4ch.rgb", "verbatim-1ch.rgb", "rle-4ch.rgb", "rle-1row.rgb"}) {
        const std::string bytes = QorReadFile(Fixture(name));
        ExpectRefused(dir.Write("cut.rgb", bytes.substr(0, bytes.size() - 1)), std::string(name) + " minus its last byte");
        ExpectRefused(dir.Write("cut.rgb", bytes.substr(0, 520)), std::string(name) + " cut inside its first rows or tables");
    }
    ExpectRefused(Fixture("verbatim-16bit.rgb"), "two bytes per channel, verbatim");

    std::string twoBytes = QorReadFile(Fixture("rle-3ch.rgb"));
    twoBytes[3] = 2;
    ExpectRefused(dir.Write("rle-16bit.rgb", twoBytes), "two bytes per channel, run-length");
    for (const char* name : {"verbatim-3ch.rgb", "rle-3ch.rgb"}) {
        const std::string original = QorReadFile(Fixture(name));
        for (std::size_t offset : {6, 8, 10}) {
            std::string zero = original;
            Put16(zero, offset, 0);
            ExpectRefused(dir.Write("zero.rgb", zero), std::string(name) + ": zero word at " + std::to_string(offset));
        }
        std::string huge = original;
        Put16(huge, 6, 65535);
        Put16(huge, 8, 65535);
        ExpectRefused(dir.Write("huge.rgb", huge), std::string(name) + ": 65535 x 65535 overflows an int buffer size");
    }

    // 32768 x 16384 RGBA is exactly 2 GiB, one byte more than an int counts. The file is
    // otherwise sound, and its 8 MB of encoded rows could fill the picture.
    std::string row;
    for (int x = 0; x < 32768; x += 127)
        row += Repeat(32768 - x < 127 ? 32768 - x : 127, 1);
    const std::string file = RunLengthFile(32768, 16384, 1, std::vector<std::string>(16384, row + kEnd));
    ExpectRefused(dir.Write("2gib.rgb", file), "a 2 GiB buffer");
}

TEST(QorTextureReaderTest, RefusesRunLengthRowsOutsideTheirBounds)
{
    QorTempDir dir;
    const std::string valid = RunLengthFile(8, 1, 1, {Repeat(8, 1) + kEnd});
    const std::size_t start = 512, size = 516;
    struct Case
    {
        const char* why;
        std::size_t offset;
        unsigned value;
    } cases[] = {
        {"row start past the end of the file", start, static_cast<unsigned>(valid.size())},
        {"row start far outside the file", start, 0xfffffff0u},
        {"row size reaching past the end of the file", size, 4},
        {"row start and size wrapping around 32 bits", size, 0xffffffffu},
    };
    for (const Case& c : cases) {
        std::string file = valid;
        Put32(file, c.offset, c.value);
        ExpectRefused(dir.Write("bad-table.rgb", file), c.why);
    }
    ExpectRefused(dir.Write("table-cut.rgb", valid.substr(0, 515)), "offset table does not fit");

    const std::pair<const char*, std::string> rows[] = {
        {"repeat passing the end of the row", Repeat(9, 1) + kEnd},
        {"repeat after a literal passing the end of the row", Literal({1, 2, 3, 4, 5}) + Repeat(4, 1)},
        {"literal passing the end of the row", std::string(1, '\x89') + std::string(9, 'x')},
        {"literal longer than the row's encoded bytes", std::string(1, '\x86') + "abc"},
        {"literal one byte short", std::string(1, '\x84') + "abc"},
        {"repeat without its value", std::string(1, '\x03')},
    };
    for (const auto& row : rows)
        ExpectRefused(dir.Write("bad-row.rgb", RunLengthFile(8, 1, 1, {row.second})), row.first);
    ExpectRefused(dir.Write("bad-second-channel.rgb", RunLengthFile(8, 1, 2, {Repeat(8, 1), Repeat(9, 1)})),
                  "a bad row in a later channel");
}

TEST(QorTextureReaderTest, RunTablesThatCannotFillThePictureAreRefusedBeforeItIsAllocated)
{
    QorTempDir dir;
    // 66 KB claiming 65535 x 8191 pixels (2 GiB of RGBA) whose rows are all empty.
    std::vector<std::string> empty(8191);
    ExpectRefused(dir.Write("bomb.rgb", RunLengthFile(65535, 8191, 1, empty)), "empty rows for 2 GiB");
    // Every row pointing at one encoding of a whole row: 75 KB still cannot claim 2 GiB.
    std::string shared = RunLengthFile(65535, 8191, 1, empty);
    std::string wholeRow;
    for (int packet = 0; packet < 516; ++packet)
        wholeRow += Repeat(127, 5);
    wholeRow += Repeat(3, 5);
    for (unsigned row = 0; row < 8191; ++row) {
        Put32(shared, 512 + row * 4, static_cast<unsigned>(shared.size()));
        Put32(shared, 512 + (8191 + row) * 4, static_cast<unsigned>(wholeRow.size()));
    }
    ExpectRefused(dir.Write("shared.rgb", shared + wholeRow), "shared rows for 2 GiB");
    // Rows that together can fill the picture still decode, even when some end early.
    const Decoded shortRow(dir.Write("short.rgb", RunLengthFile(254, 2, 1, {Repeat(127, 9) + Repeat(127, 9) + kEnd + "pad", kEnd})));
    ASSERT_NE(shortRow.pixels, nullptr);
    EXPECT_EQ(shortRow.width, 254);
    const Decoded empties(dir.Write("too-few.rgb", RunLengthFile(254, 2, 1, {Repeat(127, 9), Repeat(2, 9)})));
    EXPECT_EQ(empties.pixels, nullptr) << "4 encoded bytes cannot fill 508 pixels";
}
