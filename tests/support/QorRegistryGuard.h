/// @file
/// Leaves the process-wide texture registry and image lists empty after a test.
#pragma once

#include "QorVisFoundation/QorPixelImageManager.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorShaderManager.h"

/// Cleans the destroy list and empties the pixel-image lists when it ends; declare it
/// first so that every set of the test has handed its textures back by then.
struct QorRegistryGuard
{
    QorRegistryGuard() = default;
    QorRegistryGuard(const QorRegistryGuard&) = delete;
    QorRegistryGuard& operator=(const QorRegistryGuard&) = delete;
    ~QorRegistryGuard()
    {
        QorShaderManager::CleanShaderTextureToDestroyList();
        QorTexturePixelImage::ClearList();
        QorPixelImageManager::Clear();
    }
};
