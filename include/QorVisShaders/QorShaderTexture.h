/// @file
/// The shared record of one texture file: several shaders and parameters naming the same
/// file share one record through QorShaderManager's registry, which counts its users.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

class QOR_VISSHADERS_API QorShaderTexture
{
public:
    /// Keeps a private copy of the name; count 1. Records whether the host's resource
    /// manager already held a pixel image of that name at this moment.
    explicit QorShaderTexture(const char* name);
    /// Copies duplicate the name: two records never share one heap string, so each can
    /// be destroyed on its own.
    QorShaderTexture(const QorShaderTexture& other);
    QorShaderTexture& operator=(const QorShaderTexture& other);
    virtual ~QorShaderTexture();

    /// The file name, owned by the record; null after ForgetName().
    const char* GetName() const { return m_name; }
    /// Frees the record's copy of the name (the registry keeps its own key).
    void ForgetName();

    /// The OpenGL texture name made by the renderer; 0 when none.
    unsigned int GetID() const { return m_id; }
    void SetID(unsigned int id) { m_id = id; }
    /// The texture kind, set and read by the parameter code.
    unsigned int GetType() const { return m_type; }
    void SetType(unsigned int type) { m_type = type; }
    unsigned int IsStoredInManager() const { return m_storedInManager; }
    unsigned int GetRefCount() const { return m_refCount; }

    void AddRef() { ++m_refCount; }
    /// Deletes the record when the count was 1.
    void Release();

    /// Queues the host image's pixels for the renderer's next upload. Returns 1 when
    /// the host holds a synchronous image with an implementation object for this name, else 0.
    unsigned int SaveBufferForDrawing();

private:
    char* m_name;                   // owned, _strdup copy
    unsigned int m_id = 0;
    unsigned int m_type = 0;
    unsigned int m_refCount = 1;
    unsigned int m_storedInManager; // fixed at construction
};
