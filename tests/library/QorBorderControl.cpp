// The probe's control: the same build, including a header of a module it does name,
// compiles; so the probe fails for the border alone.
#include "QorVisShaderQRFX/QorNvFXEffect.h"
