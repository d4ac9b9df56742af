// qorfx translate and migrate --translate end to end, without a display: what is written,
// what the reports say, and how bad input and bad usage end.
#include "QorfxPicture.h"
#include "QorfxRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

using nlohmann::json;
namespace fs = std::filesystem;

namespace {

std::string Corpus(const char* name)
{
    return std::string(QOR_TEST_DATA_DIR) + "/translate/" + name;
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(QorfxTranslateTest, TheGalleryTranslatesWholeAndTheReportSaysWhat)
{
    QorTempDir dir;
    const QorfxResult run = RunQorfx("translate " + QorfxSample("materials/*.cgfx") + " -o " + dir.File("out"));
    ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
    for (const char* name : {"brushed_metal", "chrome", "plastic", "textured", "toon"}) {
        SCOPED_TRACE(name);
        const std::string written = dir.File(std::string("out/") + name + ".glslfx");
        EXPECT_TRUE(Has(run.out, "materials/" + std::string(name) + ".cgfx -> " + written));
        EXPECT_TRUE(Has(QorReadFile(written), "GLSLShader"));
    }
    EXPECT_TRUE(Has(run.out, "  technique PlasticARB: translated (passes p0)\n"));
    EXPECT_TRUE(Has(run.out, "  parameters carried: Diffuse, Specular, Glossiness\n"));
    EXPECT_TRUE(Has(run.out, "  note: lights are drawn as the light configuration \"point,dir\" draws them"));
    EXPECT_TRUE(Has(run.err, "qorfx: translating 5/5 "));

    // --json, for other light kinds and a colour environment.
    const QorfxResult json = RunQorfx("translate --json --lights spot,spot --env 0.2,0.2,0.2 " +
                                      QorfxSample("materials/plastic.cgfx") + " -o " + dir.File("json"));
    ASSERT_EQ(json.exitCode, 0) << json.out << json.err;
    const nlohmann::json report = nlohmann::json::parse(json.out);
    ASSERT_EQ(report.size(), 1u);
    EXPECT_TRUE(report[0]["whole"].get<bool>());
    EXPECT_EQ(report[0]["written"], dir.File("json/plastic.glslfx"));
    EXPECT_EQ(report[0]["techniques"][0], (nlohmann::json{{"name", "Plastic"}, {"translated", true}, {"passes", {"p0"}}}));
    EXPECT_EQ(report[0]["parameters"], (nlohmann::json{"Diffuse", "Specular", "Glossiness"}));
    EXPECT_TRUE(Has(report[0]["notes"].dump(), "\\\"spot,spot\\\""));
    EXPECT_TRUE(Has(QorReadFile(dir.File("json/plastic.glslfx")), "lightData_lightData_LightRadialInnerCone[1]"));
}

TEST(QorfxTranslateTest, PartialAndFailedTranslationsExitOneAndWriteOnlyWholeFiles)
{
    QorTempDir dir;
    // A technique left out and a state dropped: the rest is written, the exit says so.
    const QorfxResult partial = RunQorfx("translate " + Corpus("techniques.cgfx") + " -o " + dir.Path());
    EXPECT_EQ(partial.exitCode, 1);
    EXPECT_TRUE(Has(partial.out, "  technique Fixed: left out\n    techniques.cgfx(48): technique 'Fixed' is left out"));
    EXPECT_TRUE(Has(partial.out, "  state dropped: ColorMask in pass Glow of Layered (techniques.cgfx(42))"));
    EXPECT_TRUE(fs::exists(dir.File("techniques.glslfx")));

    // An effect that does not compile writes nothing and names its line.
    const QorfxResult broken = RunQorfx("translate " + QorfxSample("effects/broken.cgfx") + " -o " + dir.File("b"));
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_TRUE(Has(broken.out, "error: broken.cgfx("));
    EXPECT_FALSE(fs::exists(dir.File("b/broken.glslfx")));

    // A missing file, and a full disk: nothing half written.
    const QorfxResult missing = RunQorfx("translate " + dir.File("none.cgfx") + " -o " + dir.File("m"));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(Has(missing.out, "none.cgfx: cannot read the effect"));
    const QorfxResult full =
        RunQorfx("translate " + QorfxSample("materials/plastic.cgfx") + " -o " + dir.File("full"), QorfxFullDisk());
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_FALSE(fs::exists(dir.File("full/plastic.glslfx")));
    for (const auto& entry : fs::directory_iterator(dir.File("full")))
        ADD_FAILURE() << "left behind: " << entry.path();

    // A file already there (a hand-written twin) is kept unless --force replaces it.
    const std::string twin = dir.Write("twins/plastic.glslfx", "// written by hand\n");
    const std::string again = "translate " + QorfxSample("materials/plastic.cgfx") + " -o " + dir.File("twins");
    const QorfxResult kept = RunQorfx(again);
    EXPECT_EQ(kept.exitCode, 1);
    EXPECT_TRUE(Has(kept.out, twin + ": exists; the translation is not written over it")) << kept.out;
    EXPECT_EQ(QorReadFile(twin), "// written by hand\n");
    EXPECT_EQ(RunQorfx(again + " --force").exitCode, 0);
    EXPECT_TRUE(Has(QorReadFile(twin), "GLSLShader"));
}

TEST(QorfxTranslateTest, BadUsageExitsTwo)
{
    QorTempDir dir;
    const std::string effect = " " + QorfxSample("materials/plastic.cgfx");
    for (const std::string& arguments :
         {std::string("translate"), "translate --lights point,torch" + effect, "translate --env blue" + effect,
          "translate --preview sheet" + effect, "translate -o ''" + effect, "translate --size 0x5" + effect}) {
        const QorfxResult run = RunQorfx(arguments, "cd '" + dir.Path() + "' && ");
        EXPECT_EQ(run.exitCode, 2) << arguments << "\n" << run.err;
        EXPECT_FALSE(fs::exists(dir.File("plastic.glslfx"))) << arguments;
    }
}

TEST(QorfxTranslateTest, MigrateTranslatesMissingTwinsAndCarriesEveryValue)
{
    QorTempDir dir;
    const auto& materials = GalleryWithValues();
    // Stored as documents made on another machine: their effects named without folders.
    std::string failure;
    const std::string documents = PackGalleryDocuments(dir, failure);
    ASSERT_FALSE(documents.empty()) << failure;
    // --path brings the lighting include, not the hand-written twins.
    const std::string path = " --path " + QorfxSample("");
    const QorfxResult without = RunQorfx("migrate" + documents + path);
    EXPECT_EQ(without.exitCode, 1) << "no twin is found without --translate";

    const QorfxResult run = RunQorfx("migrate --json --translate -o " + dir.File("out") + documents + path);
    ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
    const json report = json::parse(run.out);
    ASSERT_EQ(report.size(), 5u);
    for (std::size_t row = 0; row < 5; ++row) {
        const auto& [material, values] = materials[row];
        SCOPED_TRACE(material);
        const json& migrated = report[row]["materials"][0];
        EXPECT_TRUE(migrated["migrated"].get<bool>());
        EXPECT_EQ(migrated["lost"], json::array());
        EXPECT_TRUE(migrated["translation"]["whole"].get<bool>());
        for (std::size_t at = values.find("--set "); at != std::string::npos; at = values.find("--set ", at + 1)) {
            const std::string name = values.substr(at + 6, values.find('=', at) - at - 6);
            bool carried = false;
            for (const json& value : migrated["carried"])
                carried = carried || (value["name"] == name && value["value"] == value["migrated"]);
            EXPECT_TRUE(carried) << name;
        }
        // The twin is written beside the migrated material, which names it.
        const json description = json::parse(QorReadFile(dir.File("out/" + material + "/material.json")));
        EXPECT_EQ(description["file"], material + ".glslfx");
        EXPECT_EQ(description["translatedFrom"], material + ".cgfx");
        EXPECT_TRUE(Has(QorReadFile(dir.File("out/" + material + "/" + material + ".glslfx")), "translated from"));
    }
    const QorfxResult text = RunQorfx("migrate --translate" + documents + path);
    EXPECT_TRUE(Has(text.out, "plastic: plastic.cgfx -> plastic.glslfx (translated from the CgFX source the "
                              "document carries)\n    translation: technique Plastic: translated (passes p0)"));
}
