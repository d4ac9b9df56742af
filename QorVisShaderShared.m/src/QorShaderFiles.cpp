#include "QorVisShaders/QorShaderFiles.h"

#include "QorVisShaderShared/QorShaderSearch.h"

bool QorFindShaderFile(const QorString& name, QorString& path)
{
    return QorShaderSearch::FindShaderFile(name, path);
}
