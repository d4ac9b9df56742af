#include "nvFX/nvFX.h"

#include "Container_p.h"
#include "EffectParser_p.h"
#include "GlobalBuffers_p.h"
#include "GlslangProgram_p.h"
#include "StageAssembler_p.h"

#include <algorithm>
#include <exception>
#include <unordered_map>

namespace nvFX {

namespace {

using namespace detail;

// The uniforms and buffers of a load, by the names glslang's reflection reports.
struct NameIndex
{
    std::unordered_map<std::string, Uniform*> uniforms;
    std::unordered_map<std::string, Uniform*> members;
    std::unordered_map<std::string, ConstantBuffer*> buffers;
};

// False, after saying why, when a global buffer cannot be shared.
bool MakeUniforms(const EffectDescription& effect, ContainerContent& content, NameIndex& index)
{
    int nextUnit = 0;
    for (const UniformDescription& description : effect.uniforms) {
        const bool sampler = description.type->base == ValueBase::Sampler;
        const int elements = std::max(description.arraySize, 1);
        content.uniforms.push_back(std::make_unique<Uniform>(description, nullptr, nextUnit));
        index.uniforms[content.uniforms.back()->getName()] = content.uniforms.back().get();
        if (sampler)
            nextUnit += elements;
    }
    for (const SamplerStateDescription& state : effect.samplerStates)
        content.samplerStates.push_back(std::make_unique<SamplerStateObject>(state.parameters));
    unsigned int nextPoint = 0;
    for (const BufferDescription& description : effect.buffers) {
        std::shared_ptr<ConstantBuffer> buffer;
        if (description.global) {
            const std::string place =
                effect.sources.name(description.at.source) + "(" + std::to_string(description.at.line) + ")";
            std::string why;
            buffer = shareGlobalBuffer(description, place, why);
            if (!buffer) {
                reportError(effect.sources, description.at, why);
                return false;
            }
        } else {
            buffer = makeConstantBuffer(description, nextPoint++);
        }
        for (const std::unique_ptr<Uniform>& member : buffer->members())
            index.members[member->getName()] = member.get();
        index.buffers[buffer->name()] = buffer.get();
        content.buffers.push_back(std::move(buffer));
    }
    return true;
}

// Compiles one pass with glslang and says which uniforms and buffers it uses; false
// after printing why it does not compile or link.
bool MakePassContent(const EffectDescription& effect, const TechniqueDescription& technique,
                     const PassDescription& pass, const NameIndex& index, const ContainerContent& made,
                     PassContent& content)
{
    for (const SamplerAssignment& assignment : pass.samplers)
        content.samplerStates.emplace_back(index.uniforms.at(assignment.sampler),
                                           made.samplerStates[assignment.state].get());
    content.name = pass.name;
    content.label = "pass '" + pass.name + "' of technique '" + technique.name + "'";
    for (int stage = 0; stage < StageCount; ++stage)
        if (!pass.stages[stage].empty())
            content.stages[stage] = assembleStage(effect, pass.stages[stage]);
    ProgramUsage usage;
    if (!compileWithGlslang(content.stages, effect, pass.at, content.label, usage))
        return false;
    content.annotations = pass.annotations;
    content.states = pass.states;
    for (const std::string& name : usage.uniforms) {
        if (auto found = index.uniforms.find(name); found != index.uniforms.end()) {
            found->second->markUsed();
            content.uniforms.push_back(found->second);
        } else if (auto member = index.members.find(name); member != index.members.end()) {
            member->second->markUsed();
        }
    }
    for (const std::string& name : usage.blocks)
        if (auto found = index.buffers.find(name); found != index.buffers.end())
            content.buffers.push_back(found->second);
    return true;
}

bool Load(Container& container, const char* text, const char* sourceName)
{
    EffectDescription effect(sourceName && *sourceName ? sourceName : container.getName());
    if (!parseEffect(text, effect))
        return false;
    ContainerContent content;
    NameIndex index;
    if (!MakeUniforms(effect, content, index))
        return false;
    bool compiled = true;
    for (TechniqueDescription& technique : effect.techniques) {
        std::vector<std::unique_ptr<Pass>> passes;
        for (const PassDescription& pass : technique.passes) {
            PassContent passContent;
            if (!MakePassContent(effect, technique, pass, index, content, passContent))
                compiled = false;
            else
                passes.push_back(std::make_unique<Pass>(std::move(passContent)));
        }
        content.techniques.push_back(
            std::make_unique<Technique>(technique.name, std::move(technique.annotations), std::move(passes)));
    }
    if (!compiled)
        return false;
    container.adopt(std::move(content));
    return true;
}

} // namespace

bool loadEffect(IContainer* container, const char* text)
{
    return loadEffect(container, text, nullptr);
}

bool loadEffect(IContainer* container, const char* text, const char* sourceName)
{
    if (!container || !text) {
        nvFX::printf("nvFX: loadEffect: %s is null\n", container ? "the text" : "the container");
        return false;
    }
    // Every container comes from IContainer::create.
    Container& target = static_cast<Container&>(*container);
    if (target.loaded()) {
        nvFX::printf("nvFX: loadEffect: container '%s' already holds an effect\n", target.getName());
        return false;
    }
    try {
        return Load(target, text, sourceName);
    } catch (const std::exception& error) {
        nvFX::printf("nvFX: loadEffect: %s\n", error.what());
        return false;
    }
}

} // namespace nvFX
