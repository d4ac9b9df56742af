/// @file
/// A texture value of a GLSL-effect parameter set: the file name of a texture (type 4).
/// Inside a parameter set a value holds one reference of the shared texture registered
/// under its name (QorShaderManager), taken and handed back by the set.
#pragma once

#include "QorVisShaders/QorNvFXShaderValue.h"

class QOR_VISSHADERS_API QorNvFXShaderValueString final : public QorNvFXShaderValue
{
public:
    /// Holds "".
    QorNvFXShaderValueString() : QorNvFXShaderValueString(nullptr, nullptr) {}
    /// Holds a copy of `text`, or "" for null.
    QorNvFXShaderValueString(nvFX::IUniform* uniform, const char* text);
    QorNvFXShaderValueString(const QorNvFXShaderValueString& other);
    ~QorNvFXShaderValueString() override;

    void GetType(int* type) override;
    /// The value's own text, not a copy: valid until the next set.
    int GetString(char** file) override { return Get(file); }
    void SetString(const char* file) override { Set(file); }
    /// Writes the value's own text pointer at the char* `out`; answers the changed mark.
    int Get(void* out) override;
    /// Takes a copy of the text at `in` ("" for null).
    void Set(const void* in) override;
    void Stream(QorStreamer& streamer) override;
    /// A record without a text (a null string) leaves the text as it was.
    void UnStream(QorStreamer& streamer) override;
    /// Binds the GL texture the registry holds for the file (nothing while it has none).
    void Push(int textureUnit) override;

    const char* GetText() const { return m_text; }

private:
    char* m_text; // owned, C heap
};
