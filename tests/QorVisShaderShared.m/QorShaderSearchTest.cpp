// Where effect files and include files are found along the framework's search paths.
#include "QorVisShaderShared/QorShaderSearch.h"

#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Folders for every route: two startup entries, a graphic folder and one outside all.
struct SearchFolders
{
    QorTempDir startupA, startupB, graphic, elsewhere;
    // The second startup entry follows "; ": a shader object splits later entries at " ;"
    // and finds it, an effect splits at ";" only and looks in " <folder>".
    std::string startupList = startupA.Path() + "; " + startupB.Path();
    QorScopedEnv startup{"QorStartupPath", startupList.c_str()};
    QorScopedEnv graphicPath{"QorGraphicPath", graphic.Path().c_str()};
};

std::string Native(const QorString& path)
{
    std::string text = path.c_str();
    for (char& c : text)
        if (c == '\\')
            c = '/';
    return text;
}

} // namespace

TEST(QorShaderSearchTest, ShaderObjectsAndEffectsFindTheirFilesByTheirOwnRoutes)
{
    SearchFolders folders;
    const std::string direct = folders.elsewhere.Write("direct.cgfx", "x");
    folders.startupA.Write("materials/shaders/first.cgfx", "x");
    folders.startupB.Write("materials/shaders/second.cgfx", "x");
    folders.graphic.Write("second.cgfx", "x");
    folders.graphic.Write("graphic.cgfx", "x");
    folders.graphic.Write("shaders/under.cgfx", "x");

    struct Case
    {
        std::string name;
        std::string shaderFinds; ///< "" when a shader object finds nothing
        std::string effectFinds;
    };
    const Case cases[] = {
        {direct, direct, direct},
        {"first.cgfx", folders.startupA.File("materials/shaders/first.cgfx"),
         folders.startupA.File("materials/shaders/first.cgfx")},
        {"second.cgfx", folders.startupB.File("materials/shaders/second.cgfx"), folders.graphic.File("second.cgfx")},
        {"graphic.cgfx", folders.graphic.File("graphic.cgfx"), folders.graphic.File("graphic.cgfx")},
        {"under.cgfx", folders.graphic.File("shaders/under.cgfx"), ""},
        {"nowhere.cgfx", "", ""},
    };
    for (const Case& c : cases) {
        QorString path;
        EXPECT_EQ(QorShaderSearch::FindShaderFile(QorString(c.name.c_str()), path), !c.shaderFinds.empty()) << c.name;
        if (!c.shaderFinds.empty()) {
            EXPECT_EQ(Native(path), c.shaderFinds) << c.name;
        }
        EXPECT_EQ(QorShaderSearch::FindEffectFile(QorString(c.name.c_str()), path), !c.effectFinds.empty()) << c.name;
        if (!c.effectFinds.empty()) {
            EXPECT_EQ(Native(path), c.effectFinds) << c.name;
        }
    }
}

TEST(QorShaderSearchTest, IncludesLookUnderShadersOfTheGraphicPathFirst)
{
    SearchFolders folders;
    folders.startupA.Write("shaders/both.cgh", "startup");
    folders.graphic.Write("shaders/both.cgh", "graphic");
    folders.startupA.Write("shaders/startup_only.hfx", "startup");
    const std::string direct = folders.elsewhere.Write("direct.cgh", "direct");

    QorString found, lastTried;
    ASSERT_TRUE(QorShaderSearch::FindIncludeFile("/both.cgh", "both.cgh", found, &lastTried));
    EXPECT_EQ(Native(found), folders.graphic.File("shaders/both.cgh"));
    ASSERT_TRUE(QorShaderSearch::FindIncludeFile("/startup_only.hfx", "startup_only.hfx", found));
    EXPECT_EQ(Native(found), folders.startupA.File("shaders/startup_only.hfx"));
    ASSERT_TRUE(QorShaderSearch::FindIncludeFile(direct.c_str(), "unused", found, &lastTried));
    EXPECT_EQ(Native(found), direct) << "a name that exists as it stands is taken first";
    EXPECT_EQ(Native(lastTried), direct);

    EXPECT_FALSE(QorShaderSearch::FindIncludeFile("/none.cgh", "none.cgh", found, &lastTried));
    EXPECT_EQ(Native(lastTried), " " + folders.startupB.File("shaders/none.cgh")) << "the last candidate tried";
    QorScopedEnv noPaths("QorGraphicPath", nullptr);
    QorScopedEnv noStartup("QorStartupPath", nullptr);
    EXPECT_FALSE(QorShaderSearch::FindIncludeFile("none.cgh", "none.cgh", found, &lastTried));
    EXPECT_STREQ(lastTried.c_str(), "none.cgh") << "without paths the name itself was the last try";
}

TEST(QorShaderSearchTest, FileIncludesAreTheNamesWithAFileSuffix)
{
    const struct
    {
        const char* name;
        bool isFile;
    } cases[] = {{"/common.cgh", true}, {"lib.hfx", true}, {"a.cgh.txt", true}, {"/lib.fxh", false},
                 {"lighting.cg", false}, {"", false},     {nullptr, false}};
    for (const auto& c : cases)
        EXPECT_EQ(QorShaderSearch::IsFileInclude(c.name, {".hfx", ".cgh"}), c.isFile) << (c.name ? c.name : "null");
}

TEST(QorShaderSearchTest, SourcesAreReadWholeOrNotAtAll)
{
    QorTempDir dir;
    const std::string longText(1000, 'a');
    const std::string path = dir.Write("effect.cgfx", longText);
    QorUnicodeString text("kept");
    ASSERT_TRUE(QorShaderSearch::ReadSource(QorString(path.c_str()), text));
    EXPECT_EQ(std::string(text.c_str()), longText) << "read in chunks, joined whole";
    EXPECT_FALSE(QorShaderSearch::ReadSource(QorString(dir.File("missing.cgfx").c_str()), text));
    EXPECT_EQ(std::string(text.c_str()), longText) << "a failed read leaves the text alone";
}
