/// @file
/// The container behind IContainer::create. Private to QorNvFX.
#pragma once

#include "nvFX/IContainerEx.h"

#include "ConstantBuffer_p.h"
#include "SamplerStates_p.h"
#include "Technique_p.h"
#include "Uniform_p.h"

#include <memory>
#include <string>
#include <vector>

namespace nvFX::detail {

/// Everything a load makes, handed to the container whole once the load succeeded.
struct ContainerContent
{
    std::vector<std::unique_ptr<Uniform>> uniforms;       ///< effect scope, in order
    /// Own their members; a global buffer is shared with the other effects that hold it.
    std::vector<std::shared_ptr<ConstantBuffer>> buffers;
    std::vector<std::unique_ptr<SamplerStateObject>> samplerStates; ///< passes borrow them
    std::vector<std::unique_ptr<Technique>> techniques;
};

class Container final : public IContainerEx
{
public:
    explicit Container(const char* name) : m_name(name ? name : "") {}

    IContainerEx* getExInterface() override { return this; }
    const char* getName() const override { return m_name.c_str(); }
    ITechnique* findTechnique(int index) override;
    ITechnique* findTechnique(const char* name) override;
    IUniform* findUniform(int index) override;
    IUniform* findUniform(const char* name) override;
    IUniform* findBufferUniform(const char* name) override;
    int getNumTechniques() const override { return static_cast<int>(m_content.techniques.size()); }
    int getNumUniforms() const override { return static_cast<int>(m_content.uniforms.size()); }
    int getNumBuffers() const override { return static_cast<int>(m_content.buffers.size()); }
    const char* getBufferName(int buffer) const override;
    bool isBufferGlobal(int buffer) const override;
    IUniform* getBufferMember(int buffer, int member) override;

    /// True once a load filled the container.
    bool loaded() const { return m_loaded; }
    void adopt(ContainerContent content)
    {
        m_content = std::move(content);
        m_loaded = true;
    }

private:
    std::string m_name;
    ContainerContent m_content;
    bool m_loaded = false;
};

} // namespace nvFX::detail
