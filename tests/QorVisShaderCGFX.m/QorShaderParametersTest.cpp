#include "QorVisShaderShared/QorShaderInterfaceRecord.h"
#include "QorShaderParameters.h"
#include "QorShaderValueString.h"

#include "QorCgTestSupport.h"
#include "QorTestSupport.h"

#include "QorVisFoundation/QorGLServices.h"
#include "QorVisFoundation/QorVisPixelImage.h"
#include "QorVisFoundation/VisResourceManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <vector>

TEST(QorShaderParametersTest, IndexesCountFromOneAfterTheTechnique)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    ASSERT_NE(cg.effect.Get(), nullptr) << cgGetLastListing(cg.context.Get());
    QorShaderParameters set;
    EXPECT_EQ(set.GetNbParameters(), 1);
    EXPECT_STREQ(set.GetParameterName(0), "Technique");
    EXPECT_EQ(set.GetParameterType(0), 1);
    cg.Fill(set);
    set.AddFloatParameter(nullptr, 1.0f); // nothing, not even a name

    EXPECT_EQ(set.GetNbParameters(), 7);
    const char* names[] = {"gloss", "tint", "scale", "rgb", "diffuse", "bump"};
    const int types[] = {1, 2, 5, 6, 4, 4};
    for (int i = 1; i <= 6; ++i) {
        EXPECT_STREQ(set.GetParameterName(i), names[i - 1]);
        EXPECT_EQ(set.GetParameterIndex(names[i - 1]), i);
        EXPECT_EQ(set.GetParameterType(i), types[i - 1]);
        EXPECT_EQ(set.GetCgParameter(i), cg.Parameter(names[i - 1]));
        const auto handle = reinterpret_cast<std::uintptr_t>(cg.Parameter(names[i - 1]));
        EXPECT_EQ(static_cast<std::uint32_t>(set.GetParameterHandle(i)), static_cast<std::uint32_t>(handle));
    }
    for (int bad : {-1, 7})
        EXPECT_EQ(set.GetParameterName(bad), nullptr);
    EXPECT_EQ(set.GetParameterIndex(nullptr), -1);
    EXPECT_EQ(QorTextureCount("wood.png"), 2u) << "the registry's and the value's reference";

    // The name array grows past its first 20 entries; a name need not have a value.
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(set.AddParameterName(("p" + std::to_string(i)).c_str()), 6 + i);
    EXPECT_EQ(set.AddParameterName(nullptr), -1);
    EXPECT_STREQ(set.GetParameterName(36), "p29");
    EXPECT_EQ(set.GetParameterType(36), 0);
}

TEST(QorShaderParametersTest, GetsAndSetsCheckTheIndexAndTheType)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters set;
    cg.Fill(set);
    QorCapturingSink sink;
    const float red[4] = {1, 0, 0, 1};
    for (int bad : {-4, 0, 7}) {
        EXPECT_EQ(set.SetFloatValue(bad, 1), -1);
        EXPECT_EQ(set.SetColorValue(bad, red), -1);
        EXPECT_EQ(set.SetTextureValue(bad, "x.png", 0), -1);
        EXPECT_EQ(set.GetParameterHandle(bad), 0) << "the null handle's token";
        set.ResetModified(bad);
        // Checked with and without onlyIfModified: an unchecked index would read past the list.
        for (int only : {0, 1}) {
            float out[4] = {};
            EXPECT_EQ(set.GetFloatValue(bad, out, only), 0);
            EXPECT_EQ(set.GetColorValue(bad, out, only), 0);
        }
    }
    EXPECT_EQ(set.SetFloatValue(2, 1), -1) << "a colour";
    EXPECT_EQ(set.SetTextureValue(1, "x.png", 0), -1) << "a float";
    EXPECT_EQ(QorTextureCount("x.png"), 0u);
    EXPECT_TRUE(sink.Records().empty());

    EXPECT_EQ(set.SetColorValue(1, red), 0) << "forwarded without a type test";
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderCGFX.m/src/QorShaderValueFloat");
    EXPECT_EQ(sink.Records()[0].line, 53);

    set.ResetModified(1);
    float number = -1;
    EXPECT_EQ(set.GetFloatValue(1, &number, 1), 0);
    EXPECT_EQ(number, -1.0f) << "unmodified: left alone";
    EXPECT_EQ(set.GetFloatValue(1, &number, 0), 0) << "read; the answer is the flag";
    EXPECT_FLOAT_EQ(number, 0.5f);
    EXPECT_EQ(set.SetFloatValue(1, 0.25f), 0);
    EXPECT_EQ(set.GetFloatValue(1, &number, 1), 1);
    float raw[4] = {};
    EXPECT_EQ(set.GetColorValue(1, raw, 0), 1) << "no type test: the float's raw read";
    EXPECT_FLOAT_EQ(raw[0], 0.25f);
    char* file = nullptr;
    EXPECT_EQ(set.GetTextureValue(1, &file, 0), 0);
    EXPECT_EQ(set.GetTextureValue(5, &file, 0), 1);
    EXPECT_STREQ(file, "wood.png");
}

TEST(QorShaderParametersTest, GetValueReportsOverlappingMemoryAndGoesOn)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters set;
    cg.Fill(set);
    QorCapturingSink sink;
    EXPECT_EQ(set.GetValue(0), set.GetValueList()->front());
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].message, "Overlapping memory");
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderCGFX.m/src/QorShaderParameters");
    EXPECT_EQ(sink.Records()[0].line, 1044);
    EXPECT_EQ(set.GetValue(-1), nullptr);
    EXPECT_EQ(set.GetValue(6), nullptr);
    EXPECT_EQ(sink.Records().size(), 2u) << "at the name count there is no overlap";
}

TEST(QorShaderParametersTest, TextureChangesKeepTheRegistryInStep)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    std::vector<std::uintptr_t> deleted;
    QorGLServiceObserver previous = QorSetGLServiceObserver([&](QorGLService service, std::uintptr_t id) {
        if (service == QorGLService::DeleteDLTexture)
            deleted.push_back(id);
    });
    {
        QorShaderParameters set;
        cg.Fill(set);
        EXPECT_EQ(set.SetTextureValue(5, "stone.png", 0), 0);
        EXPECT_EQ(QorTextureCount("wood.png"), 1u) << "handed to the destroy list";
        EXPECT_EQ(QorTextureCount("stone.png"), 2u);
        EXPECT_EQ(set.SetTextureValue(5, "stone.png", 0), 0);
        EXPECT_EQ(QorTextureCount("stone.png"), 2u) << "the same name changes nothing";

        QorShaderManager::GetShaderTexture("stone.png")->SetID(17);
        set.ResetModified(5);
        EXPECT_EQ(set.SetTextureValue(5, "stone.png", 1), 0);
        EXPECT_EQ(deleted, std::vector<std::uintptr_t>{17});
        EXPECT_EQ(QorShaderManager::GetShaderTexture("stone.png")->GetID(), 0u);
        char* file = nullptr;
        EXPECT_EQ(set.GetTextureValue(5, &file, 1), 0) << "a reload leaves the value as it was";

        EXPECT_EQ(set.SetTextureValue(6, "stone.png", 1), 0) << "no current name: a plain set";
        EXPECT_EQ(set.SetTextureValue(5, nullptr, 0), 0);
        EXPECT_EQ(QorTextureCount("stone.png"), 2u);
    }
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_EQ(QorShaderManager::GetShaderTexture("wood.png"), nullptr);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("stone.png"), nullptr);
    QorSetGLServiceObserver(previous);
}

TEST(QorShaderParametersTest, ReloadQueuesTheHostImageOfATextureStoredInTheManager)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    VisResourceManager* host = VisResourceManager::Create();
    QorTexturePixelImage* pixels = QorTexturePixelImage::Create("wood.png", QorPixelRGBA8, 2, 2);
    host->AddVisPixelImage(
        std::make_unique<QorVisPixelImage>("wood.png", pixels, QorVisPixelImage::QorSyncSynchronous));
    host->AddPixelImage(pixels);
    {
        QorShaderParameters set;
        cg.Fill(set);
        ASSERT_EQ(QorShaderManager::GetShaderTexture("wood.png")->IsStoredInManager(), 1u);
        set.SetTextureValue(5, "wood.png", 1);
        EXPECT_EQ(host->GetQueuedBufferCount(), 1u);
    }
    VisResourceManager::Destroy();
}

TEST(QorShaderParametersTest, CopiesAreDeepRegisterTheirTexturesAndShareTheCgHandles)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    const char* textures[] = {"wood.png", "env.png", "second.png", "member.png"};
    {
        QorShaderParameters source;
        cg.Fill(source);
        source.SetDefaultTexture("env.png", 0);
        source.SetUseDefaultTexture(0);
        source.SetSecondTexture("second.png");
        source.SetInterface("light", cg.InstanceRecord());
        source.SetInterfaceTexture("light", "tex", "member.png", 0);
        source.ResetModified(1);

        std::unique_ptr<QorIShaderParameters> clone(source.Clone());
        auto& copy = static_cast<QorShaderParameters&>(*clone);
        for (const char* name : textures)
            EXPECT_EQ(QorTextureCount(name), 3u) << name;
        for (int i = 1; i < source.GetNbParameters(); ++i) {
            EXPECT_STREQ(copy.GetParameterName(i), source.GetParameterName(i));
            EXPECT_NE(copy.GetValue(i - 1), source.GetValue(i - 1));
            EXPECT_EQ(copy.GetCgParameter(i), source.GetCgParameter(i));
        }
        float number = 0;
        EXPECT_EQ(copy.GetFloatValue(1, &number, 1), 1) << "copies count as modified";
        int use = 1;
        copy.GetUseDefaultTexture(&use);
        EXPECT_EQ(use, 0);
        EXPECT_STREQ(copy.GetInterfaceMemberName(0, 4), "tex");
        EXPECT_EQ(copy.GetInterfaceMemberHandle(0, 1), source.GetInterfaceMemberHandle(0, 1));

        copy.SetFloatValue(1, 9.0f);
        copy.SetInterfaceFloat("light", "intensity", 4.0f);
        source.GetFloatValue(1, &number, 0);
        EXPECT_FLOAT_EQ(number, 0.5f) << "the copy is independent";
        source.GetInterfaceFloat("light", "intensity", &number);
        EXPECT_FLOAT_EQ(number, 0.0f);

        QorShaderParameters second(copy);
        clone.reset();
        second.GetFloatValue(1, &number, 0);
        EXPECT_FLOAT_EQ(number, 9.0f) << "a copy of a copy outlives it";
        for (const char* name : textures)
            EXPECT_EQ(QorTextureCount(name), 3u) << name;
    }
    // Every value, extra slot and member handed its reference back.
    for (const char* name : textures)
        EXPECT_EQ(QorTextureCount(name), 1u) << name;
    QorShaderManager::CleanShaderTextureToDestroyList();
    for (const char* name : textures)
        EXPECT_EQ(QorShaderManager::GetShaderTexture(name), nullptr) << name;
}

TEST(QorShaderParametersTest, ModifiedValuesAreListedOnceAndTheListStaysBounded)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters set;
    cg.Fill(set);
    const std::vector<int> all = {0, 1, 2, 3, 4, 5};
    EXPECT_EQ(set.GetChangedPositions(), all) << "new values are modified";
    EXPECT_EQ(QorShaderParameters(set).GetChangedPositions(), all) << "so are a copy's";

    set.ClearChangedPositions();
    for (int index = 1; index <= 6; ++index)
        set.ResetModified(index);
    set.SetFloatValue(1, 2.0f);
    set.SetColorValue(2, std::vector<float>{1, 0, 0, 1}.data());
    set.SetFloatValue(1, 3.0f);
    EXPECT_EQ(set.GetChangedPositions(), (std::vector<int>{0, 1})) << "each once, in the order changed";

    // Clearing a mark and changing the value again lists it again; however often a
    // renderer does so between uploads, the list is rebuilt before it outgrows the set.
    for (int turn = 0; turn < 1000; ++turn) {
        set.ResetModified(1);
        set.SetFloatValue(1, static_cast<float>(turn));
        ASSERT_LE(set.GetChangedPositions().size(), 2u * 6 + 16) << turn;
    }
    const std::vector<int>& listed = set.GetChangedPositions();
    EXPECT_NE(std::find(listed.begin(), listed.end(), 0), listed.end());
    EXPECT_NE(std::find(listed.begin(), listed.end(), 1), listed.end());
}

TEST(QorShaderParametersTest, ExtraTextureSlots)
{
    QorRegistryGuard registry;
    QorShaderParameters set;
    char* file = nullptr;
    EXPECT_EQ(set.GetDefaultTexture(&file), -1);
    int use = 0;
    set.GetUseDefaultTexture(&use);
    EXPECT_EQ(use, 1);
    EXPECT_EQ(set.SetDefaultTexture("env.png", 0), 0);
    EXPECT_EQ(set.GetDefaultTexture(&file), 0);
    EXPECT_STREQ(file, "env.png");
    QorShaderTexture* env = QorShaderManager::GetShaderTexture("env.png");

    // A reload hands the reference back, frees the record's own copy of its name and
    // takes the texture again under the name it is still registered with.
    EXPECT_EQ(set.SetDefaultTexture("env.png", 1), 0);
    EXPECT_EQ(env->GetName(), nullptr);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("env.png"), env);
    EXPECT_EQ(env->GetRefCount(), 2u);

    // A registry that lost the texture (another holder handed back a reference it never
    // took) does not stop a reload.
    QorShaderManager::AddShaderTextureToDestroyList(env);
    QorShaderManager::CleanShaderTextureToDestroyList();
    ASSERT_EQ(QorShaderManager::GetShaderTexture("env.png"), nullptr);
    EXPECT_EQ(set.SetDefaultTexture("sky.png", 1), 0);
    set.GetDefaultTexture(&file);
    EXPECT_STREQ(file, "sky.png");
    EXPECT_EQ(QorTextureCount("sky.png"), 2u);

    EXPECT_EQ(set.SetSecondTexture("a.png"), 1);
    EXPECT_EQ(set.SetSecondTexture("a.png"), 1);
    EXPECT_EQ(set.SetThirdTexture(nullptr), 1);
    EXPECT_EQ(set.SetThirdTexture("a.png"), 1);
    EXPECT_EQ(QorTextureCount("a.png"), 3u);
}

TEST(QorShaderParametersTest, InterfaceRecordsTakeTheStructureMembers)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    std::unique_ptr<QorShaderInterfaceRecord> instance(cg.InstanceRecord());
    // The int and structure members have no value kind; instance names lose their "<instance>$." prefix.
    const char* names[] = {"color", "intensity", "uv", "rgba", "tex"};
    const int types[] = {6, 1, 5, 2, 4};
    ASSERT_EQ(instance->GetMemberCount(), 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_STREQ(instance->GetMemberName(i), names[i]);
        int type = 0;
        instance->GetMemberValue(i)->GetType(&type);
        EXPECT_EQ(type, types[i]) << names[i];
    }
    EXPECT_EQ(instance->GetMemberValue(5), nullptr);
    EXPECT_EQ(instance->FindMember("uv"), 2);

    // A structure declared in the effect keeps its member annotations; the file is registered.
    std::unique_ptr<QorShaderInterfaceRecord> declared(
        QorShaderParameters::BuildInterfaceRecord(cg.Parameter("declaredLight")));
    ASSERT_EQ(declared->GetMemberCount(), 5);
    char* file = nullptr;
    declared->GetMemberValue(declared->FindMember("tex"))->GetString(&file);
    EXPECT_STREQ(file, "member.png");
    EXPECT_EQ(QorTextureCount("member.png"), 2u);
    declared.reset();
    EXPECT_EQ(QorTextureCount("member.png"), 1u) << "handed back with the record";
    EXPECT_EQ(std::unique_ptr<QorShaderInterfaceRecord>(QorShaderParameters::BuildInterfaceRecord(nullptr))
                  ->GetMemberCount(),
              0);
}

TEST(QorShaderParametersTest, InterfaceMembersAreReachedByNameAndIndex)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters set;
    QorShaderInterfaceRecord* record = cg.InstanceRecord();
    EXPECT_EQ(set.SetInterface("light", record), 1);
    QorCapturingSink sink;
    int found = -5;
    EXPECT_EQ(set.FindInterface("Light", &found), 0);
    EXPECT_EQ(found, -1);
    EXPECT_EQ(set.FindInterfaceMember(0, "rgba", &found), 1);
    EXPECT_EQ(found, 3);
    EXPECT_EQ(set.FindInterfaceMember(1, "rgba", &found), 0);
    int count = -1;
    EXPECT_EQ(set.GetNbInterfaceMembers(0, &count), 1);
    EXPECT_EQ(count, 5);
    // Equal to the number of interfaces passes the range test and finds no record.
    for (int bad : {1, 2, -1}) {
        EXPECT_EQ(set.GetNbInterfaceMembers(bad, &count), 0);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(set.GetInterfaceParameterName(bad, 0), nullptr);
    }
    EXPECT_STREQ(set.GetInterfaceParameterName(0, 4), "tex");
    EXPECT_EQ(set.GetInterfaceParameterName(0, 99), nullptr);
    int type = 0;
    EXPECT_EQ(set.GetInterfaceMemberType(0, 0, &type), 1);
    EXPECT_EQ(type, 6);

    const float colour[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    EXPECT_EQ(set.SetInterfaceFloat("light", "intensity", 2.0f), 1);
    EXPECT_EQ(set.SetInterfaceColorAt(0, 3, colour), 1);
    EXPECT_EQ(set.SetInterfaceFloat("light", "none", 1.0f), 0);
    EXPECT_EQ(set.SetInterfaceFloat("dark", "intensity", 1.0f), 0);
    EXPECT_EQ(set.SetInterfaceFloatAt(0, 7, 1.0f), 0);
    EXPECT_EQ(set.SetInterfaceTexture("light", "intensity", "x.png", 0), 0) << "not a texture";
    EXPECT_TRUE(sink.Records().empty());
    float read[4] = {};
    float* buffer = read;
    EXPECT_EQ(set.GetInterfaceColor("light", "rgba", &buffer), 1);
    EXPECT_FLOAT_EQ(read[3], 0.4f);
    EXPECT_EQ(set.GetInterfaceFloatAt(0, 1, read), 1);
    EXPECT_FLOAT_EQ(read[0], 2.0f);

    // Sets by name or index are touched, misses as null (not in an unknown interface);
    // reads are not.
    QorIShaderValue* intensity = record->GetMemberValue(1);
    const std::list<QorIShaderValue*> touched = {intensity, record->GetMemberValue(3), nullptr, nullptr, intensity};
    EXPECT_EQ(record->GetTouchedMembers(), touched);

    EXPECT_EQ(set.SetInterfaceFloatAt(0, 3, 1.0f), 1) << "the colour member reports, the set answers 1";
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderCGFX.m/src/QorShaderValueColor");
    EXPECT_EQ(sink.Records()[0].line, 82);
}

TEST(QorShaderParametersTest, InterfaceTexturesClearTheLoadStateAndRecordsAreReplaced)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters set;
    QorShaderInterfaceRecord* declared = QorShaderParameters::BuildInterfaceRecord(cg.Parameter("declaredLight"));
    set.SetInterface("light", declared);
    EXPECT_EQ(set.SetInterface("light", declared), 1) << "the stored record again stays alive";
    auto* texture = static_cast<QorMaterialValue*>(declared->GetMemberValue(4));
    ASSERT_NE(texture, nullptr);

    texture->SetLoadState(3);
    EXPECT_EQ(set.SetInterfaceTexture("light", "tex", "member.png", 0), 1);
    EXPECT_EQ(texture->GetLoadState(), 3) << "same name, no reload: nothing";
    EXPECT_EQ(set.SetInterfaceTextureAt(0, 4, "member.png", 1), 1);
    EXPECT_EQ(texture->GetLoadState(), 0) << "reloaded";
    texture->SetLoadState(3);
    EXPECT_EQ(set.SetInterfaceTextureAt(0, 4, "other.png", 0), 1);
    EXPECT_EQ(texture->GetLoadState(), 0);
    EXPECT_EQ(QorTextureCount("member.png"), 1u);
    EXPECT_EQ(QorTextureCount("other.png"), 2u);

    EXPECT_EQ(set.SetInterface("light", cg.InstanceRecord()), 1);
    EXPECT_EQ(QorTextureCount("other.png"), 1u) << "the replaced record handed its texture back";
    EXPECT_STREQ(set.GetInterfaceMemberName(0, 0), "color");
    EXPECT_EQ(set.SetInterface("empty", nullptr), 1);
    EXPECT_EQ(set.SetInterfaceFloatAt(1, 0, 1.0f), 0) << "a null record";
    EXPECT_EQ(set.SetInterface(nullptr, new QorShaderInterfaceRecord()), 0) << "taken and freed";
}
