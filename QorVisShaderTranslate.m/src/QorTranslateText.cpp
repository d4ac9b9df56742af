#include "QorTranslateText.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <vector>

namespace {

// The format's limits (docs/GLSLFX.md): strings up to 64 KiB, brace lists of 256 numbers.
const std::size_t kMaxString = 64u * 1024u;
const int kMaxList = 256;

// GLSL 3.30's keywords, reserved words and the built-in functions and types a uniform's
// name would hide; a uniform of such a name does not compile or breaks the code.
const char* const kGlslWords[] = {
    "attribute", "const", "uniform", "varying", "layout", "centroid", "flat", "smooth", "noperspective", "break",
    "continue", "do", "for", "while", "switch", "case", "default", "if", "else", "in", "out", "inout", "float", "int",
    "void", "bool", "true", "false", "invariant", "discard", "return", "mat2", "mat3", "mat4", "mat2x2", "mat2x3",
    "mat2x4", "mat3x2", "mat3x3", "mat3x4", "mat4x2", "mat4x3", "mat4x4", "vec2", "vec3", "vec4", "ivec2", "ivec3",
    "ivec4", "bvec2", "bvec3", "bvec4", "uint", "uvec2", "uvec3", "uvec4", "lowp", "mediump", "highp", "precision",
    "sampler1D", "sampler2D", "sampler3D", "samplerCube", "sampler1DShadow", "sampler2DShadow", "sampler2DRect",
    "samplerBuffer", "struct", "common", "partition", "active", "asm", "class", "union", "enum", "typedef",
    "template", "this", "packed", "goto", "inline", "noinline", "volatile", "public", "static", "extern", "external",
    "interface", "long", "short", "double", "half", "fixed", "unsigned", "superp", "input", "output", "hvec2",
    "hvec3", "hvec4", "dvec2", "dvec3", "dvec4", "fvec2", "fvec3", "fvec4", "sampler3DRect", "filter", "image1D",
    "image2D", "image3D", "sizeof", "cast", "namespace", "using", "row_major", "patch", "sample", "subroutine",
    "resource", "buffer", "shared", "coherent", "readonly", "writeonly", "precise",
    // Built-in functions.
    "radians", "degrees", "sin", "cos", "tan", "asin", "acos", "atan", "sinh", "cosh", "tanh", "asinh", "acosh",
    "atanh", "pow", "exp", "log", "exp2", "log2", "sqrt", "inversesqrt", "abs", "sign", "floor", "trunc", "round",
    "roundEven", "ceil", "fract", "mod", "modf", "min", "max", "clamp", "mix", "step", "smoothstep", "isnan", "isinf",
    "length", "distance", "dot", "cross", "normalize", "ftransform", "faceforward", "reflect", "refract",
    "matrixCompMult", "outerProduct", "transpose", "determinant", "inverse", "lessThan", "lessThanEqual",
    "greaterThan", "greaterThanEqual", "equal", "notEqual", "any", "all", "not", "texture", "textureSize",
    "textureProj", "textureLod", "textureOffset", "texelFetch", "textureGrad", "texture1D", "texture2D", "texture3D",
    "textureCube", "texture2DRect", "texture1DProj", "texture2DProj", "texture3DProj", "texture2DLod",
    "textureCubeLod", "shadow1D", "shadow2D", "dFdx", "dFdy", "fwidth", "noise1", "noise2", "noise3", "noise4",
    "EmitVertex", "EndPrimitive", "main"};

} // namespace

namespace QorTranslateText {

std::string Number(double value)
{
    // The shortest text that reads back as the same float: Cg's values are floats.
    char text[40];
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, value);
        if (std::strtof(text, nullptr) == static_cast<float>(value))
            break;
    }
    std::string number = text;
    // The format reads "1e10", not "1e+10".
    const std::size_t plus = number.find("e+");
    if (plus != std::string::npos)
        number.erase(plus + 1, 1);
    return number;
}

bool Defaults(CGparameter parameter, int count, bool rowMajor, bool boolean, std::string& text, std::string& why)
{
    text.clear();
    if (count < 1)
        return true;
    std::vector<double> values(static_cast<std::size_t>(count), 0.0);
    const int read = rowMajor ? cgGetParameterValuedr(parameter, count, values.data())
                              : cgGetParameterValuedc(parameter, count, values.data());
    if (read <= 0)
        return true; // no default: the GLSL uniform starts at zero, as the Cg one does
    bool zero = true;
    std::string list;
    for (int at = 0; at < count; ++at) {
        const double value = values[static_cast<std::size_t>(at)];
        if (!std::isfinite(value)) {
            why = std::string("the default of '") + cgGetParameterName(parameter) + "' is not a finite number";
            return false;
        }
        zero = zero && value == 0.0;
        list += (at ? ", " : "") + (boolean ? std::string(value != 0.0 ? "true" : "false") : Number(value));
    }
    if (zero)
        return true;
    text = count == 1 ? " = " + list : " = {" + list + "}";
    return true;
}

namespace {

bool Quoted(const char* value, const std::string& what, std::string& text, std::string& why)
{
    const std::size_t length = std::strlen(value);
    if (length > kMaxString) {
        why = what + " is a string of " + std::to_string(length) + " bytes; the GLSL effect format takes up to " +
              std::to_string(kMaxString);
        return false;
    }
    text = "\"";
    for (const char* at = value; *at; ++at) {
        const unsigned char c = static_cast<unsigned char>(*at);
        if (c == '"' || c == '\\')
            text += std::string("\\") + *at;
        else if (c == '\n')
            text += "\\n";
        else if (c == '\t')
            text += "\\t";
        else if (c < 0x20 || c == 0x7f) {
            why = what + " holds the control character " + std::to_string(c) + ", which the GLSL effect format cannot write";
            return false;
        } else
            text += *at;
    }
    text += "\"";
    return true;
}

template <typename T>
std::string List(const T* values, int count, bool boolean)
{
    std::string list;
    for (int at = 0; at < count; ++at)
        list += (at ? ", " : "") + (boolean ? std::string(values[at] ? "1" : "0") : Number(values[at]));
    return count == 1 ? list : "{" + list + "}";
}

} // namespace

bool Annotations(CGannotation first, const std::string& owner, bool sampler, std::string& text, std::string& why)
{
    text.clear();
    std::string list, file;
    bool hasDefaultFile = false;
    int written = 0;
    for (CGannotation annotation = first; annotation;
         annotation = cgGetNextAnnotation(annotation)) {
        const std::string name = cgGetAnnotationName(annotation);
        const std::string what = "annotation '" + name + "' of '" + owner + "'";
        const CGtype type = cgGetAnnotationType(annotation);
        const CGtype base = cgGetTypeBase(type);
        int count = 0;
        std::string value;
        if (type == CG_STRING) {
            const char* string = cgGetStringAnnotationValue(annotation);
            if (!Quoted(string ? string : "", what, value, why))
                return false;
            if (sampler && file.empty() && (name == "File" || name == "file" || name == "Default"))
                file = value;
        } else if (base == CG_FLOAT || base == CG_HALF || base == CG_FIXED) {
            const float* values = cgGetFloatAnnotationValues(annotation, &count);
            value = values ? List(values, count, false) : "";
        } else if (base == CG_INT) {
            const int* values = cgGetIntAnnotationValues(annotation, &count);
            value = values ? List(values, count, false) : "";
        } else if (base == CG_BOOL) {
            const CGbool* values = cgGetBoolAnnotationValues(annotation, &count);
            value = values ? List(values, count, true) : "";
        }
        if (value.empty())
            continue; // a kind the format has no value for
        if (count > kMaxList) {
            why = what + " holds " + std::to_string(count) + " numbers; the GLSL effect format takes up to " +
                  std::to_string(kMaxList);
            return false;
        }
        hasDefaultFile = hasDefaultFile || name == "defaultFile";
        list += " " + name + " = " + value + ";";
        ++written;
    }
    if (sampler && !file.empty() && !hasDefaultFile) {
        list += " defaultFile = " + file + ";";
        ++written;
    }
    if (written > kMaxList) {
        why = "'" + owner + "' has " + std::to_string(written) +
              " annotations; the GLSL effect format takes up to " + std::to_string(kMaxList);
        return false;
    }
    if (!list.empty())
        text = " <" + list + " >";
    return true;
}

std::string GlslClash(const std::string& name)
{
    static const std::set<std::string> words(std::begin(kGlslWords), std::end(kGlslWords));
    if (words.count(name))
        return "'" + name + "' is a GLSL keyword or built-in";
    if (name.compare(0, 3, "gl_") == 0)
        return "names beginning with \"gl_\" belong to GLSL";
    if (name.find("__") != std::string::npos)
        return "names holding \"__\" are reserved in GLSL";
    return "";
}

} // namespace QorTranslateText
