// The implementation is chosen once per process, so each setting runs as its own CTest
// entry: QOR_EXPECTED_VERSION names the choice the entry's environment must produce,
// QOR_NEW_VISU=1 turns the host's newer path on before the first request.
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorIShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"

#include "QorVisFoundation/QorQRFX0Factory.h"
#include "QorVisFoundation/QorVisBaseEnv.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

class QorShaderManagerTestAccess
{
public:
    static void Force(QorFxImplementation implementation) { QorShaderFactory::setFxImplementation(implementation); }
};

namespace {

QorIShader* HostShader()
{
    static char storage;
    return reinterpret_cast<QorIShader*>(&storage);
}

} // namespace

TEST(QorShaderVersionTest, ChoiceIsFixedAtFirstRequest)
{
    const char* expected = std::getenv("QOR_EXPECTED_VERSION");
    ASSERT_NE(expected, nullptr);
    const char* newVisu = std::getenv("QOR_NEW_VISU");
    if (newVisu && std::string(newVisu) == "1") {
        QorVisBaseEnv::SetNewVisu(true);
        QorRegisterQRFX0Factory(HostShader);
    }

    const QorFxImplementation chosen = QorShaderManager::GetShaderVersion();
    EXPECT_EQ(chosen, static_cast<QorFxImplementation>(std::atoi(expected)));

    // Changing the variable afterwards changes nothing.
    setenv("ShaderVersion", chosen == QorFxQRFX ? "CGFX" : "QRFX", 1);
    EXPECT_EQ(QorShaderManager::GetShaderVersion(), chosen);

    QorIShader* shader = QorShaderManager::CreateShader();
    QorIShaderEffect* effect = QorShaderManager::CreateShaderEffect();
    switch (chosen) {
    case QorFxCgFX:
    case QorFxQRFX:
        ASSERT_NE(shader, nullptr);
        EXPECT_EQ(shader->GetImplementation(), chosen);
        ASSERT_NE(effect, nullptr);
        EXPECT_EQ(effect->GetImplementation(), chosen);
        shader->Destroy();
        EXPECT_EQ(effect->Release(), 0u);
        break;
    case QorFxQRFX0:
        EXPECT_EQ(shader, HostShader()) << "the host's factory makes the shader";
        EXPECT_EQ(effect, nullptr) << "effects of the host's path are not made here";
        break;
    default:
        FAIL() << "unexpected implementation " << chosen;
    }

    // A named implementation is made whatever the process chose, and the choice stays.
    for (const QorFxImplementation named : {QorFxCgFX, QorFxQRFX}) {
        QorIShader* made = QorShaderManager::CreateShader(named);
        ASSERT_NE(made, nullptr) << named;
        EXPECT_EQ(made->GetImplementation(), named);
        made->Destroy();
    }
    EXPECT_EQ(QorShaderManager::CreateShader(QorFxUndecided), nullptr);
    EXPECT_EQ(QorShaderManager::CreateShader(static_cast<QorFxImplementation>(9)), nullptr);
    EXPECT_EQ(QorShaderManager::CreateShader(QorFxQRFX0), chosen == QorFxQRFX0 ? HostShader() : nullptr)
        << "the host's factory, when it registered one";
    EXPECT_EQ(QorShaderManager::GetShaderVersion(), chosen);

    // Only the private setter changes the choice, without any check.
    QorShaderManagerTestAccess::Force(QorFxQRFX);
    EXPECT_EQ(QorShaderManager::GetShaderVersion(), QorFxQRFX);
    QorShaderManagerTestAccess::Force(static_cast<QorFxImplementation>(9));
    EXPECT_EQ(QorShaderManager::GetShaderVersion(), 9u);
    QorIShader* forced = QorShaderManager::CreateShader();
    ASSERT_NE(forced, nullptr);
    EXPECT_EQ(forced->GetImplementation(), QorFxQRFX) << "any other value makes GLSL-effect shaders";
    forced->Destroy();
}
