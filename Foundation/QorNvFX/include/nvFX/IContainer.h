/// @file
/// An effect: its techniques and uniforms.
#pragma once

namespace nvFX {

class IContainerEx;
class ITechnique;
class IUniform;

/// What nvFX::loadEffect fills: the techniques and uniforms of one effect. Techniques,
/// passes, uniforms and annotations it hands out are borrowed: they stay valid until
/// the container is destroyed. Lookups answer null for a bad index or an unknown name.
/// Not thread-safe: one thread (the rendering one) uses a container at a time.
class IContainer
{
public:
    /// A new, empty container named `name` (null is taken as ""); messages about its
    /// effect's own lines name the effect by it. Destroy it with destroy().
    static IContainer* create(const char* name);
    /// Destroys the container and everything it handed out. GL objects its passes made
    /// are deleted when the context they were made in is current; otherwise they are
    /// left to that context, which frees them when it goes. Null is ignored.
    static void destroy(IContainer* container);

    virtual IContainerEx* getExInterface() = 0;
    virtual const char* getName() const = 0;
    /// Techniques in the order the effect declares them.
    virtual ITechnique* findTechnique(int index) = 0;
    virtual ITechnique* findTechnique(const char* name) = 0;
    /// Effect-scope uniforms in declaration order, an include's uniforms where the
    /// include stands; constant-buffer members are not among them.
    virtual IUniform* findUniform(int index) = 0;
    virtual IUniform* findUniform(const char* name) = 0;
    /// The members of constant buffers, by member name or by "Buffer.member".
    virtual IUniform* findBufferUniform(const char* name) = 0;

protected:
    IContainer() = default;
    virtual ~IContainer() = default;
    IContainer(const IContainer&) = delete;
    IContainer& operator=(const IContainer&) = delete;
};

} // namespace nvFX
