/// @file
/// A GL texture of one texel, for GL tests that need a sampler to read a known colour.
#pragma once

#include <GL/gl.h>

#include <array>

/// A texture of one texel of `rgba` on each face, in the current context: a 2D map or a
/// cube map. The caller deletes it.
inline GLuint QorPlainTexture(GLenum target, const std::array<unsigned char, 4>& rgba)
{
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(target, id);
    const bool cube = target == GL_TEXTURE_CUBE_MAP;
    for (int face = 0; face < (cube ? 6 : 1); ++face)
        glTexImage2D(cube ? GL_TEXTURE_CUBE_MAP_POSITIVE_X + face : target, 0, GL_RGBA8, 1, 1, 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, rgba.data());
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(target, 0);
    return id;
}
