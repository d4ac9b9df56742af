#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorPaths.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

TEST(QorPathsTest, FrameworkPathsReachTheFileSystemWithEitherSeparator)
{
    QorTempDir dir;
    dir.Write("materials/shaders/plastic.cgfx", "technique t {}");
    const std::string windowsStyle = dir.Path() + "\\materials\\shaders\\plastic.cgfx";

    EXPECT_EQ(QorNativePath("\\a\\b/c"), "/a/b/c");
    EXPECT_EQ(QorNativePath(nullptr), "");
    EXPECT_EQ(QorFileAccess(windowsStyle.c_str(), 0), 0);
    EXPECT_EQ(QorFileAccess(windowsStyle.c_str(), 4), 0);
    EXPECT_EQ(QorFileAccess((dir.Path() + "\\missing.cgfx").c_str(), 0), -1);
    EXPECT_EQ(QorFileAccess("", 0), -1);
    EXPECT_EQ(QorFileAccess(nullptr, 0), -1);

    FILE* file = QorFopen(windowsStyle.c_str(), "r");
    ASSERT_NE(file, nullptr);
    char text[32] = {};
    EXPECT_EQ(std::fread(text, 1, sizeof text - 1, file), 14u);
    std::fclose(file);
    EXPECT_STREQ(text, "technique t {}");
    EXPECT_EQ(QorFopen(nullptr, "r"), nullptr);
}

TEST(QorPathsTest, MakeAndSplitKeepTheFrameworkSeparators)
{
    EXPECT_STREQ(QorMakePath("C:\\temp\\ZPKResources", "wood.png").c_str(), "C:\\temp\\ZPKResources\\wood.png");
    EXPECT_STREQ(QorMakePath("/tmp/", "wood.png").c_str(), "/tmp/wood.png");
    EXPECT_STREQ(QorMakePath("", "wood.png").c_str(), "wood.png");

    QorString directory, file;
    EXPECT_EQ(QorSplitPath("C:\\textures/wood.png", directory, file), 1);
    EXPECT_STREQ(directory.c_str(), "C:\\textures/");
    EXPECT_STREQ(file.c_str(), "wood.png");
    EXPECT_EQ(QorSplitPath("wood.png", directory, file), 0);
    EXPECT_STREQ(directory.c_str(), "");
    EXPECT_STREQ(file.c_str(), "wood.png");
}

TEST(QorPathsTest, SearchFollowsTheVariableListInOrder)
{
    QorTempDir first, second;
    second.Write("shared.cgh", "second");
    first.Write("shared.cgh", "first");
    second.Write("only_second.cgh", "");
    const std::string list = ";" + first.Path() + "\\missing;" + first.Path() + ";" + second.Path() + ";";
    QorScopedEnv env("QorGraphicPath", list.c_str());

    EXPECT_STREQ(QorFindPath("shared.cgh", "QorGraphicPath").c_str(), (first.Path() + "\\shared.cgh").c_str());
    EXPECT_STREQ(QorFindPath("only_second.cgh", "QorGraphicPath").c_str(), (second.Path() + "\\only_second.cgh").c_str());
    EXPECT_STREQ(QorFindPath("nowhere.cgh", "QorGraphicPath").c_str(), "nowhere.cgh");
    EXPECT_STREQ(QorFindPath("shared.cgh", "QorUnsetVariableForTests").c_str(), "shared.cgh");

    QorString path("only_second.cgh");
    EXPECT_EQ(QorGetFilePathFromOfficialVariable(path, "QorGraphicPath", 0), 0);
    EXPECT_STREQ(path.c_str(), (second.Path() + "\\only_second.cgh").c_str());
    QorString absolute(first.File("shared.cgh").c_str());
    EXPECT_EQ(QorGetFilePathFromOfficialVariable(absolute, "QorGraphicPath", 0), 0);
    EXPECT_STREQ(absolute.c_str(), first.File("shared.cgh").c_str());
    QorString missing("nowhere.cgh");
    EXPECT_EQ(QorGetFilePathFromOfficialVariable(missing, "QorGraphicPath", 0), -1);
    EXPECT_STREQ(missing.c_str(), "nowhere.cgh");

    const std::vector<QorString> entries = QorSplitPathList(";a;;b\\c;");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_STREQ(entries[1].c_str(), "b\\c");
    EXPECT_TRUE(QorSplitPathList(nullptr).empty());
}

TEST(QorPathsTest, CreateDirectoryMakesParentsAndRefusesEscapes)
{
    QorTempDir dir;
    const std::string nested = dir.Path() + "\\cache\\ZPKResources";
    EXPECT_EQ(QorCreateDirectory(nested.c_str()), 0);
    EXPECT_EQ(QorCreateDirectory(nested.c_str()), 0) << "an existing folder is success";
    struct stat info;
    ASSERT_EQ(stat((dir.Path() + "/cache/ZPKResources").c_str(), &info), 0);
    EXPECT_TRUE(S_ISDIR(info.st_mode));

    EXPECT_EQ(QorCreateDirectory((dir.Path() + "\\cache\\..\\escape").c_str()), -1);
    EXPECT_NE(stat((dir.Path() + "/escape").c_str(), &info), 0);
    EXPECT_EQ(QorCreateDirectory(""), -1);
    EXPECT_EQ(QorCreateDirectory(nullptr), -1);
    const std::string underFile = dir.Write("plain.txt", "x") + "/sub";
    EXPECT_EQ(QorCreateDirectory(underFile.c_str()), -1);
}

TEST(QorPathsTest, EnvironmentSetAndUnset)
{
    QorScopedEnv restore("QorTemp", nullptr);
    EXPECT_EQ(QorGetEnv("QorTemp"), nullptr);
    EXPECT_EQ(QorSetEnv("QorTemp", "/tmp/a b"), 0);
    EXPECT_STREQ(QorGetEnv("QorTemp"), "/tmp/a b");
    EXPECT_EQ(QorSetEnv("QorTemp", nullptr), 0);
    EXPECT_EQ(QorGetEnv("QorTemp"), nullptr);
    EXPECT_EQ(QorSetEnv("", "x"), -1);
    EXPECT_EQ(QorGetEnv(nullptr), nullptr);
}
