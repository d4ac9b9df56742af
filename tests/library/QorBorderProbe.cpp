// Compiled only to show a module border: built as a module that names the QRFX module
// (and, through it, the shared one) but not the CgFX module, this must not compile.
#include "QorVisShaderCGFX/QorShaderEffect.h"
