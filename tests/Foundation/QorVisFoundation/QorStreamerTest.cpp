#include "QorVisFoundation/QorStreamer.h"

#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

// Array allocations of the whole test program go through here, so a test can see the
// largest one made while it watches (the streamer's string reads use new[]).
namespace {
std::atomic<std::size_t> g_largestArrayNew{0};

void* RecordArrayNew(std::size_t size) noexcept
{
    std::size_t seen = g_largestArrayNew.load();
    while (size > seen && !g_largestArrayNew.compare_exchange_weak(seen, size)) {
    }
    return std::malloc(size ? size : 1);
}
} // namespace

void* operator new[](std::size_t size)
{
    if (void* block = RecordArrayNew(size))
        return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return RecordArrayNew(size); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }

namespace {

using Bytes = std::vector<unsigned char>;

// A 32-bit little-endian length followed by `tail`.
Bytes Prefixed(std::int32_t length, const char* tail)
{
    const auto bits = static_cast<std::uint32_t>(length);
    Bytes bytes(4 + std::strlen(tail));
    for (std::size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
    std::memcpy(bytes.data() + 4, tail, bytes.size() - 4);
    return bytes;
}

} // namespace

TEST(QorStreamerTest, IntegersRoundTripInEveryWidthAsFixedLittleEndianBytes)
{
    const struct
    {
        int value;
        int width;
        int readBack;
    } cases[] = {{0x01020304, 0, 0x01020304}, {-2, 4, -2},   {0x1234, 2, 0x1234}, {-300, 2, -300},
                 {-128, 1, -128},            {0x1ff, 1, -1}, // truncated to 0xff, read back signed
                 {std::numeric_limits<int>::min(), 0, std::numeric_limits<int>::min()}};
    QorStreamer out;
    for (const auto& c : cases)
        out.WriteInt(c.value, c.width);
    EXPECT_EQ(out.GetBytes(), (Bytes{4, 3, 2, 1, 0xfe, 0xff, 0xff, 0xff, 0x34, 0x12, 0xd4, 0xfe, 0x80, 0xff, 0, 0, 0,
                                     0x80}));

    QorStreamer in(out.GetBytes());
    for (const auto& c : cases) {
        int value = 0;
        ASSERT_TRUE(in.ReadInt(value, c.width));
        EXPECT_EQ(value, c.readBack) << "width " << c.width;
    }
    EXPECT_EQ(in.GetRemainingSize(), 0u);
    in.Rewind();
    int value = 0;
    ASSERT_TRUE(in.ReadInt(value));
    EXPECT_EQ(value, 0x01020304) << "Rewind reads the same bytes again";

    // A width the format lacks is a programming error: reported, nothing written, and a
    // read with it fails.
    QorCapturingSink sink;
    QorStreamer odd;
    odd.WriteInt(5, 3);
    EXPECT_TRUE(odd.GetBytes().empty());
    EXPECT_EQ(sink.Records().size(), 1u);
    QorStreamer oddIn(Bytes{1, 2, 3, 4});
    EXPECT_FALSE(oddIn.ReadInt(value, 8));
    EXPECT_TRUE(oddIn.IsFailed());
}

TEST(QorStreamerTest, FloatsArraysAndStringsRoundTripExactly)
{
    const float singles[] = {1.5f, -0.0f, std::numeric_limits<float>::denorm_min(),
                             std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()};
    const float array[] = {0.25f, -1e30f, 3.0f};
    QorStreamer out;
    for (float single : singles)
        out.WriteFloat(single);
    out.WriteFloat(array, 3);
    out.WriteFloat(array, 0); // nothing, not even a count
    out.WriteString(nullptr);
    out.WriteString("");
    out.WriteString("ab");
    out.WriteString("caf\xc3\xa9 \\materials\\wood.png");
    EXPECT_EQ(Bytes(out.GetBytes().begin(), out.GetBytes().begin() + 4), (Bytes{0, 0, 0xc0, 0x3f})) << "1.5f";
    EXPECT_EQ(Bytes(out.GetBytes().begin() + 32, out.GetBytes().begin() + 46),
              (Bytes{0xff, 0xff, 0xff, 0xff, 0, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'}))
        << "-1 for null, else a 32-bit length and the bytes without terminator";

    QorStreamer in(out.GetBytes().data(), out.GetBytes().size());
    for (float single : singles) {
        float value = 7.0f;
        ASSERT_TRUE(in.ReadFloat(value));
        EXPECT_EQ(std::memcmp(&value, &single, sizeof value), 0) << single;
    }
    float values[3] = {};
    ASSERT_TRUE(in.ReadFloat(values, 3));
    EXPECT_EQ(std::vector<float>(values, values + 3), std::vector<float>(array, array + 3));
    EXPECT_TRUE(in.ReadFloat(values, 0));

    char* text = reinterpret_cast<char*>(1);
    ASSERT_TRUE(in.ReadString(text));
    EXPECT_EQ(text, nullptr) << "null stays null";
    for (const char* expected : {"", "ab", "caf\xc3\xa9 \\materials\\wood.png"}) {
        ASSERT_TRUE(in.ReadString(text));
        ASSERT_NE(text, nullptr) << "empty is not null";
        EXPECT_STREQ(text, expected);
        delete[] text;
    }
    EXPECT_EQ(in.GetRemainingSize(), 0u);
    EXPECT_FALSE(in.IsFailed());
}

TEST(QorStreamerTest, ReadsPastTheEndFailAndEveryLaterReadFailsToo)
{
    QorStreamer in(Bytes{1, 0, 0, 0, 9, 9});
    int value = 5;
    ASSERT_TRUE(in.ReadInt(value));
    EXPECT_FALSE(in.ReadInt(value));
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(in.IsFailed());
    EXPECT_EQ(in.GetRemainingSize(), 2u) << "a failed read consumes nothing";

    // Bytes are left, and Rewind goes back to the start, but the streamer stays failed.
    EXPECT_FALSE(in.ReadInt(value, 1));
    in.Rewind();
    EXPECT_FALSE(in.ReadInt(value, 2));
    float single = 3.0f;
    EXPECT_FALSE(in.ReadFloat(single));
    EXPECT_EQ(single, 0.0f);
    char* text = reinterpret_cast<char*>(1);
    EXPECT_FALSE(in.ReadString(text));
    EXPECT_EQ(text, nullptr);
}

TEST(QorStreamerTest, ImpossibleLengthsAndCountsFailWithoutReadingOrAllocatingBeyondTheData)
{
    g_largestArrayNew = 0;
    {
        QorStreamer in(Prefixed(0x7fffffff, "abcd"));
        char* text = reinterpret_cast<char*>(1);
        EXPECT_FALSE(in.ReadString(text));
        EXPECT_EQ(text, nullptr);
        EXPECT_TRUE(in.IsFailed());
    }
    EXPECT_LT(g_largestArrayNew.load(), 1024u) << "no allocation sized from the unchecked length";

    for (std::int32_t length : {-2, std::numeric_limits<std::int32_t>::min(), 5}) {
        QorStreamer in(Prefixed(length, "wxyz"));
        char* text = reinterpret_cast<char*>(1);
        EXPECT_FALSE(in.ReadString(text)) << length;
        EXPECT_EQ(text, nullptr);
    }
    QorStreamer exact(Prefixed(4, "wxyz"));
    char* text = nullptr;
    ASSERT_TRUE(exact.ReadString(text)) << "a length may use every byte left";
    EXPECT_STREQ(text, "wxyz");
    delete[] text;

    const Bytes twoFloats{0, 0, 0x80, 0x3f, 0, 0, 0x80, 0x3f};
    QorStreamer negative(twoFloats);
    float untouched[1] = {4.0f};
    EXPECT_FALSE(negative.ReadFloat(untouched, -1));
    EXPECT_EQ(untouched[0], 4.0f) << "a negative count touches nothing";
    EXPECT_TRUE(negative.IsFailed());

    QorStreamer tooMany(twoFloats);
    std::vector<float> three(3, 9.0f);
    EXPECT_FALSE(tooMany.ReadFloat(three.data(), 3));
    EXPECT_EQ(three, std::vector<float>(3, 0.0f)) << "the caller's values are zeroed";
    EXPECT_EQ(tooMany.GetRemainingSize(), 8u);
}

TEST(QorStreamerTest, MovesCarryTheBytesCursorAndBorrowedContainer)
{
    auto* container = reinterpret_cast<QorResourceZPKContainer*>(0x40);
    QorStreamer first;
    first.SetResourceZPKContainer(container);
    first.WriteInt(11, 0);
    first.WriteInt(22, 0);
    int value = 0;
    ASSERT_TRUE(first.ReadInt(value));

    QorStreamer second;
    second = QorStreamer(std::move(first));
    EXPECT_TRUE(first.GetBytes().empty());
    EXPECT_EQ(second.GetResourceZPKContainer(), container);
    ASSERT_TRUE(second.ReadInt(value));
    EXPECT_EQ(value, 22) << "the read cursor moved along";
}
