// qorfx migrate end to end: the gallery's CgFX materials, stored with values of their
// own, come back as their GLSL twins and look the same.
#include "QorfxPicture.h"
#include "QorfxRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;

TEST(QorfxMigrateGLTest, TheGalleryComesBackInItsGlslTwinsWithEveryValue)
{
    QorTempDir dir;
    const auto& materials = GalleryWithValues();
    std::string failure;
    const std::string documents = PackGalleryDocuments(dir, failure);
    ASSERT_FALSE(documents.empty()) << failure;
    const unsigned tile = 96, cell = tile + 22;
    const QorfxResult run = RunQorfx("migrate --json --size 96x96 --preview " + dir.File("preview.png") + documents,
                                     "QorGraphicPath='" + QorfxSample("materials") + ";" + QorfxSample("") + "' ");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const json report = json::parse(run.out);
    ASSERT_EQ(report.size(), 5u);
    for (std::size_t row = 0; row < 5; ++row) {
        const auto& [material, values] = materials[row];
        SCOPED_TRACE(material);
        const json& migrated = report[row]["materials"][0];
        EXPECT_EQ(migrated["effect"], material + ".glslfx");
        EXPECT_EQ(migrated["lost"], json::array());
        // Each value set when packing is among those carried.
        for (std::size_t at = values.find("--set "); at != std::string::npos; at = values.find("--set ", at + 1)) {
            const std::string name = values.substr(at + 6, values.find('=', at) - at - 6);
            bool carried = false;
            for (const json& value : migrated["carried"])
                carried = carried || value["name"] == name;
            EXPECT_TRUE(carried) << name;
        }
    }

    const Picture preview = Read(dir.File("preview.png"));
    ASSERT_TRUE(preview.image);
    ASSERT_EQ(preview.image->GetWidth(), 2 * tile) << "before and after side by side";
    ASSERT_EQ(preview.image->GetHeight(), 5 * cell);
    for (unsigned row = 0; row < 5; ++row) {
        SCOPED_TRACE(materials[row].first);
        const auto difference = MeanDifference(preview, preview, tile, tile, 0, row * cell, tile, row * cell);
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_LE(difference[channel], 0.03) << "channel " << channel;
    }
}
