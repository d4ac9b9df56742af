/// @file
/// What the CgFX back end answers where the contract lets the two implementations
/// differ: where its values and set report, which of their calls check kinds, how its
/// shader objects answer colour and string queries (see QorBackEndProfile).
#pragma once

#include "QorVisShaderShared/QorBackEndProfile.h"

extern const QorBackEndProfile kQorCgFXProfile;
