#include "QorShaderParameters.h"

#include "QorCgTestSupport.h"
#include "QorTestSupport.h"

#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::vector<std::string> Names(QorShaderParameters& set)
{
    std::vector<std::string> names;
    for (int i = 1; i < set.GetNbParameters(); ++i)
        names.emplace_back(set.GetParameterName(i) ? set.GetParameterName(i) : "<null>");
    return names;
}

// Little-endian ints and floats as the streamer writes them.
std::vector<unsigned char> Ints(std::initializer_list<int> values, std::initializer_list<float> floats = {})
{
    QorStreamer writer;
    for (int value : values)
        writer.WriteInt(value, 0);
    for (float value : floats)
        writer.WriteFloat(value);
    return writer.GetBytes();
}

} // namespace

// What the CgFX set writes; reading these records is checked on both roads in the shared suite.
TEST(QorShaderParametersStreamTest, ValuesAreWrittenWithTheirTypesAndTokens)
{
    QorRegistryGuard registry;
    QorStreamer empty;
    QorShaderParameters().Stream(empty);
    EXPECT_EQ(empty.GetBytes(), Ints({0, 0}));
    QorCgTestEffect cg;
    QorShaderParameters set;
    cg.AddNumbers(set);
    QorStreamer stream;
    set.Stream(stream);

    // The names, the count, then type, handle token and data of each value; colours write
    // four floats whatever their count.
    int number = 0;
    stream.ReadInt(number);
    EXPECT_EQ(number, 4);
    for (char* name = nullptr; number-- > 0; delete[] name)
        stream.ReadString(name);
    stream.ReadInt(number);
    EXPECT_EQ(number, 4);
    const int types[] = {1, 2, 5, 6};
    for (int i = 0; i < 4; ++i) {
        float data[4] = {};
        stream.ReadInt(number);
        EXPECT_EQ(number, types[i]);
        stream.ReadInt(number);
        EXPECT_EQ(number, set.GetParameterHandle(i + 1));
        stream.ReadFloat(data, i == 0 ? 1 : 4);
        if (i == 2) { // the two-component colour
            EXPECT_EQ(std::vector<float>(data, data + 4), (std::vector<float>{2, 3, 0, 0}));
        }
    }
    EXPECT_EQ(stream.GetRemainingSize(), 0u);
}

TEST(QorShaderParametersStreamTest, TruncatedAndCorruptStreamsLeaveTheSetUsable)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters source;
    cg.AddNumbers(source);
    QorStreamer written;
    source.Stream(written);
    const std::vector<unsigned char> bytes = written.GetBytes();

    for (std::size_t length = 0; length < bytes.size(); ++length) {
        QorShaderParameters target;
        target.AddParameterName("old");
        const float kept[4] = {7, 7, 7, 7};
        target.AddColorParameter(cg.Parameter("tint"), kept, 4);
        const std::vector<std::string> before = Names(target);
        QorStreamer truncated(bytes.data(), length);
        target.UnStream(truncated);
        const std::vector<std::string> names = Names(target);
        EXPECT_TRUE(names == before || names == Names(source)) << "whole name lists only: " << length;
        // The value already there first, then whole records only.
        for (std::size_t i = 0; i < target.GetValueList()->size(); ++i) {
            float expected[4] = {};
            float actual[4] = {};
            if (i == 0)
                std::copy(kept, kept + 4, expected);
            else
                source.GetColorValue(static_cast<int>(i), expected, 0);
            target.GetColorValue(static_cast<int>(i + 1), actual, 0);
            EXPECT_EQ(std::memcmp(expected, actual, sizeof expected), 0) << length;
        }
        QorShaderParameters copy(target);
    }

    // Name counts the data cannot hold are refused before anything is allocated.
    for (int count : {-1, 0x7fffffff, 1000}) {
        QorShaderParameters target;
        target.AddParameterName("old");
        QorStreamer corrupt(Ints({count, -1}));
        target.UnStream(corrupt);
        EXPECT_EQ(Names(target), std::vector<std::string>{"old"}) << count;
    }
    QorShaderParameters many;
    QorStreamer manyValues(Ints({0, 0x7fffffff, 1, 0}, {2}));
    many.UnStream(manyValues);
    EXPECT_EQ(many.GetValueList()->size(), 1u) << "a huge value count ends with the data";
}
