// Carrying stored CgFX-era materials over to GLSL effects: the name cut, the values
// copied by name, the streamer's part.
#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"

#include "QorNvFXShader.h"
#include "QorNvFXTestEffect.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The parameter stream a CgFX set writes: Gloss 0.25, Lost 7 (no such uniform in the
// GLSL effect) and Base (0.9, 0.8, 0.7, 0.6).
void WriteStoredValues(QorStreamer& stream)
{
    stream.WriteInt(3, 0);
    for (const char* name : {"Gloss", "Lost", "Base"})
        stream.WriteString(name);
    stream.WriteInt(3, 0);
    for (float value : {0.25f, 7.0f}) {
        stream.WriteInt(1, 0);
        stream.WriteInt(0, 0);
        stream.WriteFloat(value);
    }
    const float base[4] = {0.9f, 0.8f, 0.7f, 0.6f};
    stream.WriteInt(2, 0);
    stream.WriteInt(0, 0);
    stream.WriteFloat(base, 4);
}

QorNvFXShaderParameters StoredValues()
{
    QorStreamer stream;
    WriteStoredValues(stream);
    QorNvFXShaderParameters stored;
    stored.UnStream(stream);
    return stored;
}

// A graphic path holding the GLSL effect "metal.glslfx".
struct GlslfxFolder
{
    QorTempDir dir;
    std::string path = dir.Write("metal.glslfx", kQorNvFXTestEffect);
    QorScopedEnv graphic{"QorGraphicPath", dir.Path().c_str()};
    QorScopedEnv startup{"QorStartupPath", nullptr};
};

float FloatOf(QorIShader& shader, const char* name)
{
    float value = -1;
    shader.GetIShaderParameters()->GetFloatValue(shader.GetParameterIndex(name), &value, 0);
    return value;
}

} // namespace

TEST(QorShaderQRFXMigrationTest, StoredNamesLeadToGlslfxNames)
{
    const struct
    {
        const char* stored;
        const char* glslfx;
    } cases[] = {{"C:\\shaders\\metal.cgfx", "metal.glslfx"},
                 {"C:\\old.2\\metal.cgfx", "old.glslfx"},
                 {"metal.cgfx", "metal.glslfx"},
                 {"/unix/folder/metal.cgfx", "/unix/folder/metal.glslfx"},
                 {"", ".glslfx"}};
    for (const auto& c : cases)
        EXPECT_STREQ(QorShaderQRFXMigration::GlslfxName(QorUnicodeString(c.stored)).c_str(), c.glslfx) << c.stored;
}

TEST(QorShaderQRFXMigrationTest, ValuesAreCopiedByNameAndMissingOnesSaidOnce)
{
    QorRegistryGuard guard; // the test effect registers its texture
    GlslfxFolder folder;
    QorNvFXShader shader;
    QorNvFXShaderParameters stored = StoredValues();
    QorShaderQRFXMigration migration;
    EXPECT_EQ(migration.AddShaderToMigrate(&shader, QorUnicodeString("C:\\shaders\\metal.cgfx"), &stored), 1);
    ASSERT_EQ(migration.GetEntryCount(), 1u);
    EXPECT_STREQ(migration.GetEntryName(0), "C:\\shaders\\metal.cgfx");
    EXPECT_NE(migration.GetEntryParameters(0), &stored) << "a copy is kept";

    for (int run = 0; run < 2; ++run) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(migration.MigrateToQRFX(), 0);
        const std::string printed = testing::internal::GetCapturedStdout();
        ASSERT_TRUE(shader.HasEffect()) << "metal.glslfx found on the graphic path";
        EXPECT_STREQ(shader.GetFileName().c_str(), "metal.glslfx");
        EXPECT_EQ(printed.find("Bad index \n"), printed.rfind("Bad index \n")) << "once per run";
        EXPECT_NE(printed.find("Bad index \n"), std::string::npos) << "\"Lost\" is not in the GLSL effect";
        EXPECT_EQ(FloatOf(shader, "Gloss"), 0.25f) << "run " << run;
        float base[4] = {};
        shader.GetIShaderParameters()->GetColorValue(shader.GetParameterIndex("Base"), base, 0);
        EXPECT_FLOAT_EQ(base[3], 0.6f);
        shader.SetParameterFloat(shader.GetParameterIndex("Gloss"), 5.0f); // the second run sets it again
    }
}

TEST(QorShaderQRFXMigrationTest, ATextureStoredWithoutItsImageLeavesEveryValueOnItsName)
{
    QorRegistryGuard guard; // the test effect registers its texture
    QorTempDir dir;
    dir.Write("paint.glslfx", R"(
uniform sampler2D ColorMap < defaultFile = "wood.tif"; >;
uniform float B = 1.0;
uniform float C = 2.0;
GLSLShader FS { void main() { gl_FragColor = texture(ColorMap, vec2(B, C)); } }
Technique T { Pass p0 { FragmentProgram = FS; } }
)");
    QorScopedEnv graphic("QorGraphicPath", dir.Path().c_str());
    QorScopedEnv startup("QorStartupPath", nullptr);
    // A CgFX sampler without a file is written with no image (id -1), then B 10 and C 20.
    QorResourceZPKContainer container;
    QorStreamer stream;
    stream.SetResourceZPKContainer(&container);
    stream.WriteInt(3, 0);
    for (const char* name : {"ColorMap", "B", "C"})
        stream.WriteString(name);
    stream.WriteInt(3, 0);
    for (int field : {4, 0, -1})
        stream.WriteInt(field, 0);
    for (float value : {10.0f, 20.0f}) {
        stream.WriteInt(1, 0);
        stream.WriteInt(0, 0);
        stream.WriteFloat(value);
    }
    stream.Rewind();
    QorNvFXShaderParameters stored;
    stored.UnStream(stream);
    ASSERT_EQ(stored.GetValueList()->size(), 3u) << "every record keeps its place";
    EXPECT_EQ(stored.GetParameterType(1), 4);

    QorNvFXShader shader;
    QorShaderQRFXMigration migration;
    migration.AddShaderToMigrate(&shader, QorUnicodeString("paint.cgfx"), &stored);
    testing::internal::CaptureStdout();
    migration.MigrateToQRFX();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(FloatOf(shader, "B"), 10.0f);
    EXPECT_EQ(FloatOf(shader, "C"), 20.0f);
    char texture[QorMaxParameterStringLength] = {};
    shader.GetParameterString(shader.GetParameterIndex("ColorMap"), texture);
    EXPECT_STREQ(texture, "wood.tif") << "the GLSL effect keeps its own texture";

    const QorShaderMigrationReport* report = migration.GetEntryReport(0);
    ASSERT_NE(report, nullptr);
    EXPECT_TRUE(report->loaded);
    EXPECT_TRUE(report->CarriedEverything());
    using Outcome = QorShaderMigrationReport::Outcome;
    ASSERT_EQ(report->values.size(), 3u);
    EXPECT_EQ(report->values[0].outcome, Outcome::NoImage);
    EXPECT_EQ(report->values[1].outcome, Outcome::Carried);
    EXPECT_EQ(report->values[2].outcome, Outcome::Carried);
}

TEST(QorShaderQRFXMigrationTest, AShaderDestroyedBeforeTheRunLeavesTheMigration)
{
    QorRegistryGuard guard; // the test effect registers its texture
    GlslfxFolder folder;
    QorNvFXShaderParameters stored = StoredValues();
    QorShaderQRFXMigration migration;
    auto* gone = new QorNvFXShader();
    QorNvFXShader kept;
    migration.AddShaderToMigrate(gone, QorUnicodeString("metal.cgfx"), &stored);
    migration.AddShaderToMigrate(&kept, QorUnicodeString("metal.cgfx"), &stored);
    gone->Destroy();
    EXPECT_EQ(migration.GetEntryShader(0), nullptr);
    testing::internal::CaptureStdout();
    migration.MigrateToQRFX();
    testing::internal::GetCapturedStdout();
    ASSERT_NE(migration.GetEntryReport(0), nullptr);
    EXPECT_TRUE(migration.GetEntryReport(0)->shaderGone);
    EXPECT_EQ(FloatOf(kept, "Gloss"), 0.25f) << "the others are migrated";
}

TEST(QorShaderQRFXMigrationTest, WithoutALockNothingIsRecorded)
{
    QorRegistryGuard guard; // the test effect registers its texture
    QorNvFXShader shader;
    QorNvFXShaderParameters stored = StoredValues();
    QorShaderQRFXMigration unlocked(nullptr);
    EXPECT_EQ(unlocked.AddShaderToMigrate(&shader, QorUnicodeString("metal.cgfx"), &stored), 1);
    EXPECT_EQ(unlocked.GetEntryCount(), 0u);
    testing::internal::CaptureStdout();
    EXPECT_EQ(unlocked.MigrateToQRFX(), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(shader.HasEffect());

    QorShaderQRFXMigration original;
    original.AddShaderToMigrate(&shader, QorUnicodeString("metal.cgfx"), &stored);
    QorShaderQRFXMigration copy(original);
    EXPECT_EQ(copy.GetEntryParameters(0), original.GetEntryParameters(0)) << "copies share their entries";
}

TEST(QorShaderQRFXMigrationTest, ReadingADocumentMigratesItsShadersOnceAtTheEnd)
{
    QorRegistryGuard guard; // the test effect registers its texture
    GlslfxFolder folder;
    // What a document of one CgFX material holds: the values, then its effect's resource.
    QorResourceZPKContainer container;
    QorStreamer stream;
    stream.SetResourceZPKContainer(&container);
    WriteStoredValues(stream);
    container.AddResource(stream, "C:\\materials\\metal.cgfx", "float4 cgfx;");
    stream.Rewind();

    QorNvFXShader shader;
    shader.UnStream(stream);
    EXPECT_FALSE(shader.HasEffect()) << "un-streaming only registers the shader";
    auto* migration = dynamic_cast<QorShaderQRFXMigration*>(stream.GetMigration());
    ASSERT_NE(migration, nullptr);
    ASSERT_EQ(migration->GetEntryCount(), 1u);
    EXPECT_STREQ(migration->GetEntryName(0), "C:\\materials\\metal.cgfx");

    testing::internal::CaptureStdout();
    stream.FinishReading();
    testing::internal::GetCapturedStdout();
    ASSERT_TRUE(shader.HasEffect());
    EXPECT_EQ(FloatOf(shader, "Gloss"), 0.25f);
    shader.SetParameterFloat(shader.GetParameterIndex("Gloss"), 3.0f);
    stream.FinishReading();
    EXPECT_EQ(FloatOf(shader, "Gloss"), 3.0f) << "a second call does nothing";
}
