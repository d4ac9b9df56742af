#include "QorSystem/QorString.h"
#include "QorSystem/QorStrings.h"
#include "QorSystem/QorUnicodeString.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

TEST(QorStringTest, ValueOperations)
{
    QorString name("a\\b/wood.tif.3");
    EXPECT_EQ(name.GetLength(), 14);
    EXPECT_EQ(name.ReverseFindOneOf("\\/"), 3);
    EXPECT_EQ(name.ReverseFindOneOf("#"), -1);
    EXPECT_EQ(name.Find(".tif"), 8);
    EXPECT_EQ(name.Find("."), 8);
    EXPECT_EQ(name.Find(".", 9), 12);
    EXPECT_EQ(name.Find(nullptr), -1);
    EXPECT_STREQ(name.Left(3).c_str(), "a\\b");
    EXPECT_STREQ(name.Left(-1).c_str(), "");
    EXPECT_STREQ(name.Mid(4).c_str(), "wood.tif.3");
    EXPECT_STREQ(name.Mid(4, 4).c_str(), "wood");
    EXPECT_STREQ(name.Mid(99).c_str(), "");
    QorString upper("wood.Tif");
    upper.MakeUpper();
    EXPECT_STREQ(upper.c_str(), "WOOD.TIF");
    EXPECT_TRUE(QorString(nullptr).IsEmpty());
    EXPECT_STREQ((QorString("a") + "b" + QorString("c")).c_str(), "abc");
    EXPECT_EQ(QorString("x", 0), QorString(""));
}

TEST(QorStringTest, OrderIsByUnsignedBytesAndCaseSensitive)
{
    std::map<QorString, int> names;
    names[QorString("lib")] = 1;
    names[QorString("Lib")] = 2;
    names[QorString("\xC3\xA9")] = 3; // a byte above 127 sorts after ASCII
    ASSERT_EQ(names.size(), 3u);
    EXPECT_STREQ(names.begin()->first.c_str(), "Lib");
    EXPECT_STREQ(names.rbegin()->first.c_str(), "\xC3\xA9");
}

TEST(QorStringTest, UnicodeTextAppendedInChunksStaysIntact)
{
    // A two-byte character split across two appends, as a file read in 255-byte chunks can.
    QorUnicodeString text("caf\xC3");
    text += "\xA9 cr\xC3\xA8me";
    EXPECT_STREQ(text.c_str(), "caf\xC3\xA9 cr\xC3\xA8me");
    EXPECT_EQ(text.GetLength(), 12);
    EXPECT_EQ(text.GetCharacterCount(), 10);
    EXPECT_EQ(text.ReverseFind('c'), 6);
    EXPECT_EQ(text.ReverseFind('c', 5), 0);
    EXPECT_EQ(text.ReverseFind('#'), -1);
    EXPECT_STREQ(text.Mid(6).c_str(), "cr\xC3\xA8me");
    EXPECT_EQ(QorUnicodeString().ReverseFind('a'), -1);
}

TEST(QorStringTest, CStringAliases)
{
    char* copy = _strdup("Shader");
    EXPECT_STREQ(copy, "Shader");
    EXPECT_EQ(_stricmp(copy, "SHADER"), 0);
    EXPECT_NE(_stricmp(copy, "SHADERS"), 0);
    EXPECT_EQ(_strnicmp(copy, "SHADERS", 6), 0);
    std::free(copy);

    // The first token by ";" and later ones by " ;", as the effect search splits its list.
    char list[] = "a b;c; d";
    char* context = nullptr;
    EXPECT_STREQ(QorSysStrtok(list, ";", &context), "a b");
    EXPECT_STREQ(QorSysStrtok(nullptr, " ;", &context), "c");
    EXPECT_STREQ(QorSysStrtok(nullptr, " ;", &context), "d");
    EXPECT_EQ(QorSysStrtok(nullptr, " ;", &context), nullptr);
}
