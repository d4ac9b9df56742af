#include "QorVisShaderShared/QorShaderInterfaceRecord.h"
#include "QorShaderParameters.h"

#include "QorCgTestSupport.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>

// The CgFX set's own part: Cg parameters and interface records. What every set does is
// checked on both roads in the shared suite.
TEST(QorShaderParametersTest, CopiesShareTheCgHandlesAndCopyTheInterfaces)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    ASSERT_NE(cg.effect.Get(), nullptr) << cgGetLastListing(cg.context.Get());
    {
        QorShaderParameters source;
        cg.Fill(source);
        source.SetInterface("light", cg.InstanceRecord());
        source.SetInterfaceTexture("light", "tex", "member.png", 0);
        QorShaderParameters copy(source);
        EXPECT_EQ(QorTextureCount("member.png"), 3u);
        const char* names[] = {"gloss", "tint", "scale", "rgb", "diffuse", "bump"};
        for (int i = 1; i <= 6; ++i) {
            EXPECT_EQ(source.GetCgParameter(i), cg.Parameter(names[i - 1]));
            EXPECT_EQ(copy.GetCgParameter(i), cg.Parameter(names[i - 1]));
        }
        EXPECT_STREQ(copy.GetInterfaceMemberName(0, 4), "tex");
        EXPECT_EQ(copy.GetInterfaceMemberHandle(0, 1), source.GetInterfaceMemberHandle(0, 1));
        copy.SetInterfaceFloat("light", "intensity", 4.0f);
        float number = -1;
        source.GetInterfaceFloat("light", "intensity", &number);
        EXPECT_FLOAT_EQ(number, 0.0f) << "the copy is independent";
    }
    EXPECT_EQ(QorTextureCount("member.png"), 1u) << "every member handed its reference back";
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
