/// @file
/// One program as the Cg runtime writes it for a GLSL profile: the comment lines that map
/// effect parameters to GLSL names ("//var TYPE NAME : SEMANTIC : GLSLNAME : N : USED"),
/// the uniforms it declares at file scope, and its code. The runtime renames every effect
/// parameter ("Tint" becomes "_Tint", a member "lights[1].LightColor" "_lights11._LightColor1",
/// a matrix rows "_M[0], 4"); the program's code can be given new names for them.
/// Pure text work, no Cg call: the text may be anything.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

struct QorCgGlslVariable
{
    std::string cgType;   ///< "float4", "float4x4", "sampler2D"
    std::string cgName;   ///< as the effect names it: "Tint", "arr[1]", "lights[0].LightPos"
    std::string semantic; ///< "$vin.POSITION" for a varying
    std::string glslName; ///< "_Tint", "_arr[1]", "_lights0._LightPos"; empty when unused
    int rows = 0;         ///< a matrix's rows ("_M[0], 4"); 0 otherwise
    bool used = false;
    bool IsVarying() const { return semantic.compare(0, 1, "$") == 0; }
};

struct QorCgGlslUniform
{
    std::string type; ///< GLSL type or structure name
    std::string name; ///< "_Tint"
    int arraySize = 0;
};

class QorCgGlslProgram
{
public:
    /// Largest text taken: Cg's output of an effect's program is far smaller.
    static constexpr std::size_t kMaxText = 16u << 20;

    /// Reads `text`. False with `why` (naming the line) when it is not a program of the
    /// form the Cg runtime writes.
    bool Parse(const std::string& text, std::string& why);

    const std::vector<QorCgGlslVariable>& Variables() const { return m_variables; }
    const std::vector<QorCgGlslUniform>& Uniforms() const { return m_uniforms; }
    /// The code without its version line and its uniform declarations.
    const std::string& Code() const { return m_code; }

    /// The code with names replaced: a key "_X" replaces the identifier _X, a key
    /// "_X._Y" or "_X[2]._Y" the member access written so (the forms Cg writes for
    /// members of structures and of arrays of them).
    /// Comments are left as they are.
    std::string Renamed(const std::map<std::string, std::string>& names) const;
    /// Whether `identifier` stands in the code as a name (not in a comment).
    bool UsesIdentifier(const std::string& identifier) const;

private:
    bool ParseVariable(const std::string& line, std::size_t number, std::string& why);
    bool ParseUniform(const std::string& line);

    std::vector<QorCgGlslVariable> m_variables;
    std::vector<QorCgGlslUniform> m_uniforms;
    std::string m_code;
};
