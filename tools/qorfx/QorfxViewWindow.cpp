#include "QorfxViewWindow.h"

#include "QorfxViewPanel.h"
#include "QorfxViewScript.h"
#include "QorfxViewSession.h"

#include <GLFW/glfw3.h>
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl2.h>
#include <imgui.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace {

constexpr int kPanelWidth = 400;
constexpr int kMinimumHeight = 640;
// Without a script the window sleeps between events, waking this often to watch files.
constexpr double kWatchSeconds = 0.05;

int Fail(const std::string& message, int code)
{
    std::fprintf(stderr, "qorfx: %s\n", message.c_str());
    return code;
}

// GLFW and ImGui for the lifetime of one window; everything goes in reverse order.
class Window
{
public:
    bool Open(int width, int height, const std::string& title, std::string& problem)
    {
        glfwSetErrorCallback(
            [](int, const char* description) { std::fprintf(stderr, "qorfx: GLFW: %s\n", description); });
        if (!glfwInit()) {
            problem = "cannot open a window: no X display (run under xvfb-run -a, or on a desktop)";
            return false;
        }
        m_glfw = true;
        m_window = glfwCreateWindow(width, height, title.c_str(), nullptr, nullptr);
        if (!m_window) {
            problem = "cannot open a window of " + std::to_string(width) + "x" + std::to_string(height);
            return false;
        }
        glfwMakeContextCurrent(m_window);
        IMGUI_CHECKVERSION();
        ImGui::CreateContext();
        // Nothing is written but what the user asks for: no layout file.
        ImGui::GetIO().IniFilename = nullptr;
        ImGui_ImplGlfw_InitForOpenGL(m_window, true);
        ImGui_ImplOpenGL2_Init();
        m_imgui = true;
        return true;
    }

    ~Window()
    {
        if (m_window)
            glfwMakeContextCurrent(m_window);
        if (!m_textures.empty())
            glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
        if (m_imgui) {
            ImGui_ImplOpenGL2_Shutdown();
            ImGui_ImplGlfw_Shutdown();
            ImGui::DestroyContext();
        }
        if (m_window)
            glfwDestroyWindow(m_window);
        if (m_glfw)
            glfwTerminate();
    }

    GLFWwindow* Get() const { return m_window; }

    // The pictures, as textures of the window's context, when they were drawn again.
    void Upload(const QorfxViewSession& session)
    {
        if (m_drawings == session.Drawings())
            return;
        m_drawings = session.Drawings();
        const auto& slots = session.Slots();
        if (m_textures.size() != slots.size()) {
            m_textures.resize(slots.size());
            glGenTextures(static_cast<GLsizei>(slots.size()), m_textures.data());
        }
        for (std::size_t i = 0; i < slots.size(); ++i) {
            if (slots[i].picture.empty())
                continue;
            glBindTexture(GL_TEXTURE_2D, m_textures[i]);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, session.Options().width, session.Options().height, 0, GL_RGBA,
                         GL_UNSIGNED_BYTE, slots[i].picture.data());
        }
        glBindTexture(GL_TEXTURE_2D, 0);
    }

    // Each picture in its place, a material that was never drawn as a dark red square.
    void Pictures(const QorfxViewSession& session) const
    {
        ImDrawList* draw = ImGui::GetBackgroundDrawList();
        const float width = static_cast<float>(session.Options().width),
                    height = static_cast<float>(session.Options().height);
        const auto& slots = session.Slots();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            const ImVec2 from(width * static_cast<float>(i), 0), to(from.x + width, height);
            if (slots[i].picture.empty()) {
                draw->AddRectFilled(from, to, IM_COL32(70, 12, 16, 255));
                draw->AddText(ImVec2(from.x + 8, height / 2), IM_COL32(220, 60, 60, 255), slots[i].word.c_str());
            } else {
                draw->AddImage(reinterpret_cast<ImTextureID>(static_cast<std::intptr_t>(m_textures[i])), from, to);
            }
            draw->AddText(ImVec2(from.x + 6, height + 4), IM_COL32(220, 220, 220, 255), slots[i].label.c_str());
        }
    }

private:
    GLFWwindow* m_window = nullptr;
    bool m_glfw = false, m_imgui = false;
    std::vector<GLuint> m_textures;
    unsigned long m_drawings = 0;
};

// The mouse on the pictures (not on the panel) orbits with the left button and zooms with the wheel.
void Navigate(QorfxViewSession& session)
{
    const ImGuiIO& io = ImGui::GetIO();
    if (io.WantCaptureMouse)
        return;
    if (ImGui::IsMouseDragging(ImGuiMouseButton_Left, 0) && (io.MouseDelta.x != 0 || io.MouseDelta.y != 0))
        session.Orbit(io.MouseDelta.x, io.MouseDelta.y);
    if (io.MouseWheel != 0)
        session.Zoom(std::pow(0.9f, io.MouseWheel));
}

// P saves the picture and S the document, to the panel's paths (the GLFW back end indexes keys by GLFW code).
void Keys(QorfxViewSession& session, QorfxViewPanelState& state)
{
    if (ImGui::GetIO().WantCaptureKeyboard)
        return;
    if (ImGui::IsKeyPressed(GLFW_KEY_P, false)) {
        const std::string problem = session.SavePicture(state.picturePath);
        state.message = problem.empty() ? std::string("wrote ") + state.picturePath : problem;
    }
    if (ImGui::IsKeyPressed(GLFW_KEY_S, false)) {
        const std::string problem = session.SavePackage(state.packagePath);
        state.message = problem.empty() ? std::string("wrote ") + state.packagePath : problem;
    }
}

} // namespace

int QorfxViewWindow(const std::vector<std::string>& inputs, const QorfxRenderOptions& options,
                    const std::string& scriptFile)
{
    QorfxViewScript script;
    std::string problem;
    if (!scriptFile.empty() && !script.Read(scriptFile, problem))
        return Fail(problem, 1);
    QorfxViewSession session(options);
    if (const int status = session.Open(inputs, problem))
        return Fail(problem, status);
    const int picturesWidth = options.width * static_cast<int>(inputs.size());
    Window window;
    std::string title = "qorfx view";
    for (const QorfxViewSlot& slot : session.Slots())
        title += " " + slot.label;
    if (!window.Open(picturesWidth + kPanelWidth, std::max(options.height + 24, kMinimumHeight), title, problem))
        return Fail(problem, 1);

    QorfxViewPanelState state;
    int status = -1;
    while (status < 0 && !glfwWindowShouldClose(window.Get())) {
        if (scriptFile.empty() || script.Done())
            glfwWaitEventsTimeout(kWatchSeconds);
        else
            glfwPollEvents();
        session.Reload(false);
        switch (script.Step(session, problem)) {
        case QorfxViewScript::Quit:
            status = 0;
            break;
        case QorfxViewScript::Failed:
            status = Fail(problem, 1);
            break;
        case QorfxViewScript::Continue:
            break;
        }
        session.Draw();
        glfwMakeContextCurrent(window.Get());
        window.Upload(session);

        ImGui_ImplOpenGL2_NewFrame();
        ImGui_ImplGlfw_NewFrame();
        ImGui::NewFrame();
        int width = 0, height = 0;
        glfwGetFramebufferSize(window.Get(), &width, &height);
        window.Pictures(session);
        QorfxViewPanel(session, state, static_cast<float>(picturesWidth), kPanelWidth, static_cast<float>(height));
        Navigate(session);
        Keys(session, state);
        // Saving from the panel draws in the offscreen context: the window's comes back.
        glfwMakeContextCurrent(window.Get());
        ImGui::Render();
        glViewport(0, 0, width, height);
        glClearColor(0.05f, 0.05f, 0.06f, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
        glfwSwapBuffers(window.Get());
    }
    return std::max(status, 0);
}
