// The shader object of the material model on both roads: neutral answers, finding and
// sharing the effect, the values, the technique pseudo-parameter, clones and releases.
#include "QorMaterialRoads.h"

QOR_MATERIAL_SUITE(QorShaderObjectTest);

TYPED_TEST(QorShaderObjectTest, WithoutEffectOrParametersQueriesAnswerNeutrally)
{
    QorShaderPtr shader(TypeParam::NewShader());
    EXPECT_FALSE(shader->HasEffect());
    EXPECT_EQ(shader->GetImplementation(), TypeParam::kImplementation);
    EXPECT_EQ(shader->GetNbParameters(), -1);
    EXPECT_EQ(shader->GetParameterIndex("tint"), -1);
    EXPECT_EQ(shader->GetParameterType(1), 0);
    EXPECT_EQ(shader->GetParameterName(1), nullptr);
    float value = 0;
    EXPECT_EQ(shader->GetParameterFloat(0, &value), -1);
    EXPECT_EQ(shader->SetParameterFloat(1, 1.0f), -1);
    EXPECT_EQ(shader->GetParameterColor(1, &value, &value, &value, &value), -1);
    EXPECT_EQ(shader->SetParameterColor(1, 1, 1, 1, 1), -1);
    char buffer[QorMaxParameterStringLength];
    EXPECT_EQ(shader->GetParameterString(1, buffer), -1);
    EXPECT_EQ(shader->SetParameterString(1, "x"), -1);
    EXPECT_EQ(shader->Reserved1(), -1);
    EXPECT_EQ(shader->Reserved2(), -1);
    EXPECT_FALSE(shader->GenerateParameters());
    EXPECT_FALSE(shader->UpdateLightModel(1));
    EXPECT_EQ(shader->GetBuffer(), nullptr);
    float min = 0, max = 0, step = 0;
    EXPECT_EQ(shader->GetParameterFloatMinMaxStep(1, min, max, step, nullptr, nullptr), -1);
    shader->SetCurrentParameters(); // no effect: nothing to do
}

TYPED_TEST(QorShaderObjectTest, FindsItsFileAlongTheSearchPathsAndSharesTheEffectOfItsName)
{
    const char* material = TypeParam::kMaterial;
    const std::string ext = TypeParam::kExtension;
    QorTempDir graphic, elsewhere;
    graphic.Write("shaders/under_shaders" + ext, material);
    QorScopedEnv graphicPath("QorGraphicPath", graphic.Path().c_str());
    const auto loaded = [](const std::string& name) {
        QorShaderPtr shader(TypeParam::NewShader());
        testing::internal::CaptureStdout();
        shader->SetFileName(QorString(name.c_str()));
        testing::internal::GetCapturedStdout();
        return shader;
    };
    QorShaderPtr found = loaded("under_shaders" + ext);
    ASSERT_TRUE(found->HasEffect());
    EXPECT_STREQ(found->GetBuffer(), material);
    EXPECT_STREQ(found->GetIShaderEffect()->GetName(), ("under_shaders" + ext).c_str())
        << "shared under the name as given";

    std::string direct = elsewhere.Write("direct" + ext, material);
    for (char& c : direct)
        if (c == '/')
            c = '\\';
    QorShaderPtr first = loaded(direct), second = loaded(direct);
    ASSERT_TRUE(first->HasEffect());
    EXPECT_STREQ(first->GetPathName().c_str(), direct.substr(0, direct.rfind('\\') + 1).c_str());
    EXPECT_EQ(first->GetIShaderEffect(), second->GetIShaderEffect()) << "shared by its path";
    EXPECT_EQ(first->GetIShaderEffect()->AddRef(), 3u) << "one reference per shader";
    first->GetIShaderEffect()->Release();

    const std::pair<const char*, const char*> unfound[] = {
        {"nowhere", ""}, {"", ""}, {"a/b\\c", "a/b\\"}, {"\\x", ""}};
    for (const auto& [name, path] : unfound) {
        QorShaderPtr missing = loaded(*name ? name + ext : "");
        EXPECT_FALSE(missing->HasEffect()) << name;
        EXPECT_STREQ(missing->GetPathName().c_str(), path) << "the separator is kept; none at the start";
    }
    EXPECT_STREQ(loaded("nowhere" + ext)->GetFileName().c_str(), ("nowhere" + ext).c_str());

    // Found but not readable (a folder of that name): one road says so.
    elsewhere.Write("folder" + ext + "/inside", "x");
    QorShaderPtr unreadable(TypeParam::NewShader());
    testing::internal::CaptureStdout();
    unreadable->SetFileName(QorString(elsewhere.File("folder" + ext).c_str()));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_FALSE(unreadable->HasEffect());
    const bool reports = this->Set(*this->Generated()).Profile().reportsUnreadableFile;
    EXPECT_EQ(printed, reports ? "Shader " + elsewhere.File("folder" + ext) + " not found \n" : "");
}

TYPED_TEST(QorShaderObjectTest, ValuesTheTechniqueAndClones)
{
    QorShaderPtr first = this->Generated(), second(TypeParam::NewShader());
    second->SetBuffer(TypeParam::kMaterial, (std::string("material") + TypeParam::kExtension).c_str());
    const char* names[] = {"Technique", "gloss", "tint", "scale", "rgb", "diffuse"};
    const int types[] = {1, 1, 2, 5, 6, 4};
    ASSERT_EQ(first->GetNbParameters(), 6);
    for (int index = 0; index < 6; ++index) {
        EXPECT_STREQ(first->GetParameterName(index), names[index]);
        EXPECT_EQ(first->GetParameterType(index), types[index]) << names[index];
        if (index > 0) {
            EXPECT_EQ(first->GetParameterIndex(names[index]), index);
        }
    }
    const QorBackEndProfile& profile = this->Set(*first).Profile();
    const int tint = kTint + 1, gloss = kGloss + 1, diffuse = kDiffuse + 1;
    float r = -1, g = -1, b = -1, a = -1;
    EXPECT_EQ(first->GetParameterColor(0, &r, &g, &b, &a), -1) << "index 0 is no colour";
    EXPECT_EQ(first->GetParameterColor(tint, &r, &g, &b, &a), 1) << "fresh values are modified";
    EXPECT_EQ(g == -1, profile.colorQueryStopsOnChangedMark);
    first->GetIShaderParameters()->ResetModified(tint);
    EXPECT_EQ(first->GetParameterColor(tint, &r, &g, &b, &a), 0);
    EXPECT_FLOAT_EQ(g, 0.5f);
    EXPECT_EQ(first->SetParameterColor(tint, 0.9f, 0.8f, 0.7f, 0.6f), 0);
    first->GetIShaderParameters()->ResetModified(tint);
    first->GetParameterColor(tint, &r, &g, &b, &a);
    EXPECT_FLOAT_EQ(a, 0.6f);
    char file[QorMaxParameterStringLength] = {};
    EXPECT_EQ(first->GetParameterString(0, file), -1);
    EXPECT_EQ(first->GetParameterString(diffuse, file), profile.stringQueryAnswer);
    EXPECT_STREQ(file, "wood.png");

    // The technique pseudo-parameter goes to the shared effect (where each road answers
    // its position its own way).
    float technique = -1;
    EXPECT_EQ(first->GetParameterFloat(0, &technique), 0);
    EXPECT_EQ(technique, 0.0f);
    EXPECT_EQ(first->SetParameterString(0, "second"), 0);
    EXPECT_EQ(first->SetParameterFloat(0, 1.0f), 0);
    EXPECT_EQ(second->GetParameterFloat(0, &technique), -1) << "no parameter set yet, although the effect exists";

    EXPECT_EQ(first->SetParameterFloat(gloss, 0.75f), 0);
    QorShaderPtr clone(first->Clone());
    EXPECT_EQ(clone->GetIShaderEffect(), first->GetIShaderEffect());
    EXPECT_NE(clone->GetIShaderParameters(), first->GetIShaderParameters());
    float copied = 0;
    clone->GetParameterFloat(gloss, &copied);
    EXPECT_EQ(copied, 0.75f);
    clone->SetParameterFloat(gloss, 0.1f);
    first->GetParameterFloat(gloss, &copied);
    EXPECT_EQ(copied, 0.75f) << "values are independent after cloning";

    first->SetCurrentParameters();
    EXPECT_EQ(first->GetIShaderEffect()->GetIShaderParameters(), first->GetIShaderParameters());
    clone->ReleaseEffect();
    EXPECT_FALSE(clone->HasEffect());
    EXPECT_EQ(clone->GetNbParameters(), 6) << "the values stay";
}

// Each way a selected set can go, or its shader leave the effect: the effect then has no
// current set until another is selected, and uploads nothing.
TYPED_TEST(QorShaderObjectTest, TheEffectNeverKeepsTheSetOfAGoneShader)
{
    QorShaderPtr kept = this->Generated();
    QorIShaderEffect* effect = kept->GetIShaderEffect();
    const std::pair<const char*, void (*)(QorShaderPtr&)> departures[] = {
        {"deleted", [](QorShaderPtr& shader) { shader.reset(); }},
        {"regenerated", [](QorShaderPtr& shader) { shader->GenerateParameters(); }},
        {"moved to another effect", [](QorShaderPtr& shader) { shader->SetBuffer(TypeParam::kMaterial, "elsewhere"); }},
        {"released its effect", [](QorShaderPtr& shader) { shader->ReleaseEffect(); }},
        {"clone deleted", [](QorShaderPtr& shader) { shader.reset(); }},
    };
    for (const auto& [how, depart] : departures) {
        QorShaderPtr leaving = std::string(how) == "clone deleted" ? QorShaderPtr(kept->Clone()) : this->Generated();
        leaving->SetCurrentParameters();
        ASSERT_EQ(effect->GetIShaderParameters(), leaving->GetIShaderParameters()) << how;
        depart(leaving);
        EXPECT_EQ(effect->GetIShaderParameters(), nullptr) << how;
        effect->UploadCurrentParameters(false);
    }
    kept->SetCurrentParameters();
    EXPECT_EQ(effect->GetIShaderParameters(), kept->GetIShaderParameters());
}
