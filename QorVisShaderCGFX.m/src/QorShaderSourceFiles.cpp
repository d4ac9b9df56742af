#include "QorShaderSourceFiles.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorStrings.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace QorShaderSourceFiles {
namespace {

struct TextFree
{
    void operator()(char* text) const { std::free(text); }
};

} // namespace

bool FindUnderStartupPath(const QorString& name, const char* firstDelimiters, const char* laterDelimiters,
                          QorString& found)
{
    const char* startup = QorGetEnv("QorStartupPath");
    if (!startup)
        return false;
    // The tokenizer writes into its string: split a private copy.
    std::unique_ptr<char, TextFree> list(_strdup(startup));
    char* context = nullptr;
    for (char* entry = QorSysStrtok(list.get(), firstDelimiters, &context); entry;
         entry = QorSysStrtok(nullptr, laterDelimiters, &context)) {
        const QorString candidate = QorString(entry) + "\\materials\\shaders\\" + name;
        if (QorFileAccess(candidate.c_str(), 0) == 0) {
            found = candidate;
            return true;
        }
    }
    return false;
}

bool ReadSource(const QorString& path, QorUnicodeString& text)
{
    QorFile file(QorFopen(path.c_str(), "r"));
    if (!file)
        return false;
    text.Empty();
    char chunk[256];
    size_t read;
    while ((read = std::fread(chunk, 1, 255, file.get())) > 0) {
        chunk[read] = '\0';
        text += chunk;
    }
    return true;
}

} // namespace QorShaderSourceFiles
