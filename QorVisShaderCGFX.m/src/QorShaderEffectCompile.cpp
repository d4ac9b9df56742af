// Compilation of a CgFX effect: finding the source, creating the Cg context and effect,
// reporting compile errors to the error file, and choosing and validating techniques.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorVisShaderCGFX/QorCgTechniqueValidation.h"

#include "QorCgTokenLimit.h"
#include "QorGLSLSamplerUnits.h"
#include "QorShaderIncludeSession.h"
#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorShaderSearch.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"

#include <Cg/cgGL.h>

#include <cstdio>
#include <dlfcn.h>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

namespace {

// Compile failures are reported by GenerateShader itself; the runtime's error state
// only needs draining so it does not leak into the next call.
void DrainCgErrors()
{
    while (cgGetError() != CG_NO_ERROR) {
    }
}

} // namespace

QorShaderParameters* QorShaderEffect::GenerateShader()
{
    QorString path = m_fileName;
    if (!m_fileName.IsEmpty() && !QorShaderSearch::FindEffectFile(m_fileName, path))
        return nullptr;
    if (m_effect) {
        cgDestroyEffect(m_effect);
        m_effect = nullptr;
        Init();
    }
    if (!m_fileName.IsEmpty()) {
        if (!QorShaderSearch::ReadSource(path, m_source))
            return nullptr;
    } else if (m_buffer) {
        m_source = QorUnicodeString(m_buffer);
    }
    return createEffectAndBindSemantics();
}

QorShaderParameters* QorShaderEffect::createEffectAndBindSemantics()
{
    m_effect = nullptr;
    SetPushable(false);
    std::size_t line = 0, length = 0;
    if (QorFindOverlongCgToken(m_source.c_str(), line, length)) {
        // Refused before the runtime sees it: it would write past its own buffer.
        const std::string error = "(" + std::to_string(line) + ") : error: a token or literal of " +
                                  std::to_string(length) + " characters is longer than the Cg runtime takes (" +
                                  std::to_string(kQorCgMaxTokenLength) + ")";
        writeErrorFile(error.c_str(), nullptr);
        return nullptr;
    }
    if (!m_context) {
        // cgGLRegisterStates loads libGL.so.1 and unloads it again when nothing else holds
        // it, about 10 ms per context; holding it for the process makes that free.
        static void* const keepGL = dlopen("libGL.so.1", RTLD_LAZY | RTLD_GLOBAL);
        (void)keepGL;
        m_context = QorCgContextHolder(cgCreateContext());
        cgGLRegisterStates(m_context.Get());
        cgSetAutoCompile(m_context.Get(), CG_COMPILE_MANUAL);
        cgSetErrorCallback(DrainCgErrors);
        cgSetCompilerIncludeCallback(m_context.Get(), QorShaderIncludeSession::ResolveInclude);
    }
    m_compileErrors = QorString("");
    {
        QorShaderIncludeSession includes(m_context.Get(), m_includesConfined);
        m_effect = cgCreateEffect(m_context.Get(), m_source.c_str(), nullptr);
        m_missingIncludes.clear();
        for (const std::string& name : includes.GetMissing())
            m_missingIncludes.emplace_back(name.c_str());
    }
    if (!m_effect) {
        writeErrorFile(cgGetErrorString(cgGetError()), cgGetLastListing(m_context.Get()));
        return nullptr;
    }
    SetPushable(true);

    const bool resolved = resolveInterfacesAndArrays();
    if (m_techniqueIndex == 0)
        m_technique = cgGetFirstTechnique(m_effect);
    else
        setTechnique(m_techniqueIndex);
    m_bound = 0;
    if (!resolved) {
        m_lightCount = 0;
        std::fill(std::begin(m_lights), std::end(m_lights), QorShaderLight{});
    }
    ForgetFeeds(QorFeedAmbientCoeff, QorFeedDiffuse);
    auto* parameters = new (std::nothrow) QorShaderParameters();
    ReplaceParameters(parameters);
    if (!parameters)
        return nullptr;
    bindSemantics();
    buildParameterSet(*parameters);
    m_bound = 1;
    return parameters;
}

void QorShaderEffect::writeErrorFile(const char* message, const char* listing)
{
    m_compileErrors = QorString(message ? message : "") + "\n";
    if (listing)
        m_compileErrors += QorString(listing) + "\n";
    const char* temp = QorGetEnv("QorTemp");
    if (!temp)
        return;
    const QorString path = QorString(temp) + "\\QorCGFX_Errors.txt";
    if (QorFile file{QorFopen(path.c_str(), "w")})
        std::fputs(m_compileErrors.c_str(), file.get());
    // The path is data: a "%" in the temporary folder's name must print as it is.
    std::fputs(path.c_str(), stdout);
    std::fflush(stdout);
}

void QorShaderEffect::getTechnique(int* index)
{
    if (!index)
        return;
    *index = 0;
    if (!m_effect)
        return;
    for (CGtechnique technique = cgGetFirstTechnique(m_effect); technique && technique != m_technique;
         technique = cgGetNextTechnique(technique))
        ++*index;
}

void QorShaderEffect::setTechnique(int index)
{
    if (!m_effect)
        return;
    CGtechnique technique = cgGetFirstTechnique(m_effect);
    if (index < 1) {
        if (technique)
            m_technique = technique;
        m_techniqueIndex = index;
        return;
    }
    for (int step = 0; step < index && technique; ++step)
        technique = cgGetNextTechnique(technique);
    if (!technique)
        return;
    m_technique = technique;
    m_techniqueIndex = index;
}

void QorShaderEffect::setTechniqueByName(const char* name)
{
    if (!m_effect || !name)
        return;
    const CGtechnique named = cgGetNamedTechnique(m_effect, name);
    if (!named)
        return;
    m_technique = named;
    m_techniqueIndex = 0;
    for (CGtechnique technique = cgGetFirstTechnique(m_effect); technique && technique != named;
         technique = cgGetNextTechnique(technique))
        ++m_techniqueIndex;
}

int QorShaderEffect::ValidateTechnique()
{
    return validateFromCurrentTechnique(true);
}

int QorShaderEffect::ValidateShaderEffect()
{
    return validateFromCurrentTechnique(false);
}

int QorShaderEffect::validateFromCurrentTechnique(bool fetchErrorText)
{
    if (!m_technique)
        return 0;
    // Walks on from the current technique to the first that validates in the current
    // GL context; the stored technique index is not updated by this walk.
    while (!QorCgValidateTechnique(m_technique)) {
        if (fetchErrorText)
            cgGetErrorString(cgGetError());
        m_technique = cgGetNextTechnique(m_technique);
        if (!m_technique)
            return 0;
    }
    QorSeparateUnusedSamplerUnits(m_technique);
    return 1;
}

int QorShaderEffect::ForceCompile()
{
    if (!m_context)
        return 1;
    for (CGprogram program = cgGetFirstProgram(m_context.Get()); program; program = cgGetNextProgram(program))
        if (!cgIsProgramCompiled(program))
            cgCompileProgram(program);
    return 1;
}
