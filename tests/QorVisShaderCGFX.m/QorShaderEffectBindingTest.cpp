// Semantic binding, visibility and interfaces on small effects written for each case.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorShaderParameters.h"
#include "QorTestSupport.h"
#include "QorVisShaders/QorShaderManager.h"

#include <Cg/cgGL.h>
#include <gtest/gtest.h>

namespace {

struct BufferEffect
{
    explicit BufferEffect(const char* source) : effect(QorShaderEffect::AddShaderEffect(nullptr))
    {
        effect->setBuffer(source);
        parameters = effect->GenerateShader();
    }
    ~BufferEffect()
    {
        effect->Release();
        // Texture values handed their registry entries back; retire them.
        QorShaderManager::CleanShaderTextureToDestroyList();
    }
    CGparameter Named(const char* name) const { return cgGetNamedEffectParameter(effect->GetCgEffect(), name); }
    QorShaderEffect* effect;
    QorShaderParameters* parameters;
};

std::vector<std::string> UserParameterNames(QorShaderParameters* parameters)
{
    std::vector<std::string> names;
    for (int index = 1; index < parameters->GetNbParameters(); ++index)
        names.push_back(parameters->GetParameterName(index));
    return names;
}

} // namespace

TEST(QorShaderEffectBindingTest, LightSlotsComeFromTheNamesLastDigitAndATypedLightEndsTheWalk)
{
    BufferEffect lit(R"(
float4 lightColor3 : LightColor;
float4 lightColor9 : LIGHTCOLOR;
float4 lightColor : LIGHTCOLOR;
float3 lamp1 : Position;
float3 sun2 : LIGHTDIR;
float3 spot4 : IntensityAndSpot;
technique t { pass p {} }
)");
    ASSERT_NE(lit.parameters, nullptr);
    QorShaderEffect& effect = *lit.effect;
    EXPECT_EQ(effect.GetLightCount(), 5) << "slot 4 is the highest bound";
    EXPECT_EQ(effect.GetLight(3).color, lit.Named("lightColor3"));
    EXPECT_EQ(effect.GetLight(0).color, lit.Named("lightColor")) << "a name without a digit binds slot 0";
    EXPECT_EQ(effect.GetLight(1).position, lit.Named("lamp1"));
    EXPECT_EQ(effect.GetLight(2).direction, lit.Named("sun2"));
    EXPECT_EQ(effect.GetLight(4).intensityAndSpot, lit.Named("spot4"));
    for (int slot = 0; slot < 8; ++slot)
        EXPECT_NE(effect.GetLight(slot).color, lit.Named("lightColor9")) << "a name ending in 9 binds nothing";
    EXPECT_TRUE(UserParameterNames(lit.parameters).empty()) << "light semantics are never user values";

    // A light with a type annotation ends the binding walk.
    BufferEffect typed(R"(
float4x4 before : World;
float3 spotPos1 : LIGHTPOS < string type = "LIGHTSPOT"; >;
float4x4 after : View;
float4 diffuse : Diffuse;
float NeedTandB = 2.7;
technique t { pass p {} }
)");
    ASSERT_NE(typed.parameters, nullptr);
    QorShaderEffect& walked = *typed.effect;
    EXPECT_EQ(walked.GetFeedParameter(QorFeedWorld), typed.Named("before"));
    EXPECT_EQ(walked.GetLight(1).lightType, unsigned(QorLightSpot));
    EXPECT_EQ(walked.GetFeedParameter(QorFeedView), nullptr) << "bound after the typed light: never";
    EXPECT_EQ(walked.GetFeedParameter(QorFeedDiffuse), nullptr);
    EXPECT_EQ(walked.NeedTanBin(), 2);
    EXPECT_EQ(UserParameterNames(typed.parameters), std::vector<std::string>{"diffuse"})
        << "the parameter set is still built from every parameter";
}

TEST(QorShaderEffectBindingTest, VisibilityAndDefaults)
{
    BufferEffect mixed(R"(
float4 ambient : Ambient = {0.1, 0.2, 0.3, 0.4};
float spot : Spot;
float inverse : WorldInverse;
float description = 1;
float4x4 plain;
float2 uv = {5, 6};
float4 wide = {1, 2, 3, 4};
float2 narrow = {7, 8};
bool enabled = true;
int count = 3;
sampler2D wood < string File = "wood.dds"; >;
sampler2D bare;
string label < string Default = "fallback.png"; > = "x";
float ranged < float UIMin = 2; float max = 8; float min = -5; > = 1;
technique t { pass p {} }
)");
    ASSERT_NE(mixed.parameters, nullptr);
    QorShaderParameters& set = *mixed.parameters;
    EXPECT_EQ(UserParameterNames(&set), (std::vector<std::string>{"ambient", "uv", "wide", "narrow", "enabled",
                                                                   "count", "wood", "bare", "label", "ranged"}));
    QorShaderEffect& effect = *mixed.effect;
    EXPECT_EQ(effect.GetFeedParameter(QorFeedAmbient), mixed.Named("ambient")) << "bound and visible";
    EXPECT_EQ(set.GetParameterType(set.GetParameterIndex("uv")), 5);
    const std::pair<const char*, float> numbers[] = {{"ambient", 0.1f}, {"enabled", 1}, {"count", 3}};
    for (const auto& [name, first] : numbers)
        EXPECT_FLOAT_EQ(set.ValueAt(set.GetParameterIndex(name))->Components()[0], first) << name;
    const std::pair<const char*, const char*> files[] = {{"wood", "wood.dds"}, {"bare", nullptr}, {"label", "fallback.png"}};
    for (const auto& [name, expected] : files) {
        char* file = nullptr;
        set.GetTextureValue(set.GetParameterIndex(name), &file, 0);
        EXPECT_STREQ(file, expected) << name;
    }

    float min = 0, max = 0, step = 0;
    char* widget = const_cast<char*>("kept");
    effect.getParameterFloatMinMaxStep(mixed.Named("ranged"), min, max, step, &widget, nullptr);
    EXPECT_EQ(min, 2.0f) << "UIMin wins over min";
    EXPECT_EQ(max, 8.0f);
    EXPECT_FLOAT_EQ(step, 0.1f);
    EXPECT_STREQ(widget, "kept");
    EXPECT_EQ(effect.getParameterFloatMinMaxStep(mixed.Named("enabled"), min, max, step, nullptr, nullptr), 1);
    EXPECT_EQ(std::vector<float>({min, max, step}), std::vector<float>({0, 1, 1})) << "a bool";
}

TEST(QorShaderEffectBindingTest, InterfacesByAnnotationAndByName)
{
    const char* source = R"(
interface Shape { float area(); };
struct Square : Shape { float side; float area() { return side * side; } };
struct Circle : Shape { float radius; float4 tint; float area() { return 3.14 * radius * radius; } };
struct NotAnInterface { float x; };
Shape shape < string UserType = "Shape"; string DynamicType = "Square"; >;
NotAnInterface plainStruct < string UserType = "NotAnInterface"; string DynamicType = "NotAnInterface"; >;
float4 main2() : COLOR { return shape.area(); }
technique t { pass p { FragmentProgram = compile arbfp1 main2(); } }
)";
    BufferEffect shapes(source);
    ASSERT_NE(shapes.parameters, nullptr);
    QorShaderEffect& effect = *shapes.effect;
    int count = 0;
    effect.GetNumInterface(count);
    EXPECT_EQ(count, 1) << "a UserType that is no interface is ignored";
    EXPECT_STREQ(effect.GetBaseType("shape"), "Shape");
    EXPECT_STREQ(effect.GetDynamicType("shape"), "Square");
    int interfaceIndex = -1, member = -1;
    ASSERT_EQ(shapes.parameters->FindInterface("shape", &interfaceIndex), 1);
    EXPECT_EQ(shapes.parameters->FindInterfaceMember(interfaceIndex, "side", &member), 1);

    QorCapturingSink sink;
    EXPECT_EQ(effect.GetBaseType("nothing"), nullptr);
    EXPECT_TRUE(sink.Records().empty()) << "type look-ups of unknown names do not report";
    EXPECT_EQ(effect.ConnectTypeToInterface("shape", "Triangle", shapes.parameters), 0);
    EXPECT_STREQ(effect.GetDynamicType("shape"), "Square") << "an unknown type keeps the current instance";
    EXPECT_EQ(effect.ConnectTypeToInterface("shape", "Circle", shapes.parameters), 1);
    EXPECT_STREQ(effect.GetDynamicType("shape"), "Circle");
    EXPECT_EQ(shapes.parameters->FindInterfaceMember(interfaceIndex, "radius", &member), 1);
    EXPECT_TRUE(sink.Records().empty());

    EXPECT_EQ(effect.ConnectTypeToInterface("nothing", "Circle", shapes.parameters), 0);
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].message, "Could not find the interfaces given by name_param");
    EXPECT_EQ(sink.Records()[0].line, 1639);

    const CGparameter shape = shapes.Named("shape");
    const CGtype shapeType = cgGetNamedUserType(effect.GetCgEffect(), "Shape");
    EXPECT_EQ(effect.AddInterface(shape, effect.GetCgContext(), effect.GetCgEffect(), shapeType), nullptr);
    EXPECT_EQ(sink.Records()[1].message, "The interface already exists");
    EXPECT_EQ(sink.Records()[1].line, 1604);
    EXPECT_EQ(effect.AddInterface(shape, effect.GetCgContext(), effect.GetCgEffect(), shapeType, shapeType),
              nullptr);
    EXPECT_EQ(sink.Records()[2].line, 1622);
}

TEST(QorShaderEffectBindingTest, EnvironmentNeedsItsTypesAndMatricesGoWhereTheyBelong)
{
    QorCapturingSink sink;
    BufferEffect wrongEnvironment(R"(
struct NotAnEnvironment { float x; };
NotAnEnvironment environment;
float4x4 viewIT : ViewInverseTranspose;
float4x4 shadowMatrix;
technique t { pass p {} }
)");
    ASSERT_NE(wrongEnvironment.parameters, nullptr);
    ASSERT_FALSE(sink.Records().empty());
    EXPECT_EQ(sink.Records().back().message,
              "Variable Environment should be used with the type Environment and with an existing implementation - "
              "Check your shader code");
    EXPECT_EQ(sink.Records().back().line, 1082);
    QorShaderEffect& effect = *wrongEnvironment.effect;
    EXPECT_EQ(effect.GetEnvironmentState(), QorEnvironmentNone);
    EXPECT_EQ(effect.updateEnvModel(QorEnvironmentCube), 0);
    EXPECT_EQ(effect.GetEnvironmentState(), QorEnvironmentNone);

    Qor4x4Matrix matrix;
    for (int i = 0; i < 16; ++i)
        matrix.m[i] = static_cast<float>(i);
    float read[16] = {};
    effect.SetMatrixParam(static_cast<QorMatrixParam>(2), matrix);
    cgGetMatrixParameterfr(wrongEnvironment.Named("viewIT"), read);
    EXPECT_EQ(read[1], 0.0f) << "an unknown matrix kind sets nothing";
    effect.SetMatrixParam(QorMatrixShadow, matrix);
    cgGetMatrixParameterfr(wrongEnvironment.Named("viewIT"), read);
    EXPECT_EQ(read[1], 1.0f);
    cgGetMatrixParameterfc(wrongEnvironment.Named("shadowMatrix"), read);
    EXPECT_EQ(read[1], 1.0f) << "the shadow matrix is fed column-major";
}
