#include "QorVisShaders/QorShaderIncludeManager.h"

#include <gtest/gtest.h>

TEST(QorShaderIncludeManagerTest, NamesAreExactAndTextsOutliveRemoval)
{
    QorShaderIncludeManager& includes = QorShaderIncludeManager::Instance();
    EXPECT_EQ(&includes, &QorShaderIncludeManager::Instance());
    EXPECT_EQ(includes.GetInclude(QorString("never.fxh")), nullptr);

    EXPECT_EQ(includes.AddInclude(QorString("lib.fxh"), "float a;"), 1);
    EXPECT_EQ(includes.AddInclude(QorString("lib.fxh"), "float b;"), 0);
    EXPECT_EQ(includes.AddInclude(QorString("Lib.fxh"), "float c;"), 1) << "names are case-sensitive";
    EXPECT_STREQ(includes.GetInclude(QorString("lib.fxh")), "float a;");
    EXPECT_STREQ(includes.GetInclude(QorString("Lib.fxh")), "float c;");
    EXPECT_EQ(includes.AddInclude(QorString("null.fxh"), nullptr), 0);

    const char* held = includes.GetInclude(QorString("lib.fxh"));
    includes.RemoveInclude(QorString("lib.fxh"));
    includes.RemoveInclude(QorString("lib.fxh"));
    EXPECT_EQ(includes.GetInclude(QorString("lib.fxh")), nullptr);
    EXPECT_STREQ(held, "float a;") << "a text handed out stays valid after removal";
    EXPECT_EQ(includes.AddInclude(QorString("lib.fxh"), "float d;"), 1);
    EXPECT_STREQ(includes.GetInclude(QorString("lib.fxh")), "float d;");
    includes.RemoveInclude(QorString("lib.fxh"));
    includes.RemoveInclude(QorString("Lib.fxh"));
}
