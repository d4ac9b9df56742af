#include "QorShaderEffectResource_p.h"

#include "QorVisFoundation/QorResourceZPKContainer.h"

#include <cstdlib>

QorShaderEffectResource::QorShaderEffectResource(QorResourceZPKContainer* container, const std::string& name,
                                                 const std::string& source, bool hasSource)
    : m_container(container), m_name(name), m_source(source), m_hasSource(hasSource)
{
}

QorShaderEffectResource::~QorShaderEffectResource()
{
    if (m_container)
        m_container->RemoveResource(static_cast<QorIShaderEffect*>(this));
}

unsigned int QorShaderEffectResource::AddRef()
{
    return ++m_refCount;
}

unsigned int QorShaderEffectResource::Release()
{
    const unsigned int left = --m_refCount;
    if (left == 0)
        delete this;
    return left;
}

char* QorShaderEffectResource::getBuffer()
{
    return m_hasSource ? m_source.data() : nullptr;
}

const char* QorShaderEffectResource::GetName()
{
    return m_name.c_str();
}

QorFxImplementation QorShaderEffectResource::GetImplementation() const
{
    return QorFxCgFX;
}

const QorString& QorShaderEffectResource::GetPathName() const
{
    static const QorString empty;
    return empty;
}

const QorString& QorShaderEffectResource::GetFileName() const
{
    return GetPathName();
}

void QorShaderEffectResource::getTechnique(int* index)
{
    if (index)
        *index = 0;
}

void QorShaderEffectResource::SetName(char* name)
{
    // The interface hands over the heap copy; this object keeps its stored name.
    std::free(name);
}

int QorShaderEffectResource::GetNumInterface(int& count) const
{
    count = 0;
    return 1;
}
