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
#include <utility>
#include <vector>

namespace {

// Writes the parameter stream a CgFX set writes: the names, then per value its type, a
// zero token and its data (one float, four floats, or the image id -1 of a texture stored
// without its image).
void WriteRecords(QorStreamer& stream, const std::vector<std::pair<const char*, std::vector<float>>>& records)
{
    stream.WriteInt(static_cast<int>(records.size()), 0);
    for (const auto& record : records)
        stream.WriteString(record.first);
    stream.WriteInt(static_cast<int>(records.size()), 0);
    for (const auto& [name, data] : records) {
        stream.WriteInt(data.empty() ? 4 : data.size() == 1 ? 1 : 2, 0);
        stream.WriteInt(0, 0);
        if (data.empty())
            stream.WriteInt(-1, 0);
        else
            stream.WriteFloat(data.data(), static_cast<int>(data.size()));
    }
}

// Gloss 0.25, Lost 7 (no such uniform in the GLSL effect) and Base (0.9, 0.8, 0.7, 0.6).
void WriteStoredValues(QorStreamer& stream)
{
    WriteRecords(stream, {{"Gloss", {0.25f}}, {"Lost", {7.0f}}, {"Base", {0.9f, 0.8f, 0.7f, 0.6f}}});
}

QorNvFXShaderParameters StoredValues()
{
    QorStreamer stream;
    WriteStoredValues(stream);
    QorNvFXShaderParameters stored;
    stored.UnStream(stream);
    return stored;
}

// A graphic path holding a GLSL effect, by default the test effect as "metal.glslfx".
struct GlslfxFolder
{
    explicit GlslfxFolder(const char* name = "metal.glslfx", const char* text = kQorNvFXTestEffect)
    {
        dir.Write(name, text);
    }
    QorTempDir dir;
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
    const std::pair<const char*, const char*> cases[] = {{"C:\\shaders\\metal.cgfx", "metal.glslfx"},
        {"C:\\old.2\\metal.cgfx", "old.glslfx"}, {"metal.cgfx", "metal.glslfx"},
        {"/unix/folder/metal.cgfx", "/unix/folder/metal.glslfx"}, {"", ".glslfx"}};
    for (const auto& [stored, glslfx] : cases)
        EXPECT_STREQ(QorShaderQRFXMigration::GlslfxName(QorUnicodeString(stored)).c_str(), glslfx) << stored;
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
    GlslfxFolder folder("paint.glslfx", R"(
uniform sampler2D ColorMap < defaultFile = "wood.tif"; >;
uniform float B = 1.0;
uniform float C = 2.0;
GLSLShader FS { void main() { gl_FragColor = texture(ColorMap, vec2(B, C)); } }
Technique T { Pass p0 { FragmentProgram = FS; } }
)");
    // A CgFX sampler without a file is written with no image, then B 10 and C 20.
    QorResourceZPKContainer container;
    QorStreamer stream;
    stream.SetResourceZPKContainer(&container);
    WriteRecords(stream, {{"ColorMap", {}}, {"B", {10.0f}}, {"C", {20.0f}}});
    stream.Rewind();
    QorNvFXShaderParameters stored;
    stored.UnStream(stream);
    ASSERT_EQ(stored.GetValueList()->size(), 3u) << "every record keeps its place";

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
    ASSERT_TRUE(report && report->loaded && report->values.size() == 3u);
    EXPECT_TRUE(report->CarriedEverything());
    using Outcome = QorShaderMigrationReport::Outcome;
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(report->values[i].outcome, i == 0 ? Outcome::NoImage : Outcome::Carried) << i;
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
