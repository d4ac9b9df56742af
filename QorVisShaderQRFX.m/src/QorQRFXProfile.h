/// @file
/// What the QRFX back end answers where the contract lets the two implementations
/// differ: where its values and set report, which of their calls check kinds, which
/// operations it has not (interfaces, streams, extra textures), how its shader objects
/// answer colour and string queries (see QorBackEndProfile).
#pragma once

#include "QorVisShaderShared/QorBackEndProfile.h"

extern const QorBackEndProfile kQorQRFXProfile;
