#include "QorVisFoundation/QorQRFX0Factory.h"

namespace {
QorQRFX0Factory g_factory = nullptr;
}

QorQRFX0Factory QorRegisterQRFX0Factory(QorQRFX0Factory factory)
{
    const QorQRFX0Factory previous = g_factory;
    g_factory = factory;
    return previous;
}

QorIShader* CreateQRFX0Effect()
{
    return g_factory ? g_factory() : nullptr;
}
