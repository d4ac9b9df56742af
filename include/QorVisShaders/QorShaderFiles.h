/// @file
/// Where the library finds an effect file, for tools that say where a file came from.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorString.h"

/// The file a shader object given `name` (QorIShader::SetFileName) loads: the name as it
/// stands; else "<entry>\materials\shaders\<name>" over "QorStartupPath"; else the name,
/// then "shaders\<name>", along "QorGraphicPath". False when it is found nowhere.
QOR_VISSHADERS_API bool QorFindShaderFile(const QorString& name, QorString& path);
