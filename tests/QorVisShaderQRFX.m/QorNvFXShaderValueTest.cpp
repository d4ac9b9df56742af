// The GLSL-effect values' own part: the raw write and the record of a value on its own.
// What every value does is checked on both roads in the shared suite.
#include "QorVisShaderQRFX/QorNvFXShaderValueColor.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueFloat.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueString.h"

#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>

// The raw write of the kind's own content marks the value, also with the same content.
TEST(QorNvFXShaderValueTest, TheRawWriteMarksTheValue)
{
    QorNvFXShaderValueFloat number(nullptr, 2.5f);
    number.ResetModified();
    const float same = 2.5f;
    number.Set(&same);
    EXPECT_EQ(number.GetModified(), 1);
    QorNvFXShaderValueString text(nullptr, "oak.png");
    text.ResetModified();
    char* held = nullptr;
    text.GetString(&held);
    text.Set(held); // its own text is copied before the old one goes
    EXPECT_EQ(text.GetModified(), 1);
    EXPECT_STREQ(text.File(), "oak.png");
}

TEST(QorNvFXShaderValueTest, RecordsCarryFourComponentsAndKeepTheCount)
{
    QorStreamer stream;
    const float pair[2] = {0.25f, 0.75f};
    QorNvFXShaderValueColor two(nullptr, pair, 2);
    two.Stream(stream);
    QorNvFXShaderValueFloat(nullptr, 4.5f).Stream(stream);
    QorNvFXShaderValueString(nullptr, nullptr).Stream(stream);
    EXPECT_EQ(stream.GetBytes().size(), 4u + 16 + 4 + 4 + 4 + 4) << "a colour of two writes four floats";

    QorNvFXShaderValueColor back(2);
    QorNvFXShaderValueFloat number;
    QorNvFXShaderValueString text(nullptr, "kept.png");
    back.UnStream(stream);
    number.UnStream(stream);
    text.UnStream(stream);
    EXPECT_FALSE(stream.IsFailed());
    EXPECT_EQ(back.ComponentCount(), 2);
    EXPECT_EQ(back.Components()[1], 0.75f);
    EXPECT_EQ(number.Components()[0], 4.5f);
    EXPECT_STREQ(text.File(), "") << "the empty string was streamed";
    EXPECT_EQ(back.GetParameter(), nullptr) << "a token never turns back into a uniform";

    QorNvFXShaderValueFloat untouched(nullptr, 1.0f);
    untouched.UnStream(stream); // nothing left to read
    EXPECT_EQ(untouched.Components()[0], 1.0f) << "a record cut short changes nothing";
}
