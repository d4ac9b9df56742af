// The values of the material model on both roads: kinds and codes, typed reads and
// writes with the modified mark, misplaced operations, texture names and copies.
#include "QorMaterialRoads.h"

#include "QorVisShaderQRFX/QorNvFXShaderValueColor.h"

namespace {

const float kUntouched = -7.0f;

} // namespace

QOR_MATERIAL_SUITE(QorMaterialValueTest);

TYPED_TEST(QorMaterialValueTest, KindsReadAndWriteTheirOwnContentAndMarkEveryWrite)
{
    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& set = this->Set(*shader);
    const int types[] = {1, 2, 5, 6, 4}, counts[] = {1, 4, 2, 3, 0};
    for (int position = kGloss; position <= kDiffuse; ++position) {
        int type = 0;
        set.ValueAtPosition(position)->GetType(&type);
        EXPECT_EQ(type, types[position]);
        EXPECT_EQ(set.ValueAtPosition(position)->ComponentCount(), counts[position]);
        set.ValueAtPosition(position)->ResetModified();
    }
    QorMaterialValue& gloss = *set.ValueAtPosition(kGloss);
    float out[6] = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};
    EXPECT_EQ(gloss.GetFloat(out), 0) << "the read answers the mark";
    EXPECT_FLOAT_EQ(out[0], 0.5f);
    gloss.SetFloat(0.5f);
    EXPECT_EQ(gloss.GetFloat(out), 1) << "a write marks the value, also with the same content";

    QorMaterialValue& scale = *set.ValueAtPosition(kScale);
    out[0] = kUntouched;
    EXPECT_EQ(scale.GetColor(out), 0);
    EXPECT_EQ(out[1], 3.0f);
    EXPECT_EQ(out[2], kUntouched) << "a colour of two reads two";
    const float wide[4] = {8, 9, 10, 11};
    scale.SetColor(wide);
    EXPECT_EQ(scale.Get(out), 1);
    EXPECT_EQ(out[1], 9.0f);
    EXPECT_EQ(scale.Components()[2], 0.0f) << "and writes two";

    // A texture value outside a set (a set's value holds a registry reference of its name).
    std::unique_ptr<QorMaterialValue> diffuse(set.ValueAtPosition(kDiffuse)->Clone());
    diffuse->ResetModified();
    char* own = nullptr;
    EXPECT_EQ(diffuse->GetString(&own), 0);
    EXPECT_EQ(own, diffuse->File()) << "its own text, not a copy";
    diffuse->SetString(own); // copied before the old one is freed
    EXPECT_STREQ(diffuse->File(), "wood.png");
    diffuse->SetString(nullptr);
    if (set.Profile().emptyTextForNull)
        EXPECT_STREQ(diffuse->File(), "");
    else
        EXPECT_EQ(diffuse->File(), nullptr);
    diffuse->SetString("stone.png");
    diffuse->SetLoadState(3);
    std::unique_ptr<QorMaterialValue> copied(diffuse->Clone());
    EXPECT_STREQ(copied->File(), "stone.png");
    EXPECT_NE(copied->File(), diffuse->File());
    EXPECT_EQ(copied->GetLoadState(), 3);

    // Copies are modified, of the same kind, and mirror the same parameter.
    for (int position = kGloss; position <= kDiffuse; ++position) {
        QorMaterialValue& value = *set.ValueAtPosition(position);
        value.ResetModified();
        std::unique_ptr<QorMaterialValue> copy(value.Clone());
        EXPECT_EQ(copy->GetModified(), 1);
        EXPECT_EQ(copy->Type(), value.Type());
        EXPECT_EQ(copy->Binding(), value.Binding());
        EXPECT_EQ(copy->GetParameterToken(), value.GetParameterToken());
        EXPECT_EQ(&copy->Profile(), &value.Profile());
        copy->SetParameter(nullptr);
        EXPECT_EQ(copy->GetParameterToken(), 0);
        EXPECT_NE(value.Binding(), nullptr) << "the original still mirrors its own";
    }
    // Beyond four components the count stays visible, but reads and writes stop at the
    // storage: `wide` holds exactly four floats, so more would trip the address sanitizer.
    QorNvFXShaderValueColor six(nullptr, wide, 6);
    six.SetColor(wide);
    std::fill(out, out + 6, kUntouched);
    six.Get(out);
    EXPECT_EQ(six.ComponentCount(), 6);
    EXPECT_FLOAT_EQ(out[3], 11.0f);
    EXPECT_EQ(out[4], kUntouched);
    int type = 0;
    six.GetType(&type);
    EXPECT_EQ(type, 2);
    QorNvFXShaderValueColor unset(nullptr, nullptr, 3);
    unset.Get(out);
    EXPECT_EQ(out[0], 0.0f) << "no numbers: zero";
}

TYPED_TEST(QorMaterialValueTest, MisplacedOperationsReportWhereTheRoadSaysAndChangeNothing)
{
    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& set = this->Set(*shader);
    const QorBackEndProfile& profile = set.Profile();
    enum Operation { GetFloat, GetColor, GetString, SetString, SetColor, SetFloat };
    // Both roads report at the same lines of their value kinds' sources.
    const struct
    {
        int position;
        const QorValueGuards& guards;
        const char* kind;
        std::vector<std::pair<Operation, int>> misplaced;
    } kinds[] = {
        {kTint, profile.colorGuards, "ShaderValueColor",
         {{GetFloat, 108}, {GetString, 121}, {SetString, 89}, {SetFloat, 82}}},
        {kGloss, profile.floatGuards, "ShaderValueFloat",
         {{GetColor, 84}, {GetString, 92}, {SetString, 60}, {SetColor, 53}}},
        {kDiffuse, profile.stringGuards, "ShaderValueString",
         {{GetFloat, 111}, {GetColor, 118}, {SetColor, 83}, {SetFloat, 76}}},
    };
    for (const auto& kind : kinds) {
        QorMaterialValue& value = *set.ValueAtPosition(kind.position);
        for (const auto& [operation, line] : kind.misplaced) {
            value.ResetModified();
            float floats[4] = {kUntouched};
            char* text = nullptr;
            const float colour[4] = {1, 1, 1, 1};
            int result = 0;
            QorCapturingSink sink;
            switch (operation) {
            case GetFloat: result = value.GetFloat(floats); break;
            case GetColor: result = value.GetColor(floats); break;
            case GetString: result = value.GetString(&text); break;
            case SetString: value.SetString("x.png"); break;
            case SetColor: value.SetColor(colour); break;
            case SetFloat: value.SetFloat(1); break;
            }
            SCOPED_TRACE(kind.guards.source + (" " + std::to_string(operation)));
            ASSERT_EQ(sink.Records().size(), 1u);
            EXPECT_EQ(sink.Records()[0].message, "Should not happen");
            EXPECT_EQ(sink.Records()[0].source, kind.guards.source);
            EXPECT_NE(sink.Records()[0].source.find(kind.kind), std::string::npos);
            EXPECT_EQ(sink.Records()[0].line, line);
            EXPECT_EQ(result, 0);
            EXPECT_EQ(floats[0], kUntouched);
            EXPECT_EQ(text, nullptr);
            EXPECT_EQ(value.GetModified(), 0);
        }
    }
}
