#include "QorVisFoundation/QorVisBaseEnv.h"

namespace {
bool g_newVisu = false;
}

bool QorVisBaseEnv::IsNewVisu() { return g_newVisu; }
void QorVisBaseEnv::SetNewVisu(bool newVisu) { g_newVisu = newVisu; }
