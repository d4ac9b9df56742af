#include "GlslangProgram_p.h"

#include "nvFX/nvFX.h"

#include "ProgramCache_p.h"

#include <glslang/build_info.h>
#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <sstream>
#include <string_view>

namespace nvFX::detail {

namespace {

constexpr EShLanguage kLanguages[StageCount] = {EShLangVertex, EShLangFragment, EShLangGeometry, EShLangTessControl,
                                                EShLangTessEvaluation};
constexpr const char* kStageNames[StageCount] = {"vertex", "fragment", "geometry", "tessellation control",
                                                 "tessellation evaluation"};
// A wall of messages from one broken stage says no more than its first few.
constexpr int kMaxMessages = 20;
#define QOR_STRINGIFY(x) #x
#define QOR_VERSION_TEXT(a, b, c) QOR_STRINGIFY(a) "." QOR_STRINGIFY(b) "." QOR_STRINGIFY(c)
constexpr const char* kGlslangVersion =
    QOR_VERSION_TEXT(GLSLANG_VERSION_MAJOR, GLSLANG_VERSION_MINOR, GLSLANG_VERSION_PATCH) GLSLANG_VERSION_FLAVOR;
#undef QOR_VERSION_TEXT
#undef QOR_STRINGIFY

// glslang's process-wide tables live until the process exits.
void InitializeGlslang()
{
    static std::once_flag once;
    std::call_once(once, [] { glslang::InitializeProcess(); });
}

// Prints glslang's log: "ERROR: <source>:<line>: <text>" becomes the effect's source
// and line; lines without a place go out with `unplaced`.
class LogPrinter
{
public:
    LogPrinter(const EffectDescription& effect, SourceLocation unplaced, std::string prefix)
        : m_effect(effect), m_unplaced(unplaced), m_prefix(std::move(prefix))
    {
    }

    void print(const char* log)
    {
        std::istringstream lines(log ? log : "");
        for (std::string line; std::getline(lines, line);)
            printLine(line);
    }

private:
    void printLine(const std::string& line)
    {
        if (line.empty() || line.find("compilation terminated") != std::string::npos ||
            line.find("compilation errors.") != std::string::npos || ++m_count > kMaxMessages)
            return;
        const bool warning = line.compare(0, 9, "WARNING: ") == 0;
        const std::size_t textStart = warning ? 9 : line.compare(0, 7, "ERROR: ") == 0 ? 7 : 0;
        const char* text = line.c_str() + textStart;
        char* end = nullptr;
        const long source = std::strtol(text, &end, 10);
        if (end != text && *end == ':') {
            const char* lineStart = end + 1;
            const long number = std::strtol(lineStart, &end, 10);
            if (end != lineStart && *end == ':') {
                report(locate(static_cast<int>(source), static_cast<int>(number)), warning, end + 1);
                return;
            }
        }
        report(m_unplaced, warning, text);
    }

    // Source 0 is the version line that starts every stage.
    SourceLocation locate(int source, int line) const
    {
        if (source == 0)
            return m_effect.version.empty() ? m_unplaced : m_effect.versionAt;
        return {source, line};
    }

    void report(SourceLocation at, bool warning, std::string_view text)
    {
        const std::size_t first = text.find_first_not_of(' ');
        text.remove_prefix(first == std::string_view::npos ? text.size() : first);
        text.remove_suffix(text.size() - (text.find_last_not_of(' ') + 1));
        const std::string what = m_prefix + std::string(text);
        if (warning)
            nvFX::printf("%s(%d): warning: %s\n", m_effect.sources.name(at.source).c_str(), at.line, what.c_str());
        else
            reportError(m_effect.sources, at, what);
    }

    const EffectDescription& m_effect;
    SourceLocation m_unplaced;
    std::string m_prefix;
    int m_count = 0;
};

void CollectUsage(const glslang::TProgram& program, ProgramUsage& usage)
{
    for (int i = 0; i < program.getNumUniformVariables(); ++i) {
        std::string name = program.getUniform(i).name;
        const std::size_t bracket = name.find('[');
        if (bracket != std::string::npos)
            name.resize(bracket);
        usage.uniforms.push_back(std::move(name));
    }
    for (int i = 0; i < program.getNumUniformBlocks(); ++i)
        usage.blocks.push_back(program.getUniformBlock(i).name);
}

bool compileStages(const std::string (&stages)[StageCount], const EffectDescription& effect,
                   SourceLocation passAt, const std::string& passLabel, ProgramUsage& usage)
{
    InitializeGlslang();
    // The program must go before the shaders linked into it: declared after them.
    std::unique_ptr<glslang::TShader> shaders[StageCount];
    bool compiled = true;
    for (int stage = 0; stage < StageCount; ++stage) {
        if (stages[stage].empty())
            continue;
        shaders[stage] = std::make_unique<glslang::TShader>(kLanguages[stage]);
        const char* text = stages[stage].c_str();
        shaders[stage]->setStrings(&text, 1);
        if (!shaders[stage]->parse(GetDefaultResources(), 110, false, EShMsgDefault)) {
            // A stage's message without a place is about its version ("version not supported").
            const SourceLocation unplaced = effect.version.empty() ? passAt : effect.versionAt;
            LogPrinter(effect, unplaced, passLabel + ", " + kStageNames[stage] + " stage: ")
                .print(shaders[stage]->getInfoLog());
            compiled = false;
        }
    }
    if (!compiled)
        return false;
    glslang::TProgram program;
    for (const std::unique_ptr<glslang::TShader>& shader : shaders)
        if (shader)
            program.addShader(shader.get());
    if (!program.link(EShMsgDefault) || !program.buildReflection()) {
        LogPrinter(effect, passAt, passLabel + " does not link: ").print(program.getInfoLog());
        return false;
    }
    CollectUsage(program, usage);
    return true;
}

} // namespace

std::string encodeProgramUsage(const ProgramUsage& usage)
{
    std::string bytes;
    for (const std::vector<std::string>* names : {&usage.uniforms, &usage.blocks}) {
        appendU32(bytes, static_cast<std::uint32_t>(names->size()));
        for (const std::string& name : *names)
            appendString(bytes, name);
    }
    return bytes;
}

bool decodeProgramUsage(std::string_view bytes, ProgramUsage& usage)
{
    ProgramUsage read;
    for (std::vector<std::string>* names : {&read.uniforms, &read.blocks}) {
        std::uint32_t count = 0;
        if (!readU32(bytes, count) || count > bytes.size() / 4)
            return false;
        names->resize(count);
        for (std::string& name : *names)
            if (!readString(bytes, name))
                return false;
    }
    if (!bytes.empty())
        return false;
    usage = std::move(read);
    return true;
}

bool compileWithGlslang(const std::string (&stages)[StageCount], const EffectDescription& effect,
                        SourceLocation passAt, const std::string& passLabel, ProgramUsage& usage)
{
    // glslang's verdict depends on the stage texts alone (includes are assembled into
    // them) and on glslang itself. Only stages that compiled are stored: a failure is
    // compiled again, so that its messages are printed again.
    CacheKeyBuilder keyBuilder("glslang usage");
    keyBuilder.add(kGlslangVersion);
    for (const std::string& stage : stages)
        keyBuilder.add(stage);
    const CacheKey key = keyBuilder.finish();
    std::string cached;
    if (readCacheEntry(CacheKind::ProgramUsage, key, cached) && decodeProgramUsage(cached, usage))
        return true;
    if (!compileStages(stages, effect, passAt, passLabel, usage))
        return false;
    writeCacheEntry(CacheKind::ProgramUsage, key, encodeProgramUsage(usage));
    return true;
}

} // namespace nvFX::detail
