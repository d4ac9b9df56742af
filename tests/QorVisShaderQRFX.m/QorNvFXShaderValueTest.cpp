// The values of GLSL-effect parameter sets: kinds, changed marks and their records.
#include "QorVisShaderQRFX/QorNvFXShaderValueColor.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueFloat.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueString.h"

#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>

namespace {

int TypeOf(QorIShaderValue& value)
{
    int type = 0;
    value.GetType(&type);
    return type;
}

} // namespace

TEST(QorNvFXShaderValueTest, KindsAnswerTheirOwnReadsAndCodes)
{
    QorNvFXShaderValueFloat number(nullptr, 2.5f);
    const float pair[2] = {1, 2};
    QorNvFXShaderValueColor two(nullptr, pair, 2);
    QorNvFXShaderValueColor three(3), four;
    QorNvFXShaderValueString text(nullptr, nullptr);
    EXPECT_EQ(TypeOf(number), 1);
    EXPECT_EQ(TypeOf(two), 5);
    EXPECT_EQ(TypeOf(three), 6);
    EXPECT_EQ(TypeOf(four), 2);
    EXPECT_EQ(TypeOf(text), 4);
    EXPECT_STREQ(text.File(), "") << "a null text is held as the empty one";

    float out[4] = {9, 9, 9, 9};
    EXPECT_EQ(number.GetColor(out), 0) << "another kind's read answers 0 and writes nothing";
    EXPECT_EQ(out[0], 9);
    EXPECT_EQ(two.GetColor(out), 1);
    EXPECT_EQ(out[1], 2);
    EXPECT_EQ(out[2], 9) << "a colour of two writes two";
    number.ResetModified();
    float value = 0;
    EXPECT_EQ(number.GetFloat(&value), 0) << "the read answers the changed mark";
    EXPECT_EQ(value, 2.5f);

    // Every setter marks the value changed, also with the same content.
    const float same = 2.5f;
    number.Set(&same);
    EXPECT_EQ(number.GetModified(), 1);
    text.ResetModified();
    text.Set("");
    EXPECT_EQ(text.GetModified(), 1);
    text.SetString("oak.png");
    char* held = nullptr;
    EXPECT_EQ(text.GetString(&held), 1);
    EXPECT_STREQ(held, "oak.png");
    text.Set(held); // its own text is copied before the old one goes
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
    float components[4] = {};
    back.Get(components);
    EXPECT_EQ(components[1], 0.75f);
    float value = 0;
    number.Get(&value);
    EXPECT_EQ(value, 4.5f);
    EXPECT_STREQ(text.File(), "") << "the empty string was streamed";
    EXPECT_EQ(back.GetParameter(), nullptr) << "a token never turns back into a uniform";

    QorNvFXShaderValueFloat untouched(nullptr, 1.0f);
    untouched.UnStream(stream); // nothing left to read
    untouched.Get(&value);
    EXPECT_EQ(value, 1.0f) << "a record cut short changes nothing";
}
