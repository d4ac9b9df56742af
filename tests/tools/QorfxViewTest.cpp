// qorfx view's script, checked before any window opens: each bad line is named.
#include "QorfxRun.h"

#include <gtest/gtest.h>

TEST(QorfxViewTest, BadScriptLinesEndBeforeTheWindowWithTheirLine)
{
    QorTempDir dir;
    const std::string effect = QorfxSample("materials/plastic.cgfx");
    const struct
    {
        const char* lines;
        const char* message;
    } cases[] = {
        {"set Glossiness 3\nspin 4\n", "script.txt:2: unknown action \"spin\""},
        {"\n# a comment\nset Glossiness\n", "script.txt:3: \"set\" takes a name and a value"},
        {"quit now\n", "script.txt:1: \"quit\" takes nothing after it"},
        {"png\n", "script.txt:1: \"png\" takes one argument"},
        {"sleep forever\n", "script.txt:1: \"sleep\" takes seconds from 0 to 600, not \"forever\""},
        {"sleep -1\n", "not \"-1\""},
    };
    for (const auto& bad : cases) {
        const std::string script = dir.Write("script.txt", bad.lines);
        // No display is needed to refuse a script: it is read before the window opens.
        const QorfxResult viewed = RunQorfx("view " + effect + " --script " + script, "DISPLAY= timeout 20 ");
        EXPECT_EQ(viewed.exitCode, 1) << bad.lines;
        EXPECT_NE(viewed.err.find(bad.message), std::string::npos) << viewed.err;
    }
    const QorfxResult missing = RunQorfx("view " + effect + " --script " + dir.File("none.txt"));
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.err.find("none.txt: cannot read the script"), std::string::npos) << missing.err;
    const QorfxResult noDisplay = RunQorfx("view " + effect, "DISPLAY= timeout 20 ");
    EXPECT_EQ(noDisplay.exitCode, 1);
    EXPECT_NE(noDisplay.err.find("xvfb-run"), std::string::npos) << noDisplay.err;
}
