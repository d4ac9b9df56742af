#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"

#include "QorCgTestSupport.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace {

const float kUntouched = -7.0f;

int TypeOf(QorIShaderValue& value)
{
    int type = 0;
    value.GetType(&type);
    return type;
}

} // namespace

TEST(QorShaderValueTest, ColourMovesItsComponentCountWithinItsFourFloats)
{
    const int typeByCount[][2] = {{2, 5}, {3, 6}, {4, 2}, {7, 2}};
    for (const auto& entry : typeByCount)
        EXPECT_EQ(TypeOf(*std::make_unique<QorShaderValueColor>(entry[0])), entry[1]) << entry[0];

    const float source[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    QorShaderValueColor two(nullptr, source, 2);
    float out[6] = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(two.GetColor(out), 1);
    EXPECT_FLOAT_EQ(out[1], 0.2f);
    EXPECT_EQ(out[2], kUntouched) << "two components read, not four";

    // Beyond four the count stays visible, but reads and writes stop at the storage:
    // `source` holds exactly four floats, so reading more would trip the address sanitizer.
    QorShaderValueColor wide(nullptr, source, 6);
    wide.SetColor(source);
    wide.Get(out);
    EXPECT_EQ(wide.ComponentCount(), 6);
    EXPECT_FLOAT_EQ(out[3], 0.4f);
    EXPECT_EQ(out[4], kUntouched);

    QorShaderValueColor unset(nullptr, nullptr, 3);
    unset.Get(out);
    EXPECT_EQ(out[0], 0.0f);
}

TEST(QorShaderValueTest, TypedReadsReturnTheModifiedFlag)
{
    QorShaderValueFloat number(nullptr, 2.5f);
    number.ResetModified();
    float out = 0;
    EXPECT_EQ(number.GetFloat(&out), 0);
    EXPECT_FLOAT_EQ(out, 2.5f) << "an unmodified value is still read";
    number.SetFloat(3.0f);
    EXPECT_EQ(number.GetFloat(&out), 1);
    EXPECT_EQ(TypeOf(number), 1);
}

TEST(QorShaderValueTest, KindMismatchesReportShouldNotHappenAndChangeNothing)
{
    enum Operation { GetFloat, GetColor, GetString, SetString, SetColor, SetFloat };
    struct Case
    {
        int kind; // 0 colour, 1 float, 2 string
        Operation operation;
        int line;
    };
    const char* sources[] = {"QorVisShaderCGFX.m/src/QorShaderValueColor", "QorVisShaderCGFX.m/src/QorShaderValueFloat",
                             "QorVisShaderCGFX.m/src/QorShaderValueString"};
    const Case cases[] = {{0, GetFloat, 108}, {0, GetString, 121}, {0, SetString, 89}, {0, SetFloat, 82},
                          {1, GetColor, 84},  {1, GetString, 92},  {1, SetString, 60}, {1, SetColor, 53},
                          {2, GetFloat, 111}, {2, GetColor, 118},  {2, SetColor, 83},  {2, SetFloat, 76}};
    for (const Case& c : cases) {
        std::unique_ptr<QorShaderValue> value;
        if (c.kind == 0)
            value = std::make_unique<QorShaderValueColor>(4);
        else if (c.kind == 1)
            value = std::make_unique<QorShaderValueFloat>();
        else
            value = std::make_unique<QorShaderValueString>();
        value->ResetModified();
        float floats[4] = {kUntouched};
        char* text = nullptr;
        const float colour[4] = {1, 1, 1, 1};
        int result = 0;
        QorCapturingSink sink;
        switch (c.operation) {
        case GetFloat: result = value->GetFloat(floats); break;
        case GetColor: result = value->GetColor(floats); break;
        case GetString: result = value->GetString(&text); break;
        case SetString: value->SetString("x.png"); break;
        case SetColor: value->SetColor(colour); break;
        case SetFloat: value->SetFloat(1); break;
        }
        ASSERT_EQ(sink.Records().size(), 1u) << c.line;
        EXPECT_EQ(sink.Records()[0].message, "Should not happen");
        EXPECT_EQ(sink.Records()[0].source, sources[c.kind]);
        EXPECT_EQ(sink.Records()[0].line, c.line);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(floats[0], kUntouched);
        EXPECT_EQ(text, nullptr);
        EXPECT_EQ(value->GetModified(), 0) << c.line;
    }
}

TEST(QorShaderValueTest, StringHandsOutItsOwnTextAndSetsCopies)
{
    QorShaderValueString texture(nullptr, "wood.png");
    char* own = nullptr;
    texture.GetString(&own);
    EXPECT_EQ(own, texture.File());
    texture.SetString(own); // its own text is copied before the old one is freed
    EXPECT_STREQ(texture.File(), "wood.png");
    texture.SetString(nullptr);
    EXPECT_EQ(texture.File(), nullptr);
    texture.SetString("stone.png");
    texture.SetLoadState(3);
    QorShaderValueString copy(texture);
    EXPECT_STREQ(copy.File(), "stone.png");
    EXPECT_NE(copy.File(), texture.File());
    EXPECT_EQ(copy.GetLoadState(), 3);
    EXPECT_EQ(TypeOf(copy), 4);
}

TEST(QorShaderValueTest, CopiesAreModifiedAndMirrorTheSameCgParameter)
{
    QorCgTestEffect cg;
    ASSERT_NE(cg.effect.Get(), nullptr) << cgGetLastListing(cg.context.Get());
    const float rgba[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    QorShaderValueFloat number(cg.Parameter("gloss"), 0.5f);
    QorShaderValueColor colour(cg.Parameter("tint"), rgba, 4);
    QorShaderValueString texture(cg.Parameter("diffuse"), "wood.png");
    QorShaderValue* values[] = {&number, &colour, &texture};
    for (QorShaderValue* value : values)
        value->ResetModified();
    QorShaderValueFloat numberCopy(number);
    QorShaderValueColor colourCopy(colour);
    QorShaderValueString textureCopy(texture);
    QorShaderValue* copies[] = {&numberCopy, &colourCopy, &textureCopy};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(copies[i]->GetModified(), 1);
        EXPECT_EQ(copies[i]->GetParameter(), values[i]->GetParameter());
    }
    EXPECT_STREQ(cgGetParameterName(colourCopy.GetParameter()), "tint");
    EXPECT_EQ(static_cast<std::uint32_t>(number.GetParameterToken()),
              static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(cg.Parameter("gloss"))));
    number.SetParameter(nullptr);
    EXPECT_EQ(number.GetParameterToken(), 0);
    EXPECT_EQ(numberCopy.GetParameter(), cg.Parameter("gloss"));
}
