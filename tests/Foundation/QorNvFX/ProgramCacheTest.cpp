// The persistent cache of glslang's checks: a warm load answers as a cold one, entries
// that are damaged, truncated, foreign or of another effect are passed over and written
// again, an include's change makes a new entry, a folder others may write to is refused,
// a failed write leaves nothing, and two processes filling one folder both load.
#include "NvFXTestSupport.h"

#include "GlslangProgram_p.h"
#include "ProgramCache_p.h"

#include "nvFX/IContainerEx.h"
#include "nvFX/IUniform.h"

#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using NvFXTest::Load;

namespace {

std::string g_include = "GLSLShader { float Shade() { return Gain; } }\n";

void AnswerInclude(const char*, FILE*&, const char*& text)
{
    text = g_include.c_str();
}

const char* const kEffect = R"(
uniform float Gain = 1.0;
uniform float Offset = 0.0;
uniform float Unused = 0.0;
#include "shade.glslfxh"
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader FS { void main() { gl_FragColor = vec4(Shade() + Offset); } }
Technique T { Pass P { VertexProgram = VS; FragmentProgram = FS; } }
)";

// The uniforms the effect's passes use, by name.
std::vector<std::string> UsedUniforms(nvFX::IContainer& container)
{
    nvFX::IContainerEx& effect = *container.getExInterface();
    std::vector<std::string> used;
    for (int i = 0; i < effect.getNumUniforms(); ++i)
        if (effect.findUniform(i)->isUsedBy(nvFX::IUniform::TargetAny))
            used.push_back(effect.findUniform(i)->getName());
    return used;
}

void WriteAll(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

class ProgramCacheTest : public testing::Test
{
protected:
    void SetUp() override
    {
        g_include = "GLSLShader { float Shade() { return Gain; } }\n";
        nvFX::setIncludeCallback(AnswerInclude);
        folder = temp.File("cache");
        ASSERT_TRUE(nvFX::setCacheFolder(folder.c_str()));
    }
    void TearDown() override
    {
        nvFX::setCacheFolder(nullptr);
        nvFX::setIncludeCallback(nullptr);
    }

    // The one entry the effect's pass makes.
    std::string OnlyEntry() const
    {
        const std::vector<std::string> entries = QorFolderContent(folder);
        EXPECT_EQ(entries.size(), 1u);
        return entries.empty() ? std::string() : folder + "/" + entries.front();
    }

    QorTempDir temp;
    std::string folder;
    const std::vector<std::string> used{"Gain", "Offset"};
};

} // namespace

TEST_F(ProgramCacheTest, WarmLoadAnswersAsTheColdOneAndDamagedEntriesAreWrittenAgain)
{
    NvFXTest::Loaded cold = Load(kEffect);
    ASSERT_TRUE(cold.ok) << cold.messages;
    EXPECT_EQ(UsedUniforms(*cold.container), used);
    const std::string entry = OnlyEntry();
    const std::string good = QorReadFile(entry);

    NvFXTest::Loaded warm = Load(kEffect);
    ASSERT_TRUE(warm.ok) << warm.messages;
    EXPECT_EQ(warm.messages, cold.messages);
    EXPECT_EQ(UsedUniforms(*warm.container), used);
    EXPECT_EQ(warm.container->getExInterface()->getNumTechniques(), cold.container->getExInterface()->getNumTechniques());

    // A valid entry is believed: one planted for the same key answers the load.
    nvFX::detail::ProgramUsage planted;
    planted.uniforms = {"Offset"};
    // The key follows the entry's magic, format and kind.
    nvFX::detail::CacheKey key{};
    ASSERT_GT(good.size(), 46u);
    std::copy(good.begin() + 14, good.begin() + 46, key.begin());
    WriteAll(entry, nvFX::detail::encodeCacheEntry(nvFX::detail::CacheKind::ProgramUsage, key,
                                                   nvFX::detail::encodeProgramUsage(planted)));
    EXPECT_EQ(UsedUniforms(*Load(kEffect).container), std::vector<std::string>{"Offset"});

    // Truncated, one byte changed, another runtime's format, another effect's entry: each
    // is passed over with a reason, the effect loads from source and the entry is right again.
    std::string flipped = good;
    flipped[good.size() / 2] ^= 1;
    std::string otherFormat = good;
    otherFormat[12] = 9;
    nvFX::detail::CacheKey otherKey = key;
    otherKey[0] ^= 1;
    const std::string otherEffect = nvFX::detail::encodeCacheEntry(nvFX::detail::CacheKind::ProgramUsage, otherKey,
                                                                   nvFX::detail::encodeProgramUsage(planted));
    const std::pair<std::string, const char*> bad[] = {{good.substr(0, good.size() - 5), "truncated or damaged"},
                                                       {flipped, "truncated or damaged"},
                                                       {otherFormat, "another version"},
                                                       {otherEffect, "another effect"},
                                                       {"", "not an entry"}};
    for (const auto& [bytes, why] : bad) {
        WriteAll(entry, bytes);
        NvFXTest::Loaded again = Load(kEffect);
        ASSERT_TRUE(again.ok) << again.messages;
        EXPECT_NE(again.messages.find(why), std::string::npos) << again.messages;
        EXPECT_EQ(UsedUniforms(*again.container), used);
        EXPECT_EQ(QorReadFile(entry), good) << why;
    }
}

TEST_F(ProgramCacheTest, AChangedIncludeMakesANewEntry)
{
    ASSERT_TRUE(Load(kEffect).ok);
    g_include = "GLSLShader { float Shade() { return Unused; } }\n";
    NvFXTest::Loaded changed = Load(kEffect);
    ASSERT_TRUE(changed.ok) << changed.messages;
    EXPECT_EQ(UsedUniforms(*changed.container), (std::vector<std::string>{"Offset", "Unused"}));
    EXPECT_EQ(QorFolderContent(folder).size(), 2u);

    // A pass that does not compile is never stored: its messages come every time.
    g_include = "GLSLShader { float Shade() { return Missing; } }\n";
    for (int load = 0; load < 2; ++load)
        EXPECT_NE(Load(kEffect).messages.find("Missing"), std::string::npos);
    EXPECT_EQ(QorFolderContent(folder).size(), 2u);
}

TEST_F(ProgramCacheTest, AFolderOthersMayWriteToIsRefused)
{
    const std::string open = temp.File("open");
    ASSERT_EQ(mkdir(open.c_str(), 0700), 0);
    ASSERT_EQ(chmod(open.c_str(), 0777), 0);
    NvFXTest::MessageCapture capture;
    EXPECT_FALSE(nvFX::setCacheFolder(open.c_str()));
    EXPECT_NE(capture.text().find("others can write to it"), std::string::npos) << capture.text();
    ASSERT_TRUE(Load(kEffect).ok);
    EXPECT_TRUE(QorFolderContent(open).empty());

    const std::string file = temp.Write("plain", "x");
    EXPECT_FALSE(nvFX::setCacheFolder(file.c_str()));
}

TEST_F(ProgramCacheTest, AWriteThatFailsLeavesNoFileAndTheLoadGoesOn)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // A file size limit stands for a full disk: the entry's write fails part way.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{40, 40};
        setrlimit(RLIMIT_FSIZE, &limit);
        NvFXTest::Loaded loaded = Load(kEffect);
        _exit(loaded.ok && loaded.messages.find("not written") != std::string::npos ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(QorFolderContent(folder).empty());
}

TEST_F(ProgramCacheTest, TwoProcessesFillingOneFolderBothLoad)
{
    std::vector<pid_t> children;
    for (int process = 0; process < 2; ++process) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            bool ok = true;
            for (int load = 0; load < 20 && ok; ++load)
                ok = UsedUniforms(*Load(kEffect).container) == used;
            _exit(ok ? 0 : 1);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const std::string entry = OnlyEntry();
    NvFXTest::Loaded warm = Load(kEffect);
    EXPECT_EQ(warm.messages.find("not used"), std::string::npos) << warm.messages;
    EXPECT_EQ(UsedUniforms(*warm.container), used);
}
