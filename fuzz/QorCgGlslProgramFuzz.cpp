// libFuzzer target for the reader of the GLSL the Cg runtime writes (its "//var" map, its
// uniform declarations, its code) and for renaming that code into an effect's names. The
// input is the program text. A text read must give a map whose names rename without
// reading out of bounds; the renamed code keeps every byte that is not a renamed name.

#include "QorCgGlslProgram.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    QorCgGlslProgram program;
    std::string why;
    if (!program.Parse(text, why)) {
        if (why.empty())
            std::abort(); // a refusal always says why
        return 0;
    }
    // Every mapped name becomes a longer one, as the translator's do ("_X" -> "transpose(X)").
    std::map<std::string, std::string> names;
    for (const QorCgGlslVariable& variable : program.Variables())
        if (!variable.glslName.empty())
            names[variable.glslName] = "renamed(" + variable.cgName + ")";
    for (const QorCgGlslUniform& uniform : program.Uniforms())
        names.emplace(uniform.name, "u" + uniform.name);
    const std::string renamed = program.Renamed(names);
    if (names.empty() && renamed != program.Code())
        std::abort(); // nothing to rename: the code comes back as it is
    for (const QorCgGlslUniform& uniform : program.Uniforms())
        (void)program.UsesIdentifier(uniform.name);
    return 0;
}
