/// @file
/// A texture value (type 4): the file name of a texture. Inside a parameter set a texture
/// value with a file holds one reference of the shared texture registered under that
/// name (QorShaderManager); the set takes it when the name is set and hands it back when
/// the name changes or the value goes.
#pragma once

#include "QorShaderValue.h"

class QorShaderValueString final : public QorShaderValue
{
public:
    QorShaderValueString() : QorShaderValueString(nullptr, nullptr) {}
    /// Keeps a copy of `file` (null stays null).
    QorShaderValueString(CGparameter parameter, const char* file);
    QorShaderValueString(const QorShaderValueString& other);
    ~QorShaderValueString() override;

    /// The value's own string, not a copy: freed by the next SetString.
    int GetString(char** file) override;
    /// Replaces the file with a copy of `file`; null clears it.
    void SetString(const char* file) override;
    /// Stores the value's own file pointer at the char* `out`.
    int Get(void* out) override;

    /// The file name, owned by the value; null when none.
    const char* GetFile() const { return m_file; }
    /// 0 when the file name was just set; the renderer marks a loaded texture.
    int GetLoadState() const { return m_loadState; }
    void SetLoadState(int state) { m_loadState = state; }

    /// The texture value behind `value`, or null when it is null or not of type 4.
    static QorShaderValueString* FromValue(QorIShaderValue* value);

private:
    const QorShaderValueGuards& Guards() const override;
    int m_loadState = 0;
    char* m_file = nullptr; // owned, _strdup copy, released with free
};
