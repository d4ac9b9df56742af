#include "QorTranslateScope.h"

#include "QorTranslateText.h"

#include "QorVisShaderShared/QorHiddenParameters.h"
#include "QorVisShaderShared/QorSemanticTable.h"

#include <algorithm>
#include <cstdlib>

namespace {

// The light members a GLSL effect receives, by the names the GLSL road feeds them under,
// with their components; a member missing here reads 0.
struct LightFeed
{
    const char* member;
    const char* uniform;
    int components;
};

const LightFeed kLightFeeds[] = {
    {"LightPos", "lightData_LightPos", 4},
    {"LightDir", "lightData_LightDir", 3},
    {"LightColor", "lightData_LightColor", 4},
    {"LightColorSpec", "lightData_LightColorSpec", 4},
    {"LightAmbient", "lightData_LightAmbient", 4},
    {"LightAxialFalloffStart", "lightData_lightData_LightAxialFalloffStart", 1},
    {"LightAxialFalloffEnd", "lightData_lightData_LightAxialFalloffEnd", 1},
    {"LightAxialFalloffConstant", "lightData_lightData_LightAxialFalloffConstant", 1},
    {"LightAxialFalloffLinear", "lightData_lightData_LightAxialFalloffLinear", 1},
    {"LightAxialFalloffQuadratic", "lightData_lightData_LightAxialFalloffQuadratic", 1},
    {"LightRadialInnerCone", "lightData_lightData_LightRadialInnerCone", 1},
    {"LightRadialOuterCone", "lightData_lightData_LightRadialOuterCone", 1},
    {"LightRadialFalloffExponent", "lightData_lightData_LightRadialFalloffExponent", 1},
    {"LightAreaType", "lightData_lightData_LightAreaType", 1},
    {"LightAreaStatus", "lightData_lightData_LightAreaStatus", 1},
    {"LightAreaGeometry", "lightData_lightData_LightAreaGeometry", 1},
};

const char* const kLightArray = "lights";
const char* const kEnvironment = "environment";
const int kMaxLights = 8;

std::string VectorType(const char* scalar, int components)
{
    if (components == 1)
        return scalar;
    const std::string prefix = std::string(scalar) == "float" ? "" : std::string(scalar).substr(0, 1);
    return prefix + "vec" + std::to_string(components);
}

// GLSL's scalar word for a Cg base type; empty for none.
const char* ScalarOf(CGtype base)
{
    switch (base) {
    case CG_FLOAT:
    case CG_HALF:
    case CG_FIXED:
        return "float";
    case CG_INT:
        return "int";
    case CG_BOOL:
        return "bool";
    default:
        return "";
    }
}

const char* SamplerOf(CGtype type)
{
    switch (type) {
    case CG_SAMPLER1D:
        return "sampler1D";
    case CG_SAMPLER2D:
        return "sampler2D";
    case CG_SAMPLER3D:
        return "sampler3D";
    case CG_SAMPLERRECT:
        return "sampler2DRect";
    case CG_SAMPLERCUBE:
        return "samplerCube";
    default:
        return "";
    }
}

// Components of a Cg numeric type written "float3", "float", "int2" (1 to 4).
int ComponentsOf(const std::string& cgType)
{
    const char last = cgType.empty() ? '1' : cgType.back();
    return last >= '2' && last <= '4' ? last - '0' : 1;
}

// `expression` (of `have` float components) as `want` components.
std::string Resize(const std::string& expression, int have, int want)
{
    static const char* const swizzles[] = {"", ".x", ".xy", ".xyz"};
    if (have == want)
        return expression;
    if (want < have)
        return expression + swizzles[want];
    std::string widened = VectorType("float", want) + "(" + expression;
    for (int component = have; component < want; ++component)
        widened += ", 0.0";
    return widened + ")";
}

// A semantic the GLSL road treats otherwise than the CgFX one for a user parameter: it
// binds it to the renderer or keeps it from the user.
bool GlslTakesSemantic(const char* semantic)
{
    return QorBoundSemantic(QorFxQRFX, semantic) || QorHidesSemantic(QorFxQRFX, semantic);
}

// Whether the GLSL road offers a uniform of `glslType` (no array) to the user.
bool GlslUserType(const std::string& glslType)
{
    return glslType == "float" || glslType == "vec2" || glslType == "vec3" || glslType == "vec4" ||
           glslType == "sampler2D" || glslType == "sampler2DRect" || glslType == "samplerCube";
}

} // namespace

QorTranslateScope::QorTranslateScope(CGeffect effect, const QorCgFXSourceLines& lines, std::set<std::string> visible)
    : m_effect(effect), m_lines(lines), m_visible(std::move(visible))
{
    int order = 0;
    for (CGparameter at = cgGetFirstEffectParameter(m_effect); at; at = cgGetNextParameter(at))
        m_order.emplace(at, order++);
}

void QorTranslateScope::Note(const std::string& note)
{
    for (const std::string& known : m_notes)
        if (known == note)
            return;
    m_notes.push_back(note);
}

int QorTranslateScope::OrderOf(CGparameter parameter) const
{
    const auto found = m_order.find(parameter);
    return found != m_order.end() ? found->second : static_cast<int>(m_order.size());
}

bool QorTranslateScope::DeclareStructure(CGparameter parameter, int order, std::string& why)
{
    const std::string name = cgGetParameterName(parameter);
    std::string members;
    for (CGparameter member = cgGetFirstStructParameter(parameter); member; member = cgGetNextParameter(member)) {
        const char* scalar = ScalarOf(cgGetParameterBaseType(member));
        const CGparameterclass kind = cgGetParameterClass(member);
        if (!*scalar || (kind != CG_PARAMETERCLASS_SCALAR && kind != CG_PARAMETERCLASS_VECTOR)) {
            why = m_lines.Parameter(name) + ": structure member '" + cgGetParameterName(member) +
                  "' is of a kind the GLSL effect cannot declare (only numbers and vectors are)";
            return false;
        }
        std::string values;
        const int count = cgGetParameterColumns(member);
        if (!QorTranslateText::Defaults(member, count, false, std::string(scalar) == "bool", values, why))
            return false;
        // A member's name is "Stripe.width": the flattened uniform is "Stripe_width".
        const std::string memberName = cgGetParameterName(member);
        members += "    uniform " + VectorType(scalar, count) + " " + name + "_" +
                   memberName.substr(memberName.rfind('.') + 1) + values + ";\n";
    }
    Declaration& declaration = m_declared[name];
    declaration.order = order;
    declaration.hidden = true;
    declaration.text = members;
    return true;
}

bool QorTranslateScope::Declare(CGparameter parameter, std::string& why)
{
    const std::string name = cgGetParameterName(parameter);
    if (m_declared.count(name))
        return true;
    const int order = OrderOf(parameter);
    const CGparameterclass kind = cgGetParameterClass(parameter);
    if (kind == CG_PARAMETERCLASS_STRUCT)
        return DeclareStructure(parameter, order, why);
    const bool visible = m_visible.count(name) != 0;
    std::string semantic = cgGetParameterSemantic(parameter);
    std::string glslType;
    int arraySize = 0;
    CGparameter element = parameter;
    if (kind == CG_PARAMETERCLASS_ARRAY) {
        arraySize = cgGetArraySize(parameter, 0);
        element = cgGetArrayParameter(parameter, 0);
        if (cgGetArrayDimension(parameter) != 1 || !element || arraySize < 1 || arraySize > 4096) {
            why = m_lines.Parameter(name) + ": array '" + name + "' is not one of 1 to 4096 elements";
            return false;
        }
    }
    const CGparameterclass elementKind = cgGetParameterClass(element);
    const char* scalar = ScalarOf(cgGetParameterBaseType(element));
    const int rows = cgGetParameterRows(element), columns = cgGetParameterColumns(element);
    bool rowsArray = false; // a matrix GLSL effects cannot declare: Cg's rows, as they are
    if (elementKind == CG_PARAMETERCLASS_SAMPLER && arraySize == 0) {
        glslType = SamplerOf(cgGetParameterType(element));
    } else if (*scalar && (elementKind == CG_PARAMETERCLASS_SCALAR || elementKind == CG_PARAMETERCLASS_VECTOR)) {
        glslType = VectorType(scalar, columns);
    } else if (*scalar && elementKind == CG_PARAMETERCLASS_MATRIX && arraySize == 0 &&
               std::string(scalar) == "float") {
        rowsArray = rows != columns;
        glslType = rowsArray ? VectorType("float", columns) : "mat" + std::to_string(rows);
        if (rowsArray)
            arraySize = rows;
    }
    if (glslType.empty()) {
        why = m_lines.Parameter(name) + ": parameter '" + name + "' is a " + cgGetTypeString(cgGetParameterType(parameter)) +
              ", which a GLSL effect cannot declare";
        return false;
    }
    // A user value of the CgFX effect stays one: an int or bool becomes a float (as the
    // CgFX road offers it), a semantic the GLSL road would take it away for goes.
    if (visible && (glslType == "int" || glslType == "bool")) {
        glslType = "float";
        m_intParameters.insert(name);
    }
    if (visible && !semantic.empty() && GlslTakesSemantic(semantic.c_str())) {
        Note("parameter '" + name + "' keeps no semantic \"" + semantic +
             "\": the GLSL road would feed it from the renderer and take it from the user");
        semantic.clear();
    }
    if (const QorSemantic* row = QorFindSemantic(semantic.c_str()))
        if (row->light != QorLightFeed::None)
            Note("parameter '" + name + "' (semantic \"" + semantic +
                 "\"): the GLSL road feeds lights by name, not by semantic; it keeps its default");
    // What the CgFX effect keeps from the user and the GLSL road would offer goes into
    // the constant buffer, whose members are never offered.
    const bool glslOffers = arraySize > 0 || rowsArray ||
                            (GlslUserType(glslType) && !QorBoundSemantic(QorFxQRFX, semantic.c_str()) &&
                             !QorHiddenParameters::IsHidden(QorFxQRFX, semantic.c_str(), name.c_str()));
    const bool hidden = !visible && glslOffers;
    if (hidden && elementKind == CG_PARAMETERCLASS_SAMPLER) {
        why = m_lines.Parameter(name) + ": sampler '" + name +
              "' is no user parameter of the CgFX effect, but would be one of the GLSL effect";
        return false;
    }
    std::string text = "uniform " + glslType + " " + name;
    if (arraySize > 0)
        text += "[" + std::to_string(arraySize) + "]";
    if (!semantic.empty())
        text += " : " + semantic;
    std::string annotations;
    if (!QorTranslateText::Annotations(cgGetFirstParameterAnnotation(parameter), name, elementKind == CG_PARAMETERCLASS_SAMPLER, annotations, why)) {
        why = m_lines.Parameter(name) + ": " + why;
        return false;
    }
    text += annotations;
    if (elementKind != CG_PARAMETERCLASS_SAMPLER) {
        std::string values;
        const int count = rows * columns * (arraySize > 0 && !rowsArray ? arraySize : 1);
        if (!QorTranslateText::Defaults(parameter, count, rowsArray, glslType == "bool" || glslType.compare(0, 4, "bvec") == 0,
                                        values, why)) {
            why = m_lines.Parameter(name) + ": " + why;
            return false;
        }
        text += values;
    }
    Declaration& declaration = m_declared[name];
    declaration.order = order;
    declaration.hidden = hidden;
    declaration.text = (hidden ? "    " : "") + text + ";\n";
    return true;
}

bool QorTranslateScope::DeclareVisible(std::vector<std::string>& errors)
{
    bool declared = true;
    for (CGparameter parameter = cgGetFirstEffectParameter(m_effect); parameter; parameter = cgGetNextParameter(parameter)) {
        if (!m_visible.count(cgGetParameterName(parameter)))
            continue;
        std::string why;
        if (!Declare(parameter, why)) {
            errors.push_back(why);
            declared = false;
        }
    }
    return declared;
}

bool QorTranslateScope::MapLight(const QorCgGlslVariable& variable, std::map<std::string, std::string>& names,
                                 std::string& why)
{
    // "lights[2].LightPos"
    const std::size_t close = variable.cgName.find("].");
    const int slot = std::atoi(variable.cgName.c_str() + std::string(kLightArray).size() + 1);
    if (close == std::string::npos || slot < 0 || slot >= kMaxLights || variable.glslName.find('.') == std::string::npos) {
        why = "light parameter '" + variable.cgName + "' is not a member of one of 8 lights";
        return false;
    }
    const std::string member = variable.cgName.substr(close + 2);
    const int components = ComponentsOf(variable.cgType);
    m_lights = true;
    for (const LightFeed& feed : kLightFeeds)
        if (member == feed.member) {
            names[variable.glslName] =
                Resize(std::string(feed.uniform) + "[" + std::to_string(slot) + "]", feed.components, components);
            return true;
        }
    Note("light member '" + member + "' has no GLSL feed: the translation reads 0 for it");
    names[variable.glslName] = components == 1 ? "0.0" : VectorType("float", components) + "(0.0)";
    return true;
}

bool QorTranslateScope::MapEnvironment(const QorCgGlslVariable& variable, std::map<std::string, std::string>& names,
                                       std::string& why)
{
    const std::string member = variable.cgName.substr(std::string(kEnvironment).size() + 1);
    m_environment = true;
    if (member == "EnvAmbient")
        names[variable.glslName] = Resize("EnvAmbient", 4, ComponentsOf(variable.cgType));
    else if (member == "EnvDiffuse" || member == "EnvSpecular")
        names[variable.glslName] = "EnvironmentMap";
    else {
        why = "environment member '" + member + "' has no GLSL feed";
        return false;
    }
    return true;
}

bool QorTranslateScope::MapProgram(const QorCgGlslProgram& program, std::map<std::string, std::string>& names,
                                   std::string& why)
{
    std::map<std::string, std::string> declaredTypes;
    for (const QorCgGlslUniform& uniform : program.Uniforms())
        declaredTypes[uniform.name] = uniform.type;
    for (const QorCgGlslVariable& variable : program.Variables()) {
        if (variable.IsVarying() || variable.glslName.empty())
            continue;
        const std::string top = variable.cgName.substr(0, variable.cgName.find_first_of(".["));
        const CGparameter parameter = cgGetNamedEffectParameter(m_effect, top.c_str());
        if (!parameter) {
            why = "uniform '" + variable.cgName + "' is no effect parameter (a uniform argument of the entry function?)";
            return false;
        }
        if (top == kLightArray && variable.cgName.size() > top.size() && variable.cgName[top.size()] == '[' &&
            cgGetParameterClass(parameter) == CG_PARAMETERCLASS_ARRAY) {
            if (!MapLight(variable, names, why))
                return false;
            continue;
        }
        if (top == kEnvironment && variable.cgName.size() > top.size() && variable.cgName[top.size()] == '.') {
            if (!MapEnvironment(variable, names, why))
                return false;
            continue;
        }
        if (!Declare(parameter, why))
            return false;
        const CGparameterclass kind = cgGetParameterClass(parameter);
        if (kind == CG_PARAMETERCLASS_STRUCT) {
            // "_st._a" reads the flattened member "st_a".
            const std::size_t dot = variable.cgName.find('.');
            if (dot == std::string::npos || variable.cgName.find_first_of(".[", dot + 1) != std::string::npos) {
                why = "structure parameter '" + variable.cgName + "' is not read member by member";
                return false;
            }
            names[variable.glslName] = top + "_" + variable.cgName.substr(dot + 1);
            continue;
        }
        const std::string key = variable.glslName.substr(0, variable.glslName.find('['));
        if (kind == CG_PARAMETERCLASS_MATRIX && cgGetParameterRows(parameter) == cgGetParameterColumns(parameter))
            names[key] = "transpose(" + top + ")"; // Cg reads the rows: _M[i] is row i
        else if (m_intParameters.count(top))
            names[key] = declaredTypes[key] + "(" + top + ")";
        else
            names[key] = top;
    }
    for (const QorCgGlslUniform& uniform : program.Uniforms()) {
        const auto after = names.lower_bound(uniform.name);
        if (after == names.end() || after->first.compare(0, uniform.name.size(), uniform.name) != 0 ||
            (after->first.size() > uniform.name.size() && after->first[uniform.name.size()] != '.' &&
             after->first[uniform.name.size()] != '[')) {
            why = "uniform '" + uniform.name + "' of Cg's GLSL names no effect parameter the translation maps";
            return false;
        }
    }
    return true;
}

bool QorTranslateScope::CheckNames(const std::vector<ReadProgram>& programs, std::vector<std::string>& errors) const
{
    bool clear = true;
    for (const auto& [name, declaration] : m_declared) {
        std::string clash = QorTranslateText::GlslClash(name);
        // Cg writes "Gain" as "_Gain" and "_Gain" as "__Gain": a name renamed away is free.
        for (const ReadProgram& read : programs)
            if (clash.empty() && read.program->UsesIdentifier(name) && !read.names->count(name))
                clash = "Cg's GLSL uses the name for something else";
        if (clash.empty() && (m_lights || m_environment) &&
            (name.compare(0, 10, "lightData_") == 0 || name == "numLights" || name == "EnvAmbient" ||
             name == "EnvironmentMap"))
            clash = "the GLSL effect feeds its lights and environment under that name";
        if (!clash.empty()) {
            errors.push_back(m_lines.Parameter(name) + ": parameter '" + name + "' cannot keep its name in GLSL: " +
                             clash);
            clear = false;
        }
    }
    return clear;
}

std::string QorTranslateScope::Text() const
{
    std::vector<const std::pair<const std::string, Declaration>*> ordered;
    for (const auto& entry : m_declared)
        ordered.push_back(&entry);
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto* a, const auto* b) { return a->second.order < b->second.order; });
    std::string text, hidden;
    for (const auto* entry : ordered)
        (entry->second.hidden ? hidden : text) += entry->second.text;
    if (!hidden.empty())
        text += "\n// Values the CgFX effect keeps from the user: never offered as parameters.\nConstantBuffer "
                "QorCgFXValues\n{\n" + hidden + "};\n";
    if (m_lights) {
        text += "\n// The renderer's lights, found by name.\nConstantBuffer QorLights\n{\n";
        for (const LightFeed& feed : kLightFeeds)
            text += "    uniform " + VectorType("float", feed.components) + " " + feed.uniform + "[8];\n";
        text += "    uniform int numLights;\n};\n";
    }
    if (m_environment)
        text += "\n// The renderer's environment: a colour and a cube map by semantic, the switch by name.\n"
                "uniform vec4 EnvAmbient : GLOBALAMBIENTCOLOR = {0.1, 0.1, 0.1, 1.0};\n"
                "uniform samplerCube EnvironmentMap : AUTOMATICENVIRONMENTMAP;\n"
                "uniform bool AutomaticEnvironmentMapTracking = false;\n";
    return text;
}
