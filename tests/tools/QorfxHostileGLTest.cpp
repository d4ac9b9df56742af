// qorfx on hostile and unlucky input where drawing is involved: special files, bad
// techniques and full disks.
#include "QorfxRun.h"

#include "QorVisFoundation/QorTexturePixelImage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <sys/stat.h>

namespace {

struct Case
{
    std::string arguments;
    int exitCode;
    std::string says; ///< a part of standard error
};

void Expect(const Case& c, const std::string& prefix = "")
{
    const QorfxResult result = RunQorfx(c.arguments, prefix);
    EXPECT_EQ(result.exitCode, c.exitCode) << c.arguments << "\n" << result.err;
    EXPECT_NE(result.err.find(c.says), std::string::npos) << c.arguments << "\n" << result.err;
}

} // namespace

TEST(QorfxHostileGLTest, SpecialFilesAreRefusedWithoutWaitingOrFillingMemory)
{
    QorTempDir dir;
    const std::string fifo = dir.File("fifo"), fifoPackage = dir.File("fifo.zpk");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(fifoPackage.c_str(), 0600), 0);
    const std::string plastic = QorfxSample("materials/plastic.cgfx");
    const std::string textured = QorfxSample("materials/textured.cgfx");
    const std::string out = dir.File("out.png");
    for (const std::string& special : {fifo, std::string("/dev/zero")}) {
        const Case cases[] = {
            {"inspect " + special, 1, "not a regular file"},
            {"--include X.fxh=" + special + " inspect " + plastic, 1, "cannot read the include file"},
            {"sgi " + special + " -o " + out, 1, "not a readable SGI image"},
            {"pack " + textured + " --texture ColorMap=" + special + " -o " + dir.File("p.zpk"), 1,
             "cannot read the texture"},
            {"render " + textured + " --set ColorMap=" + special + " -o " + out, 1, "cannot read the texture"},
        };
        for (const Case& c : cases)
            Expect(c, "timeout 30 ");
    }
    Expect({"inspect " + fifoPackage, 1, "not a regular file"}, "timeout 30 ");
    Expect({"unpack " + fifoPackage + " -C " + dir.File("u"), 1, "not a regular file"}, "timeout 30 ");
}

TEST(QorfxHostileGLTest, TechniquesOutsideTheEffectAreBadUsage)
{
    QorTempDir dir;
    const std::string render = "render " + QorfxSample("materials/plastic.cgfx") + " --size 32x32 -o " +
                               dir.File("t.png") + " --technique ";
    for (const char* wrong : {"99", "-1", "nope", "2147483648", "1.5"})
        Expect({render + wrong, 2, "--technique takes a technique number from 0 to"});
    for (const char* right : {"1", "PlasticARB"})
        Expect({render + right, 0, ""});
}

TEST(QorfxHostileGLTest, OnAFullDiskWritesFailAndEarlierFilesStay)
{
    QorTempDir dir;
    QorScopedEnv includes("QorGraphicPath", QOR_SAMPLES_DIR);
    const std::string earlier = "an earlier good file";
    const std::string textured = QorfxSample("materials/textured.cgfx");
    // Noise, so that no image written below fits in the 1024 bytes the disk has room for.
    QorTexturePixelImage::Ptr noise(QorTexturePixelImage::Create("noise", QorPixelRGBA8, 64, 64));
    std::mt19937 random(16);
    for (std::size_t i = 0; i < noise->GetByteCount(); ++i)
        noise->GetPixels()[i] = static_cast<unsigned char>(random());
    const std::string sgi = dir.File("noise.rgb");
    ASSERT_EQ(noise->WriteToFile("SGI", sgi.c_str()), 0);
    const QorfxResult packed = RunQorfx("pack " + textured + " -o " + dir.File("good.zpk"));
    ASSERT_EQ(packed.exitCode, 0) << packed.err;
    const Case cases[] = {
        {"sgi " + sgi + " -o " + dir.File("out/checker.png"), 1, "cannot write"},
        {"sgi " + sgi + " -o " + dir.File("out/checker.rgb"), 1, "cannot write"},
        {"render " + textured + " --size 256x256 -o " + dir.File("out/render.png"), 1, "cannot write"},
        {"pack " + textured + " -o " + dir.File("out/package.zpk"), 1, "cannot be written"},
        {"unpack " + dir.File("good.zpk") + " -C " + dir.File("out"), 1, "cannot be written"},
    };
    for (const char* file : {"checker.png", "checker.rgb", "render.png", "package.zpk", "textured.cgfx"})
        dir.Write(std::string("out/") + file, earlier);
    for (const Case& c : cases)
        Expect(c, QorfxFullDisk());
    EXPECT_EQ(QorFolderContent(dir.File("out")),
              (std::vector<std::string>{"checker.png", "checker.rgb", "package.zpk", "render.png", "textured.cgfx"}))
        << "no partial file is left";
    for (const std::string& file : QorFolderContent(dir.File("out")))
        EXPECT_EQ(QorReadFile(dir.File("out/" + file)), earlier) << file;
}
