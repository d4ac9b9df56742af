#include "QorfxMaterial.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorfxDocument.h"
#include "QorfxIncludes.h"

#include "QorVisShaders/QorShaderFiles.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

QorfxStdoutSilencer::QorfxStdoutSilencer()
{
    std::fflush(stdout);
    m_saved = dup(STDOUT_FILENO);
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) {
        dup2(null, STDOUT_FILENO);
        close(null);
    }
}

QorfxStdoutSilencer::~QorfxStdoutSilencer()
{
    std::fflush(stdout);
    if (m_saved >= 0) {
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
    }
}

void QorfxAddSearchFolders(const std::string& effectPath)
{
    const fs::path folder = fs::absolute(fs::path(effectPath)).parent_path();
    std::string list = QorGetEnv("QorGraphicPath") ? QorGetEnv("QorGraphicPath") : "";
    for (const fs::path& entry : {folder, folder.parent_path()})
        // A material loaded again (a window's reload) adds nothing twice.
        if ((";" + list + ";").find(";" + entry.string() + ";") == std::string::npos)
            list += (list.empty() ? "" : ";") + entry.string();
    QorSetEnv("QorGraphicPath", list.c_str());
}

bool QorfxAddPathFolders(const std::vector<std::string>& folders, std::string& why)
{
    std::string list;
    for (const std::string& folder : folders) {
        std::error_code failed;
        if (!fs::is_directory(folder, failed)) {
            why = "--path " + folder + ": no such folder";
            return false;
        }
        const fs::path absolute = fs::absolute(folder, failed).lexically_normal();
        list += (list.empty() ? "" : ";") + absolute.string();
        if (absolute.filename() == "shaders")
            list += ";" + absolute.parent_path().string();
    }
    const char* known = QorGetEnv("QorGraphicPath");
    if (known && *known)
        list += (list.empty() ? "" : ";") + std::string(known);
    QorSetEnv("QorGraphicPath", list.c_str());
    return true;
}

namespace {

// A folder of the tool's own, removed with everything in it when the process ends.
struct PrivateFolder
{
    ~PrivateFolder()
    {
        std::error_code ignored;
        if (!path.empty())
            fs::remove_all(path, ignored);
    }
    std::string path;
};

} // namespace

std::string QorfxPrivateFolder()
{
    static PrivateFolder folder;
    if (!folder.path.empty())
        return folder.path;
    std::error_code failed;
    std::string pattern =
        (fs::temp_directory_path(failed) / ("qorfx-" + std::to_string(getpid()) + "-XXXXXX")).string();
    if (!failed && mkdtemp(pattern.data()))
        folder.path = pattern;
    return folder.path;
}

namespace {

// The error file and the package texture cache go to "QorTemp"; give the library a
// private one when none is set, so the tool writes nothing into the user's folders.
void EnsureTempFolder()
{
    if (QorGetEnv("QorTemp"))
        return;
    const std::string folder = QorfxPrivateFolder();
    if (!folder.empty())
        QorSetEnv("QorTemp", folder.c_str());
}

// The process a temporary folder "qorfx-<pid>-XXXXXX" was made by; 0 for other names.
pid_t MakerOf(const std::string& name)
{
    unsigned long pid = 0;
    int end = 0;
    if (std::sscanf(name.c_str(), "qorfx-%lu-%n", &pid, &end) != 1 || end == 0 || name.size() != end + 6u)
        return 0;
    return static_cast<pid_t>(pid);
}

std::vector<float> ParseFloats(const std::string& text)
{
    std::vector<float> values;
    std::istringstream in(text);
    std::string item;
    while (std::getline(in, item, ',')) {
        char* end = nullptr;
        const float value = std::strtof(item.c_str(), &end);
        if (item.empty() || *end != '\0')
            return {};
        values.push_back(value);
    }
    return values;
}

// A shader of the implementation the file's extension names, so that CgFX and GLSL
// effects load side by side in one process; a package (or another extension) gets the
// process's own implementation (ShaderVersion).
QorIShader* NewShader(const std::string& path, QorfxLoadProblem& problem)
{
    const fs::path extension = fs::path(path).extension();
    QorIShader* shader = extension == ".glslfx" ? QorShaderManager::CreateShader(QorFxQRFX)
                         : extension == ".cgfx" ? QorShaderManager::CreateShader(QorFxCgFX)
                                                : QorShaderManager::CreateShader();
    if (!shader)
        problem = {"version", path + ": this process's effect implementation (ShaderVersion) makes no shader objects",
                   ""};
    return shader;
}

// The effect is named to the library as a renderer of the framework names it: as given,
// with "\" between folders. Packages keep that name, and migration finds the GLSL twin
// of a stored name by what follows its last "\", along the search paths.
std::string FrameworkName(std::string path)
{
    for (char& c : path)
        if (c == '/')
            c = '\\';
    return path;
}

// The folders the library searches an effect name in, in its order: each "QorStartupPath"
// entry's "materials/shaders", then each "QorGraphicPath" entry and its "shaders".
std::vector<fs::path> SearchFolders()
{
    std::vector<fs::path> folders;
    const auto entries = [](const char* variable, const char* separators) {
        std::vector<std::string> found;
        const std::string list = QorGetEnv(variable) ? QorGetEnv(variable) : "";
        for (std::size_t start = 0, end; start <= list.size(); start = end + 1) {
            end = std::min(list.find_first_of(separators, start), list.size());
            if (end > start)
                found.push_back(QorNativePath(list.substr(start, end - start).c_str()));
        }
        return found;
    };
    for (const std::string& entry : entries("QorStartupPath", "; "))
        folders.push_back(fs::path(entry) / "materials" / "shaders");
    for (const std::string& entry : entries("QorGraphicPath", ";")) {
        folders.push_back(entry);
        folders.push_back(fs::path(entry) / "shaders");
    }
    return folders;
}

// The name a reader's search finds `file` under: relative to the first search folder that
// holds it, with "\" between folders, or its file name.
std::string SearchName(const fs::path& file)
{
    std::error_code failed;
    const fs::path canonical = fs::weakly_canonical(file, failed);
    for (const fs::path& folder : SearchFolders()) {
        const fs::path root = fs::weakly_canonical(fs::absolute(folder, failed), failed);
        const fs::path relative = canonical.lexically_relative(root);
        if (!failed && !relative.empty() && relative != "." && *relative.begin() != "..")
            return FrameworkName(relative.string());
    }
    return file.filename().string();
}

} // namespace

void QorfxRemoveStaleTempFolders()
{
    std::error_code failed;
    const fs::path temp = fs::temp_directory_path(failed);
    for (fs::directory_iterator entry(temp, failed), end; !failed && entry != end; entry.increment(failed)) {
        const pid_t maker = MakerOf(entry->path().filename().string());
        struct stat info;
        // Only our own folders (not links), and only when their process is gone.
        if (maker <= 0 || lstat(entry->path().c_str(), &info) != 0 || !S_ISDIR(info.st_mode) ||
            info.st_uid != getuid() || kill(maker, 0) == 0 || errno != ESRCH)
            continue;
        std::error_code ignored;
        fs::remove_all(entry->path(), ignored);
    }
}

bool QorfxMaterial::Compile(const std::string& path, QorfxLoadProblem& problem, const std::function<bool()>& attach)
{
    EnsureTempFolder();
    bool generated = false;
    {
        QorfxStdoutSilencer silence;
        m_backend = QorfxMakeBackend(*m_shader, attach, generated);
    }
    if (!m_shader->HasEffect()) {
        problem = {"missing", path + ": cannot read the file", ""};
        return false;
    }
    if (!m_backend) {
        problem = {"backend", path + ": this tool has no back end for the effect's implementation", ""};
        return false;
    }
    if (!generated) {
        problem = {"compile", path + ": the effect does not compile",
                   m_backend->CompileErrors() + QorfxIncludeAdvice(m_backend->MissingIncludes())};
        return false;
    }
    return true;
}

std::unique_ptr<QorfxMaterial> QorfxMaterial::Load(const std::string& path, QorfxLoadProblem& problem)
{
    return Load(path, problem, false);
}

std::unique_ptr<QorfxMaterial> QorfxMaterial::LoadForDocument(const std::string& path, QorfxLoadProblem& problem)
{
    return Load(path, problem, true);
}

std::unique_ptr<QorfxMaterial> QorfxMaterial::Load(const std::string& path, QorfxLoadProblem& problem,
                                                   bool searchName)
{
    // The library's own search decides where the file is, so the tool finds what a renderer would.
    QorString found;
    if (!QorFindShaderFile(QorString(path.c_str()), found)) {
        problem = {"missing", path + ": no such effect file, as named or along QorStartupPath and QorGraphicPath", ""};
        return nullptr;
    }
    std::string why;
    if (!QorIsRegularFile(found.c_str(), kQorfxMaxSourceBytes, &why)) {
        problem = {"missing", path + ": cannot read the file (" + why + ")", ""};
        return nullptr;
    }
    QorIShader* shader = NewShader(path, problem);
    if (!shader)
        return nullptr;
    const fs::path file = fs::absolute(fs::path(QorNativePath(found.c_str())));
    auto material = std::make_unique<QorfxMaterial>(shader, fs::path(path).stem().string());
    material->m_file = file.string();
    material->m_folder = file.parent_path().string() + "/";
    QorfxAddSearchFolders(material->m_file);
    const bool compiled = material->Compile(path, problem, [&] {
        if (searchName) {
            // Read here and handed over under the search name: the library's own search
            // of that name could meet another file of it first (in the working folder).
            std::string text;
            if (!QorReadRegularFile(file.c_str(), text, kQorfxMaxSourceBytes))
                return false;
            shader->SetBuffer(text.c_str(), SearchName(file).c_str());
        } else {
            shader->SetFileName(QorString(FrameworkName(path).c_str()));
        }
        return shader->HasEffect() && shader->GenerateParameters();
    });
    return compiled ? std::move(material) : nullptr;
}

std::unique_ptr<QorfxMaterial> QorfxMaterial::LoadPackage(const std::string& path, QorfxLoadProblem& problem)
{
    QorfxDocument document;
    if (!document.Read(path, QorShaderManager::GetShaderVersion(), problem))
        return nullptr;
    problem = document.Problem(0);
    return document.TakeMaterial(0);
}

std::unique_ptr<QorfxMaterial> QorfxMaterial::Adopt(QorIShader* shader, std::string name, const std::string& file,
                                                    QorfxLoadProblem& problem, const std::function<bool()>& attach)
{
    auto material = std::make_unique<QorfxMaterial>(shader, std::move(name));
    material->m_file = file;
    return material->Compile(file, problem, attach) ? std::move(material) : nullptr;
}

std::unique_ptr<QorfxMaterial> QorfxMaterial::LoadAny(const std::string& path, QorfxLoadProblem& problem)
{
    return fs::path(path).extension() == ".zpk" ? LoadPackage(path, problem) : Load(path, problem);
}

QorfxMaterial::QorfxMaterial(QorIShader* shader, std::string name) : m_shader(shader), m_name(std::move(name)) {}

QorfxMaterial::~QorfxMaterial()
{
    m_shader->Destroy();
}

std::string QorfxMaterial::Set(const std::string& name, const std::string& value)
{
    const int index = m_shader->GetParameterIndex(name.c_str());
    if (index < 1)
        return "no parameter \"" + name + "\" in " + m_name;
    const int type = m_shader->GetParameterType(index);
    if (type == QorValueTexture)
        return m_shader->SetParameterString(index, value.c_str()) == 0 ? "" : "cannot set \"" + name + "\"";
    const std::vector<float> numbers = ParseFloats(value);
    if (type == QorValueFloat) {
        if (numbers.size() != 1)
            return "\"" + name + "\" takes one number, not \"" + value + "\"";
        m_shader->SetParameterFloat(index, numbers[0]);
        return "";
    }
    const size_t components = static_cast<size_t>(QorColorComponentCount(type));
    if (numbers.size() < std::min<size_t>(components, 3) || numbers.size() > components)
        return "\"" + name + "\" takes " + std::to_string(components) + " numbers separated by commas, not \"" +
               value + "\"";
    float rgba[4] = {0, 0, 0, 1};
    for (size_t i = 0; i < numbers.size(); ++i)
        rgba[i] = numbers[i];
    m_shader->SetParameterColor(index, rgba[0], rgba[1], rgba[2], rgba[3]);
    return "";
}
