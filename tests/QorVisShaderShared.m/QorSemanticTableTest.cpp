// What each road binds by semantic and keeps from the user's values.
#include "QorVisShaderShared/QorHiddenParameters.h"
#include "QorVisShaderShared/QorSemanticTable.h"

#include <gtest/gtest.h>

TEST(QorSemanticTableTest, LookupsAreExactAndEachRoadBindsAndHidesItsOwn)
{
    for (const char* unknown : {static_cast<const char*>(nullptr), "", "world", "WORLD ", "NOTHING"})
        EXPECT_EQ(QorFindSemantic(unknown), nullptr) << (unknown ? unknown : "null");
    const QorSemantic* wvp = QorFindSemantic("WORLDVIEWPROJECTION");
    ASSERT_NE(wvp, nullptr);
    EXPECT_EQ(wvp->feed, QorFeedWorldViewProjection);
    EXPECT_EQ(QorFindSemantic("VIEWIT")->feed, QorFindSemantic("VIEWINVERSETRANSPOSE")->feed) << "short and long forms";
    EXPECT_EQ(QorFindSemantic("LIGHTDIR")->light, QorLightFeed::Direction);

    const struct
    {
        const char* semantic;
        bool cgfxBinds, qrfxBinds, cgfxHides, qrfxHides;
    } rows[] = {
        {"WORLDVIEWPROJECTION", true, true, true, true}, {"WORLDI", true, true, true, true},
        {"WORLDINVERSE", false, false, true, true},      {"SPOT", false, false, true, true},
        {"INTENSITY", false, false, true, true},         {"DIFFUSE", true, true, false, false},
        {"AMBIENTCOLOR", true, true, false, false},      {"GLOBALAMBIENTCOLOR", true, true, true, true},
        {"EYEPOS", false, true, false, true},            {"LIGHTPOS", true, false, true, true},
        {"position", true, false, false, false},         {"IBLSPECULAR", true, false, true, false},
        {"NOTHING", false, false, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.semantic);
        EXPECT_EQ(QorBoundSemantic(QorFxCgFX, row.semantic) != nullptr, row.cgfxBinds);
        EXPECT_EQ(QorBoundSemantic(QorFxQRFX, row.semantic) != nullptr, row.qrfxBinds);
        EXPECT_EQ(QorHidesSemantic(QorFxCgFX, row.semantic), row.cgfxHides);
        EXPECT_EQ(QorHidesSemantic(QorFxQRFX, row.semantic), row.qrfxHides);
    }

    for (const char* name : {"Category", "keywords", "description", "NeedTandB", "AutomaticEnvironmentMapTracking"})
        EXPECT_TRUE(QorHiddenParameters::IsHidden(QorFxQRFX, nullptr, name)) << name;
    EXPECT_FALSE(QorHiddenParameters::IsHiddenName(nullptr));
    EXPECT_FALSE(QorHiddenParameters::IsHidden(QorFxCgFX, "", "Description")) << "names are exact too";
    EXPECT_TRUE(QorHiddenParameters::IsHidden(QorFxCgFX, "LIGHTCOLOR", "tint"));
    EXPECT_FALSE(QorHiddenParameters::IsHidden(QorFxCgFX, "EYEPOS", "eye"));
}
