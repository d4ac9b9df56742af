// The GLSL effect runtime against the roads it replaces, both measured in every iteration
// so that their ratio comes from one run:
// - EffectLoad: nvFX::loadEffect of the plastic.glslfx sample (parse, glslang compile,
//   link and reflection of its pass) against cgCreateEffect of its twin plastic.cgfx,
//   both as shipped (a GLSL and an ARB assembly technique) and cut to its GLSL technique,
//   the same surface drawn the same way; one Cg context with the GL states registered,
//   and each road's lighting include found on the samples' shaders folder. Cold: the
//   runtime compiles; warm: a cache folder an earlier process filled answers glslang's part.
// - PassSetup: 64 vec4 uniforms set through the interface, then the pass set up (program,
//   changed values pushed) and restored, against glUseProgram, the same 64 glUniform4fv
//   calls on the pass's own GL program and glUseProgram(0). Needs an X display; without
//   one it is skipped with the reason.
// - BufferUpdate: a constant buffer of 64 vec4 members, 16 of them changed each frame
//   through the interface and the pass set up (the block packed and uploaded once) and
//   restored, against glUseProgram, 16 glUniform4fv calls on the 64-uniform program and
//   glUseProgram(0): an update of 16 members should cost no more than 16 calls. The
//   driver's own cost of a buffer's update and bind, with nothing in front, is reported
//   beside it (raw_buffer_ms).
// Before any GL header: the GL 2.0 functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "QorBenchSupport.h"

#include "QorGL/QorGLContext.h"
#include "nvFX/IContainer.h"
#include "nvFX/IPassEx.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniform.h"
#include "nvFX/nvFX.h"

#include <Cg/cgGL.h>
#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using QorBench::Clock;
using QorBench::SecondsSince;

struct ContainerDestroy
{
    void operator()(nvFX::IContainer* container) const { nvFX::IContainer::destroy(container); }
};
using Container = std::unique_ptr<nvFX::IContainer, ContainerDestroy>;

// Cg asks for "/QorLighting.cgh" and opens the file itself: the native path.
void SampleShadersInclude(CGcontext context, const char* name)
{
    cgSetCompilerIncludeFile(context, name, (std::string(QOR_SAMPLES_DIR) + "/shaders" + name).c_str());
}

// nvFX asks for "QorLighting.glslfxh" and reads the file it is handed.
void SampleShadersGlslInclude(const char* name, FILE*& file, const char*&)
{
    file = std::fopen((std::string(QOR_SAMPLES_DIR) + "/shaders/" + name).c_str(), "r");
}

Container LoadGlslfx(const std::string& text)
{
    Container container(nvFX::IContainer::create("plastic"));
    if (container && !nvFX::loadEffect(container.get(), text.c_str()))
        container.reset();
    return container;
}

// cgCreateEffect of `text` in `context`; its time, or a negative one when it failed.
double TimeCgCreateEffect(CGcontext context, const std::string& text)
{
    const Clock::time_point start = Clock::now();
    const CGeffect effect = cgCreateEffect(context, text.c_str(), nullptr);
    const double seconds = SecondsSince(start);
    const bool created = effect && cgGetFirstTechnique(effect);
    if (effect)
        cgDestroyEffect(effect);
    return created ? seconds : -1.0;
}

void EffectLoad(benchmark::State& state, bool warm)
{
    const std::optional<std::string> glslfx = QorBench::Sample("materials/plastic.glslfx");
    const std::optional<std::string> cgfx = QorBench::Sample("materials/plastic.cgfx");
    const std::size_t assemblyTechnique = cgfx ? cgfx->find("technique PlasticARB") : std::string::npos;
    if (!glslfx || assemblyTechnique == std::string::npos) {
        QorBench::Fail(state, "cannot read the plastic samples");
        return;
    }
    const std::string cgfxGlslOnly = cgfx->substr(0, assemblyTechnique);
    const QorBench::CgContext context(cgCreateContext());
    cgGLRegisterStates(context.get());
    cgSetCompilerIncludeCallback(context.get(), SampleShadersInclude);
    nvFX::setIncludeCallback(SampleShadersGlslInclude);
    // glslang builds its tables for a version at its first compile; neither road pays
    // a one-time start-up in the loop. The warm road's first load fills its cache.
    const QorBench::EffectFolder folder;
    if (warm && !nvFX::setCacheFolder((folder.Path() + "/cache").c_str())) {
        QorBench::Fail(state, "cannot make a cache folder");
        return;
    }
    if (!LoadGlslfx(*glslfx)) {
        QorBench::Fail(state, "plastic.glslfx does not load");
        return;
    }
    double cgSampleTotal = 0;
    double cgGlslTotal = 0;
    double nvfxTotal = 0;
    for (auto _ : state) {
        const Clock::time_point nvfxStart = Clock::now();
        Container container = LoadGlslfx(*glslfx);
        const double nvfx = SecondsSince(nvfxStart);
        container.reset();
        const double cgSample = TimeCgCreateEffect(context.get(), *cgfx);
        const double cgGlsl = TimeCgCreateEffect(context.get(), cgfxGlslOnly);
        if (cgSample < 0 || cgGlsl < 0) {
            QorBench::Fail(state, "cgCreateEffect failed on plastic.cgfx");
            return;
        }
        state.SetIterationTime(nvfx);
        nvfxTotal += nvfx;
        cgSampleTotal += cgSample;
        cgGlslTotal += cgGlsl;
    }
    state.counters["cg_sample_ms"] = benchmark::Counter(cgSampleTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["cg_glsl_ms"] = benchmark::Counter(cgGlslTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["ratio_to_sample"] = cgSampleTotal > 0 ? nvfxTotal / cgSampleTotal : 0;
    state.counters["ratio_to_glsl"] = cgGlslTotal > 0 ? nvfxTotal / cgGlslTotal : 0;
    nvFX::setCacheFolder(nullptr);
}

constexpr int kUniforms = 64;
constexpr int kBlock = 10; // frames each road draws in turn

// 64 vec4 uniforms named Value0, ... that the fragment code sums: at effect scope, or
// as the members of one constant buffer.
std::string WideGlslfx(bool inBuffer = false)
{
    std::string text = inBuffer ? "ConstantBuffer Block {\n" : "";
    std::string sum = "vec4(0.0)";
    for (int i = 0; i < kUniforms; ++i) {
        text += "uniform vec4 Value" + std::to_string(i) + ";\n";
        sum += " + Value" + std::to_string(i);
    }
    return text + (inBuffer ? "};\n" : "") + "GLSLShader VS { void main() { gl_Position = gl_Vertex; } }\n"
                  "GLSLShader FS { void main() { gl_FragColor = " + sum + "; } }\n"
                  "Technique Wide { Pass P { VertexProgram = VS; FragmentProgram = FS; } }\n";
}

// Runs `frames` frames of each road in short alternating blocks, so that both see the
// same load of the machine: each frame gives `values` a new value and sets `pass` up and
// restores it, or gives the uniforms at `locations` of `program` the same value with
// glUniform4fv between two glUseProgram. The runtime's road is the measured time, the
// ratio a counter.
void TimeAgainstGL(benchmark::State& state, int frames, nvFX::IPass& pass, const std::vector<nvFX::IUniform*>& values,
                   GLuint program, const std::vector<GLint>& locations)
{
    double rawTotal = 0;
    double nvfxTotal = 0;
    int frame = 0;
    for (auto _ : state) {
        double nvfx = 0;
        double raw = 0;
        for (int block = 0; block < frames / kBlock; ++block) {
            const Clock::time_point nvfxStart = Clock::now();
            for (int f = 0; f < kBlock; ++f, ++frame) {
                for (nvFX::IUniform* value : values)
                    value->setValue4f(static_cast<float>(frame), 0.5f, 0.25f, 1.0f);
                pass.setup();
                pass.restore();
            }
            nvfx += SecondsSince(nvfxStart);
            const Clock::time_point rawStart = Clock::now();
            for (int f = 0; f < kBlock; ++f, ++frame) {
                glUseProgram(program);
                const GLfloat value[4] = {static_cast<float>(frame), 0.5f, 0.25f, 1.0f};
                for (const GLint location : locations)
                    glUniform4fv(location, 1, value);
                glUseProgram(0);
            }
            raw += SecondsSince(rawStart);
        }
        state.SetIterationTime(nvfx);
        nvfxTotal += nvfx;
        rawTotal += raw;
    }
    glFinish();
    if (glGetError() != GL_NO_ERROR)
        QorBench::Fail(state, "GL reported an error");
    state.counters["frames"] = frames;
    state.counters["raw_ms"] = benchmark::Counter(rawTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["ratio_to_raw"] = rawTotal > 0 ? nvfxTotal / rawTotal : 0;
}

void PassSetup(benchmark::State& state, int frames)
{
    QorGLContext gl;
    if (!gl.Open(16, 16)) {
        state.SkipWithError(("no GL context: " + gl.GetError()).c_str());
        return;
    }
    const Container effect = LoadGlslfx(WideGlslfx());
    nvFX::IPass* pass = effect ? effect->findTechnique(0)->getPass(0) : nullptr;
    if (!pass || !pass->validate()) {
        QorBench::Fail(state, "the 64-uniform effect does not load or validate");
        return;
    }
    std::vector<nvFX::IUniform*> uniforms;
    std::vector<GLint> locations;
    const GLuint program = pass->getExInterface()->getProgram();
    for (int i = 0; i < kUniforms; ++i) {
        uniforms.push_back(effect->findUniform(i));
        locations.push_back(glGetUniformLocation(program, uniforms.back()->getName()));
        if (locations.back() < 0) {
            QorBench::Fail(state, "a uniform of the 64 is not active in GL");
            return;
        }
    }
    // Every frame gives every uniform a new value, so both roads push all 64.
    TimeAgainstGL(state, frames, *pass, uniforms, program, locations);
}

// What a buffer's road costs the driver alone: `frames` times the 64-vec4 block written
// whole into a buffer and bound between two glUseProgram, as a renderer updating a
// uniform buffer by hand would: the floor of the library's road. Its time in seconds.
double TimeRawBufferUpdates(int frames, GLuint program)
{
    std::vector<GLfloat> block(static_cast<std::size_t>(kUniforms) * 4, 0.5f);
    const GLsizeiptr bytes = static_cast<GLsizeiptr>(block.size() * sizeof(GLfloat));
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_UNIFORM_BUFFER, buffer);
    glBufferData(GL_UNIFORM_BUFFER, bytes, block.data(), GL_DYNAMIC_DRAW);
    const Clock::time_point start = Clock::now();
    for (int frame = 0; frame < frames; ++frame) {
        glUseProgram(program);
        block[0] = static_cast<float>(frame);
        glBindBuffer(GL_UNIFORM_BUFFER, buffer);
        glBufferSubData(GL_UNIFORM_BUFFER, 0, bytes, block.data());
        glBindBufferBase(GL_UNIFORM_BUFFER, 0, buffer);
        glUseProgram(0);
    }
    const double seconds = SecondsSince(start);
    glDeleteBuffers(1, &buffer);
    return seconds;
}

void BufferUpdate(benchmark::State& state, int frames)
{
    constexpr int kChanged = 16;
    QorGLContext gl;
    if (!gl.Open(16, 16)) {
        state.SkipWithError(("no GL context: " + gl.GetError()).c_str());
        return;
    }
    const Container buffered = LoadGlslfx(WideGlslfx(true));
    const Container wide = LoadGlslfx(WideGlslfx());
    nvFX::IPass* pass = buffered ? buffered->findTechnique(0)->getPass(0) : nullptr;
    nvFX::IPass* widePass = wide ? wide->findTechnique(0)->getPass(0) : nullptr;
    if (!pass || !widePass || !pass->validate() || !widePass->validate()) {
        QorBench::Fail(state, "the 64-member or the 64-uniform effect does not load or validate");
        return;
    }
    // A quarter of the members, spread over the block, take a new value each frame.
    std::vector<nvFX::IUniform*> changed;
    const GLuint program = widePass->getExInterface()->getProgram();
    std::vector<GLint> locations;
    for (int i = 0; i < kUniforms; i += kUniforms / kChanged) {
        changed.push_back(buffered->findBufferUniform(("Value" + std::to_string(i)).c_str()));
        locations.push_back(glGetUniformLocation(program, ("Value" + std::to_string(i)).c_str()));
    }
    TimeAgainstGL(state, frames, *pass, changed, program, locations);
    state.counters["raw_buffer_ms"] = TimeRawBufferUpdates(frames, pass->getExInterface()->getProgram()) * 1e3;
}

} // namespace

int main(int argc, char** argv)
{
    nvFX::setMessageSink([](const char* message) { std::fputs(message, stderr); });
    return QorBench::Main(argc, argv, [](bool smoke) {
        for (const bool warm : {false, true})
            benchmark::RegisterBenchmark(warm ? "EffectLoad/Warm" : "EffectLoad/Cold", EffectLoad, warm)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("PassSetup/64Uniforms", PassSetup, smoke ? 10 : 1000)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark("BufferUpdate/16Of64Members", BufferUpdate, smoke ? 10 : 1000)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    });
}
