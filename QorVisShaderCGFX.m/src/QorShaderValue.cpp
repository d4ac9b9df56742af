#include "QorShaderValue.h"

#include "QorCgFXProfile.h"

const QorBackEndProfile& QorShaderValue::Profile() const
{
    return kQorCgFXProfile;
}
