// Whole materials through a real ".zpk" file: sample effects with changed values and a PNG
// texture are streamed, saved, loaded into a fresh container and un-streamed into fresh
// shaders, which must come back equal.
#include "CgFXShader.h"

#include "QorRegistryGuard.h"
#include "QorTestSupport.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using ImagePtr = QorTexturePixelImage::Ptr;

// What a person sees of a material: every parameter's name, type and value.
struct ParameterView
{
    std::string name;
    int type = 0;
    std::vector<float> numbers;
    std::string text;
    bool operator==(const ParameterView& o) const
    {
        return name == o.name && type == o.type && numbers == o.numbers && text == o.text;
    }
};

std::vector<ParameterView> ViewOf(CgFXShader& shader)
{
    std::vector<ParameterView> view;
    for (int index = 1; index < shader.GetNbParameters(); ++index) {
        ParameterView parameter;
        parameter.name = shader.GetParameterName(index) ? shader.GetParameterName(index) : "";
        parameter.type = shader.GetParameterType(index);
        if (parameter.type == 1) {
            float value = 0;
            shader.GetParameterFloat(index, &value);
            parameter.numbers = {value};
        } else if (parameter.type == 2 || parameter.type == 5 || parameter.type == 6) {
            float rgba[4] = {};
            shader.GetParameterColor(index, &rgba[0], &rgba[1], &rgba[2], &rgba[3]);
            parameter.numbers.assign(rgba, rgba + 4);
        } else if (parameter.type == 4) {
            char buffer[QorMaxParameterStringLength] = {};
            shader.GetParameterString(index, buffer);
            parameter.text = buffer;
        }
        view.push_back(parameter);
    }
    return view;
}

ImagePtr Checker(const char* name)
{
    ImagePtr image(QorTexturePixelImage::Create(name, QorPixelRGBA8, 4, 4));
    for (std::size_t i = 0; i < image->GetByteCount(); ++i)
        image->GetPixels()[i] = static_cast<unsigned char>((i / 4 + i / 16) % 2 ? 230 : 20 + i);
    return image;
}

} // namespace

TEST(QorMaterialPackageTest, TwoSampleMaterialsComeBackEqualFromASavedPackage)
{
    QorRegistryGuard registry;
    QorTempDir dir;
    QorTempDir cache;
    QorScopedEnv startup("QorStartupPath", nullptr);
    QorScopedEnv graphic("QorGraphicPath", QOR_SAMPLES_DIR); // "QorLighting.cgh" is under its shaders/
    QorScopedEnv temp("QorTemp", cache.Path().c_str());
    const std::string texture = dir.File("checker.png");
    ASSERT_EQ(Checker("checker")->WriteToFile("PNG", texture.c_str()), 0);
    const std::string package = dir.File("materials.zpk");

    std::vector<ParameterView> texturedView;
    std::vector<ParameterView> plasticView;
    {
        CgFXShader textured;
        textured.SetFileName("materials\\textured.cgfx");
        ASSERT_TRUE(textured.GenerateParameters());
        ASSERT_EQ(textured.SetParameterFloat(textured.GetParameterIndex("Tiling"), 7.0f), 0);
        ASSERT_EQ(textured.SetParameterString(textured.GetParameterIndex("ColorMap"), texture.c_str()), 0);
        texturedView = ViewOf(textured);

        CgFXShader plastic;
        plastic.SetFileName("materials\\plastic.cgfx");
        ASSERT_TRUE(plastic.GenerateParameters());
        ASSERT_EQ(plastic.SetParameterColor(plastic.GetParameterIndex("Diffuse"), 0.1f, 0.7f, 0.3f, 0.9f), 0);
        ASSERT_EQ(plastic.SetParameterFloat(plastic.GetParameterIndex("Glossiness"), 64.0f), 0);
        plasticView = ViewOf(plastic);

        QorResourceZPKContainer container;
        QorStreamer stream;
        stream.SetResourceZPKContainer(&container);
        textured.Stream(stream);
        plastic.Stream(stream);
        std::string error;
        ASSERT_EQ(container.SaveToFile(package.c_str(), stream, &error), 0) << error;
    }
    // Nothing of the writing side survives: effects unregistered, image list empty, the
    // texture file gone. What comes back comes from the package alone.
    EXPECT_EQ(QorShaderEffect::AddShaderEffect("materials\\textured.cgfx")->Release(), 0u);
    QorTexturePixelImage::ClearList();
    ASSERT_TRUE(std::filesystem::remove(texture));

    QorResourceZPKContainer container;
    QorStreamer stream;
    std::string error;
    ASSERT_EQ(container.LoadFromFile(package.c_str(), stream, &error), 0) << error;
    CgFXShader textured;
    textured.UnStream(stream);
    CgFXShader plastic;
    plastic.UnStream(stream);
    stream.FinishReading();
    EXPECT_EQ(stream.GetMigration(), nullptr) << "CgFX shaders read back need no migration";
    EXPECT_FALSE(stream.IsFailed());
    EXPECT_EQ(stream.GetRemainingSize(), 0u);
    ASSERT_TRUE(textured.HasEffect() && plastic.HasEffect());
    EXPECT_STREQ(textured.GetIShaderEffect()->GetName(), "materials\\textured.cgfx");
    EXPECT_STREQ(plastic.GetIShaderEffect()->GetName(), "materials\\plastic.cgfx");

    // Equal values; the texture now names its copy in the cache, in a folder named by its bytes.
    std::string cached;
    for (const ParameterView& parameter : ViewOf(textured))
        if (parameter.type == 4)
            cached = parameter.text;
    for (ParameterView& parameter : texturedView)
        if (parameter.type == 4)
            parameter.text = cached;
    EXPECT_NE(QorCacheKeyOf(cached, cache.Path(), "checker.png"), "") << cached;
    EXPECT_TRUE(ViewOf(textured) == texturedView);
    EXPECT_TRUE(ViewOf(plastic) == plasticView);
    EXPECT_TRUE(std::find(texturedView.begin(), texturedView.end(), ParameterView{"Tiling", 1, {7}, ""}) !=
                texturedView.end());

    ImagePtr copy(QorTexturePixelImage::ReadFromFile(cached.c_str(), "copy")), original = Checker("checker");
    ASSERT_TRUE(copy && copy->GetByteCount() == original->GetByteCount());
    EXPECT_EQ(std::memcmp(copy->GetPixels(), original->GetPixels(), original->GetByteCount()), 0);
}
