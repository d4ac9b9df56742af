// One Cg interface parameter and the structure instance connected to it.
#include "QorShaderInterface.h"

#include "QorTestSupport.h"
#include "QorVisShaderCGFX/QorCgHolder.h"

#include <gtest/gtest.h>

namespace {

// Reflection, user types and connections need no GL context.
struct ShapeEffect
{
    QorCgContextHolder context{cgCreateContext()};
    QorCgEffectHolder effect{cgCreateEffect(context.Get(), R"(
interface Shape { float area(); };
struct Square : Shape { float side; float area() { return side * side; } };
struct Circle : Shape { float radius; float area() { return 3.14 * radius * radius; } };
struct Plain { float x; };
Shape shape;
Plain plain;
technique t { pass p {} }
)", nullptr)};

    CGparameter Named(const char* name) const { return cgGetNamedEffectParameter(effect.Get(), name); }
    CGtype Type(const char* name) const { return cgGetNamedUserType(effect.Get(), name); }
};

} // namespace

TEST(QorShaderInterfaceTest, ConnectsANewInstanceOfTheNamedType)
{
    ShapeEffect cg;
    ASSERT_TRUE(cg.effect);
    QorShaderInterface shape(cg.Named("shape"), cg.context.Get(), cg.effect.Get(), cg.Type("Shape"), cg.Type("Square"));
    const CGparameter square = shape.GetInstance();
    ASSERT_NE(square, nullptr);
    EXPECT_EQ(cgGetParameterNamedType(square), cg.Type("Square"));
    EXPECT_EQ(cgGetConnectedParameter(cg.Named("shape")), square);

    EXPECT_EQ(shape.ConnectTypeByName("Circle"), 1);
    EXPECT_NE(shape.GetInstance(), square) << "each connection makes its own instance";
    EXPECT_EQ(cgGetConnectedParameter(cg.Named("shape")), shape.GetInstance());
    const CGparameter circle = shape.GetInstance();
    EXPECT_EQ(shape.ConnectTypeByName("Triangle"), 0);
    EXPECT_EQ(shape.ConnectTypeByName(nullptr), 0);
    EXPECT_EQ(shape.GetInstance(), circle) << "an unknown type keeps the connected instance";

    QorShaderInterface unconnected(cg.Named("shape"), cg.context.Get(), cg.effect.Get(), cg.Type("Shape"));
    EXPECT_EQ(unconnected.GetInstance(), nullptr);
    EXPECT_EQ(unconnected.GetDynamicType(), CG_UNKNOWN_TYPE);
}

TEST(QorShaderInterfaceTest, AStructureTypeIsReportedAsTheWrongKindOfType)
{
    ShapeEffect cg;
    QorCapturingSink sink;
    QorShaderInterface wrong(cg.Named("plain"), cg.context.Get(), cg.effect.Get(), cg.Type("Plain"));
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderCGFX.m/src/QorShaderInterface");
    EXPECT_EQ(sink.Records()[0].line, 40);
    QorShaderInterface refused(cg.Named("plain"), cg.context.Get(), cg.effect.Get(), cg.Type("Plain"), cg.Type("Plain"));
    ASSERT_EQ(sink.Records().size(), 2u);
    EXPECT_EQ(sink.Records()[1].line, 27);
    EXPECT_EQ(refused.GetInstance(), nullptr) << "nothing is connected to a refused parameter";
}
