// Loading a GLSL effect: finding its source, loading it into an nvFX container with the
// include callback, and selecting the first technique.
#include "QorVisShaderQRFX/QorNvFXEffect.h"

#include "QorNvFXCacheFolder.h"
#include "QorNvFXCallbacks.h"

#include "QorVisShaderShared/QorShaderSearch.h"

#include "QorDiagnostics/QorDebugOutput.h"

#include "QorSystem/QorFiles.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include <nvFX/IContainer.h>
#include <nvFX/IContainerEx.h>
#include <nvFX/nvFX.h>

#include <cstdio>
#include <new>
#include <unistd.h>

// ".hfx" and ".glslfxh" includes are files, found as named or under "\shaders\" of
// "QorGraphicPath", then of "QorStartupPath". A missing file prints the last path tried,
// without a newline, and answers no file.
void myIncludeCb(const char* name, FILE*& file, const char*& text)
{
    (void)text;
    if (!name || !*name || !QorShaderSearch::IsFileInclude(name, {".hfx", ".glslfxh"}))
        return;
    QorString found;
    QorString lastTried;
    if (QorShaderSearch::FindIncludeFile(name, name, found, &lastTried)) {
        nvFX::printf("Including file %s...\n", name);
        // Only regular files are opened: a FIFO or a device named as an include would
        // keep the load waiting.
        const int fd = QorOpenRegularFile(found.c_str(), QorShaderSearch::kMaxSourceBytes);
        file = fd >= 0 ? fdopen(fd, "r") : nullptr;
        if (fd >= 0 && !file)
            close(fd);
        return;
    }
    // The path is data: a "%" in a folder's name prints as it is.
    nvFX::printf("%s", lastTried.c_str());
    file = nullptr;
}

void myErrorCb(const char* message)
{
    if (!message)
        return;
    OutputDebugStringA(message);
    // Printed as it stands: taken as the format itself, a '%' in a message (a path, a
    // user's text) would make printf read arguments that are not there.
    std::printf("%s", message);
}

QorNvFXShaderParameters* QorNvFXEffect::Load()
{
    QorString path = m_fileName;
    if (!m_fileName.IsEmpty()) {
        if (!QorShaderSearch::FindEffectFile(m_fileName, path) || !QorShaderSearch::ReadSource(path, m_source))
            return nullptr;
    } else if (m_buffer) {
        m_source = QorUnicodeString(m_buffer);
    }
    nvFX::IContainer* container = nvFX::IContainer::create("Test");
    nvFX::setIncludeCallback(myIncludeCb);
    QorNvFXUseCacheFolderOfEnvironment();
    if (!container)
        return nullptr;
    // The load always takes the buffer: an effect given only a file name, whose text
    // went to m_source above, loads nothing; shader objects hand effects their text.
    // Messages name the file the effect came from; the container keeps its own name.
    const char* const source = !m_fileName.IsEmpty() ? path.c_str() : GetName();
    if (!nvFX::loadEffect(container, m_buffer, source)) {
        std::printf("Error>> failed to load the effect\n");
        nvFX::IContainer::destroy(container);
        return nullptr;
    }
    if (!container->getExInterface()) {
        nvFX::IContainer::destroy(container);
        return nullptr;
    }
    // The container of an earlier load stays until the effect goes (see retireContainer).
    retireContainer();
    m_container = container;
    SetPushable(true);
    countLights();
    m_technique = m_container->findTechnique(0);
    m_compiled = 0;
    lookUpNamedUniforms();
    // The default set of the previous load goes: shader objects hold copies of their own.
    auto* parameters = new (std::nothrow) QorNvFXShaderParameters();
    ReplaceParameters(parameters);
    if (!parameters)
        return nullptr;
    bindUniforms(*parameters);
    m_compiled = 1;
    return parameters;
}
