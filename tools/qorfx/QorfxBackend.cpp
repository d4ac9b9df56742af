#include "QorfxBackend.h"

#include "QorfxCgFXBackend.h"

std::unique_ptr<QorfxBackend> QorfxMakeBackend(QorIShader& shader)
{
    return QorfxCgFXBackend::For(shader);
}
