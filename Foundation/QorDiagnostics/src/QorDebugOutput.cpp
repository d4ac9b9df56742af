#include "QorDiagnostics/QorDebugOutput.h"

#include <cstdio>

void OutputDebugStringA(const char* text)
{
    if (text)
        std::fputs(text, stderr);
}
