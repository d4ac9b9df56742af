#include "QorfxSceneFeed.h"

#include "QorVisShaders/QorShaderTypes.h"

#include <cmath>

std::array<Qor4x4Matrix, QorfxMatrixCount> QorfxMatrices(const QorfxView& view)
{
    const Qor4x4Matrix worldView = view.view * view.world;
    const Qor4x4Matrix worldInverse = QorfxInverse(view.world);
    const Qor4x4Matrix viewInverse = QorfxInverse(view.view);
    const Qor4x4Matrix worldViewInverse = QorfxInverse(worldView);
    std::array<Qor4x4Matrix, QorfxMatrixCount> matrices;
    matrices[QorfxWorld] = view.world;
    matrices[QorfxWorldInverse] = worldInverse;
    matrices[QorfxWorldInverseTranspose] = worldInverse.Transposed();
    matrices[QorfxViewMatrix] = view.view;
    matrices[QorfxViewInverse] = viewInverse;
    matrices[QorfxViewInverseTranspose] = viewInverse.Transposed();
    matrices[QorfxProjection] = view.projection;
    matrices[QorfxWorldView] = worldView;
    matrices[QorfxWorldViewInverse] = worldViewInverse;
    matrices[QorfxWorldViewInverseTranspose] = worldViewInverse.Transposed();
    matrices[QorfxWorldViewProjection] = view.projection * worldView;
    return matrices;
}

QorfxLight QorfxPlaceLight(int slot, unsigned int kind)
{
    const float angle = static_cast<float>(slot) * 2.4f;
    const float px = 2.5f * std::cos(angle + 0.6f), py = 2.5f * std::sin(angle + 0.6f) + 1.0f, pz = 3.0f;
    const float length = std::sqrt(px * px + py * py + pz * pz);
    const float intensity = kind == QorLightDirectional ? 0.6f : 0.9f;
    return {{px, py, pz},
            {-px / length, -py / length, -pz / length},
            {intensity, intensity, intensity},
            {0.8f, 0.8f, 0.8f},
            1.0f,
            0.97f,
            0.90f,
            1.0f};
}

std::array<float, 3> QorfxEnvironmentAmbient(const QorfxView& view)
{
    if (view.environment.size() == 3)
        return {view.environment[0], view.environment[1], view.environment[2]};
    return {0.35f, 0.35f, 0.35f};
}
