#include "StageAssembler_p.h"

#include "ValueTypes_p.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace nvFX::detail {

namespace {

// From GLSL 3.30 (and in ES) "#line N" numbers the next line N; before, N + 1.
bool LineDirectiveNamesNextLine(const std::string& version)
{
    std::string_view rest(version);
    rest.remove_prefix(std::min(rest.find_first_of("0123456789"), rest.size()));
    const long number = std::strtol(std::string(rest).c_str(), nullptr, 10);
    return number >= 330 || rest.find("es") != std::string_view::npos;
}

class StageWriter
{
public:
    explicit StageWriter(const std::string& version)
        : m_nextLine(LineDirectiveNamesNextLine(version))
    {
        m_text = version + "\n";
    }

    void line(SourceLocation at)
    {
        m_text += "#line " + std::to_string(m_nextLine ? at.line : at.line - 1) + " " + std::to_string(at.source) + "\n";
    }

    void declare(const UniformDescription& uniform, const char* indent)
    {
        line(uniform.at);
        m_text += indent;
        m_text += uniform.type->keyword;
        m_text += " " + uniform.name;
        if (uniform.arraySize)
            m_text += "[" + std::to_string(uniform.arraySize) + "]";
        m_text += ";\n";
    }

    void code(const CodePiece& piece) { placed(piece.at, piece.text); }
    void directive(const DirectiveLine& directive) { placed(directive.at, directive.text); }

    std::string take() { return std::move(m_text); }
    void append(const char* text) { m_text += text; }

private:
    void placed(SourceLocation at, const std::string& text)
    {
        line(at);
        m_text += text;
        m_text += "\n";
    }

    bool m_nextLine;
    std::string m_text;
};

} // namespace

std::string assembleStage(const EffectDescription& effect, const std::vector<CodeReference>& code)
{
    StageWriter writer(effect.version.empty() ? std::string(kDefaultVersion) : effect.version);
    // GLSL takes extensions only before any code.
    for (const DirectiveLine& extension : effect.extensions)
        writer.directive(extension);
    for (const ScopeItem& item : effect.scope) {
        switch (item.kind) {
        case ScopeItem::Directive:
            writer.directive(effect.directives[item.index]);
            break;
        case ScopeItem::SharedCode:
            writer.code(effect.sharedCode[item.index]);
            break;
        case ScopeItem::Uniform:
            writer.declare(effect.uniforms[item.index], "uniform ");
            break;
        case ScopeItem::Buffer: {
            const BufferDescription& buffer = effect.buffers[item.index];
            writer.line(buffer.at);
            writer.append(("layout(std140) uniform " + buffer.name + " {\n").c_str());
            for (const UniformDescription& member : buffer.members)
                writer.declare(member, "    ");
            writer.append("};\n");
            break;
        }
        }
    }
    for (const CodeReference& reference : code)
        writer.code(*effect.findCode(reference.name));
    return writer.take();
}

} // namespace nvFX::detail
