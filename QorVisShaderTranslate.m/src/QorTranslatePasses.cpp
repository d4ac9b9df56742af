#include "QorTranslatePasses.h"

#include "QorTranslateText.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include <map>
#include <set>

namespace {

struct GlEnum
{
    int value;
    const char* name;
};

const GlEnum kDepthFuncs[] = {{0x0200, "GL_NEVER"},   {0x0201, "GL_LESS"},     {0x0202, "GL_EQUAL"},
                              {0x0203, "GL_LEQUAL"},  {0x0204, "GL_GREATER"},  {0x0205, "GL_NOTEQUAL"},
                              {0x0206, "GL_GEQUAL"},  {0x0207, "GL_ALWAYS"}};
const GlEnum kFaces[] = {{0x0404, "GL_FRONT"}, {0x0405, "GL_BACK"}, {0x0408, "GL_FRONT_AND_BACK"}};
const GlEnum kBlendFactors[] = {{0, "GL_ZERO"},
                                {1, "GL_ONE"},
                                {0x0300, "GL_SRC_COLOR"},
                                {0x0301, "GL_ONE_MINUS_SRC_COLOR"},
                                {0x0302, "GL_SRC_ALPHA"},
                                {0x0303, "GL_ONE_MINUS_SRC_ALPHA"},
                                {0x0304, "GL_DST_ALPHA"},
                                {0x0305, "GL_ONE_MINUS_DST_ALPHA"},
                                {0x0306, "GL_DST_COLOR"},
                                {0x0307, "GL_ONE_MINUS_DST_COLOR"},
                                {0x0308, "GL_SRC_ALPHA_SATURATE"}};
const GlEnum kPolygonModes[] = {{0x1B00, "GL_POINT"}, {0x1B01, "GL_LINE"}, {0x1B02, "GL_FILL"}};

template <std::size_t N>
const char* NameOf(const GlEnum (&table)[N], int value)
{
    for (const GlEnum& entry : table)
        if (entry.value == value)
            return entry.name;
    return nullptr;
}

// Cg's boolean states and the GLSL runtime's.
const std::map<std::string, const char*> kSwitches = {
    {"depthtestenable", "DEPTH_TEST"}, {"cullfaceenable", "CULL_FACE"}, {"blendenable", "BLEND"},
    {"depthmask", "DEPTH_MASK"}};

std::string Lower(const char* text)
{
    std::string lower = text ? text : "";
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

// A name the format reads: Cg names may hold characters GLSL names do not.
std::string Identifier(const char* name, const std::string& fallback)
{
    if (!name || !*name)
        return fallback;
    std::string identifier = name;
    for (char& c : identifier)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_')
            c = '_';
    return std::isdigit(static_cast<unsigned char>(identifier[0])) ? "_" + identifier : identifier;
}

struct Stage
{
    CGdomain domain;
    CGprofile profile;
    const char* state;  // the format's program assignment
    const char* suffix; // of the code piece's name
};

const Stage kStages[] = {{CG_VERTEX_DOMAIN, CG_PROFILE_GLSLV, "VertexProgram", "Vertex"},
                         {CG_GEOMETRY_DOMAIN, CG_PROFILE_GLSLG, "GeometryProgram", "Geometry"},
                         {CG_FRAGMENT_DOMAIN, CG_PROFILE_GLSLF, "FragmentProgram", "Fragment"}};

} // namespace

QorTranslatePasses::QorTranslatePasses(CGcontext context, const QorCgFXSourceLines& lines, QorTranslateScope& scope)
    : m_context(context), m_lines(lines), m_scope(scope)
{
}

std::string QorTranslatePasses::Listing() const
{
    const char* listing = cgGetLastListing(m_context);
    std::string text;
    for (const char* at = listing ? listing : ""; *at;) {
        const char* end = std::strchr(at, '\n');
        const std::string line(at, end ? static_cast<std::size_t>(end - at) : std::strlen(at));
        at = end ? end + 1 : at + line.size();
        if (line.empty())
            continue;
        // The effect's own text has no name in Cg's listing: "(12) : error ...".
        text += (line[0] == '(' ? m_lines.File() : "") + line + "\n";
    }
    return text.empty() ? "the Cg runtime gave no listing\n" : text;
}

std::string QorTranslatePasses::Program(CGpass pass, CGdomain domain, const std::string& stem,
                                        std::vector<Piece>& pieces, std::string& why)
{
    const Stage* stage = nullptr;
    for (const Stage& candidate : kStages)
        if (candidate.domain == domain)
            stage = &candidate;
    const CGprogram program = cgGetPassProgram(pass, domain);
    // Techniques often compile one entry for several profiles (GLSL, ARB): in GLSL they
    // are one program, compiled once, unless the entry takes arguments of its own.
    const char* entry = cgGetProgramString(program, CG_PROGRAM_ENTRY);
    std::string key = std::to_string(domain) + ":" + (entry ? entry : "");
    for (CGparameter parameter = cgGetFirstParameter(program, CG_PROGRAM); parameter && !key.empty();
         parameter = cgGetNextParameter(parameter))
        if (cgGetParameterVariability(parameter) != CG_VARYING)
            key.clear();
    const auto known = key.empty() ? m_compiled.end() : m_compiled.find(key);
    std::string compiled;
    if (known != m_compiled.end()) {
        compiled = known->second;
    } else {
        if (cgGetProgramProfile(program) != stage->profile)
            cgSetProgramProfile(program, stage->profile);
        if (!cgIsProgramCompiled(program))
            cgCompileProgram(program);
        const char* text = cgIsProgramCompiled(program) ? cgGetProgramString(program, CG_COMPILED_PROGRAM) : nullptr;
        if (!text || !*text) {
            why = std::string("its ") + stage->suffix + " program does not compile for " +
                  cgGetProfileString(stage->profile) + ":\n" + Listing();
            return "";
        }
        compiled = text;
        if (!key.empty())
            m_compiled.emplace(key, compiled);
    }
    if (domain == CG_GEOMETRY_DOMAIN && compiled.find("GL_EXT_geometry_shader4") != std::string::npos) {
        why = "its Geometry program: Cg writes geometry programs for GL_EXT_geometry_shader4 (gl_PositionIn, "
              "gl_TexCoordIn), which the GLSL effect runtime's compiler does not take";
        return "";
    }
    auto parsed = std::make_unique<QorCgGlslProgram>();
    std::map<std::string, std::string> names;
    if (!parsed->Parse(compiled, why) || !m_scope.MapProgram(*parsed, names, why)) {
        why = std::string("its ") + stage->suffix + " program: " + why;
        return "";
    }
    const std::string code = parsed->Renamed(names);
    m_programs.emplace_back(std::move(parsed), std::move(names));
    for (const Piece& piece : m_pieces)
        if (piece.code == code)
            return piece.name;
    for (const Piece& piece : pieces)
        if (piece.code == code)
            return piece.name;
    // Two passes of one name in a technique would give two pieces one name.
    std::string name = stem + "_" + stage->suffix;
    const auto taken = [&](const std::string& candidate) {
        const auto named = [&](const Piece& piece) { return piece.name == candidate; };
        return std::any_of(m_pieces.begin(), m_pieces.end(), named) || std::any_of(pieces.begin(), pieces.end(), named);
    };
    for (int suffix = 1; taken(name); ++suffix)
        name = stem + "_" + stage->suffix + std::to_string(suffix);
    pieces.push_back({name, code});
    return pieces.back().name;
}

std::string QorTranslatePasses::States(CGpass pass, const std::string& technique, const std::string& passName,
                                       std::vector<QorCgFXTranslation::DroppedState>& dropped) const
{
    std::string states;
    const auto add = [&states](const std::string& state, const std::string& value) {
        states += "        " + state + " = " + value + ";\n";
    };
    bool offsetSet = false;
    std::vector<std::string> offsetSwitch;
    for (CGstateassignment assignment = cgGetFirstStateAssignment(pass); assignment;
         assignment = cgGetNextStateAssignment(assignment)) {
        const char* stateName = cgGetStateName(cgGetStateAssignmentState(assignment));
        const std::string state = Lower(stateName);
        if (state == "vertexprogram" || state == "fragmentprogram" || state == "geometryprogram")
            continue;
        int count = 0;
        bool translated = false;
        if (kSwitches.count(state)) {
            const CGbool* values = cgGetBoolStateAssignmentValues(assignment, &count);
            if (values && count == 1) {
                add(kSwitches.at(state), values[0] ? "true" : "false");
                translated = true;
            }
        } else if (state == "depthfunc" || state == "cullface") {
            const int* values = cgGetIntStateAssignmentValues(assignment, &count);
            const char* name = !values || count != 1 ? nullptr
                               : state == "depthfunc" ? NameOf(kDepthFuncs, values[0])
                                                      : NameOf(kFaces, values[0]);
            if (name) {
                add(state == "depthfunc" ? "DEPTH_FUNC" : "CULL_FACE_MODE", name);
                translated = true;
            }
        } else if (state == "blendfunc") {
            const int* values = cgGetIntStateAssignmentValues(assignment, &count);
            const char* source = values && count == 2 ? NameOf(kBlendFactors, values[0]) : nullptr;
            const char* destination = values && count == 2 ? NameOf(kBlendFactors, values[1]) : nullptr;
            if (source && destination) {
                add("BLEND_SRC", source);
                add("BLEND_DST", destination);
                translated = true;
            }
        } else if (state == "polygonoffset") {
            const float* values = cgGetFloatStateAssignmentValues(assignment, &count);
            if (values && count == 2) {
                add("POLYGON_OFFSET", "{ " + QorTranslateText::Number(values[0]) + ", " +
                                          QorTranslateText::Number(values[1]) + " }");
                translated = offsetSet = true;
            }
        } else if (state == "polygonoffsetfillenable") {
            // The GLSL runtime's POLYGON_OFFSET turns filling offset on by itself.
            const CGbool* values = cgGetBoolStateAssignmentValues(assignment, &count);
            translated = values && count == 1 && values[0];
            if (translated)
                offsetSwitch.push_back(stateName);
        } else if (state == "polygonmode") {
            const int* values = cgGetIntStateAssignmentValues(assignment, &count);
            const char* mode = values && count == 2 && values[0] == 0x0408 ? NameOf(kPolygonModes, values[1]) : nullptr;
            if (mode) {
                add("POLYGON_MODE", mode);
                translated = true;
            }
        }
        if (!translated)
            dropped.push_back({technique, passName, stateName ? stateName : "", m_lines.Pass(technique, passName, stateName ? stateName : "")});
    }
    if (!offsetSet)
        for (const std::string& state : offsetSwitch)
            dropped.push_back({technique, passName, state, m_lines.Pass(technique, passName, state)});
    return states;
}

bool QorTranslatePasses::Translate(CGtechnique technique, int index, QorCgFXTranslation& report)
{
    QorCgFXTranslation::Technique entry;
    const char* cgName = cgGetTechniqueName(technique);
    entry.name = cgName ? cgName : "";
    std::string name = Identifier(cgName, "Technique" + std::to_string(index));
    if (m_techniqueNames.count(name))
        name += "_" + std::to_string(index);
    std::string text = "Technique " + name, why, annotations;
    const auto leaveOut = [&](const std::string& place, const std::string& reason) {
        entry.why = place + ": technique '" + entry.name + "' is left out: " + reason;
        entry.passes.clear();
        report.techniques.push_back(entry);
        return false;
    };
    if (!QorTranslateText::Annotations(cgGetFirstTechniqueAnnotation(technique), entry.name, false, annotations, why))
        return leaveOut(m_lines.Pass(entry.name), why);
    text += annotations + "\n{\n";
    std::vector<Piece> pieces;
    std::vector<QorCgFXTranslation::DroppedState> dropped;
    int passIndex = 0;
    std::set<std::string> passNames;
    for (CGpass pass = cgGetFirstPass(technique); pass; pass = cgGetNextPass(pass), ++passIndex) {
        const char* cgPass = cgGetPassName(pass);
        const std::string passName = cgPass ? cgPass : "";
        const std::string place = m_lines.Pass(entry.name, passName);
        std::string identifier = Identifier(cgPass, "Pass" + std::to_string(passIndex));
        // The format names each pass of a technique once; Cg lets two share a name.
        if (!passNames.insert(identifier).second)
            passNames.insert(identifier += "_" + std::to_string(passIndex));
        for (const CGdomain domain : {CG_TESSELLATION_CONTROL_DOMAIN, CG_TESSELLATION_EVALUATION_DOMAIN})
            if (cgGetPassProgram(pass, domain))
                return leaveOut(place, "pass '" + passName + "' has a tessellation program, which GLSL effects lack");
        if (!cgGetPassProgram(pass, CG_VERTEX_DOMAIN) && !cgGetPassProgram(pass, CG_FRAGMENT_DOMAIN))
            return leaveOut(place, "pass '" + passName + "' draws without programs (fixed function), which GLSL "
                                                         "effects cannot");
        if (!QorTranslateText::Annotations(cgGetFirstPassAnnotation(pass), passName, false, annotations, why))
            return leaveOut(place, why);
        std::string passText = "    Pass " + identifier + annotations + "\n    {\n";
        for (const Stage& stage : kStages) {
            if (!cgGetPassProgram(pass, stage.domain))
                continue;
            const std::string piece = Program(pass, stage.domain, name + "_" + identifier, pieces, why);
            if (piece.empty())
                return leaveOut(place, "pass '" + passName + "': " + why);
            passText += std::string("        ") + stage.state + " = " + piece + ";\n";
        }
        text += passText + States(pass, entry.name, passName, dropped) + "    }\n";
        entry.passes.push_back(passName);
    }
    text += "}\n";
    entry.translated = true;
    m_techniqueNames.insert(name);
    report.techniques.push_back(entry);
    report.droppedStates.insert(report.droppedStates.end(), dropped.begin(), dropped.end());
    m_pieces.insert(m_pieces.end(), pieces.begin(), pieces.end());
    m_techniques += text;
    return true;
}

std::string QorTranslatePasses::Text() const
{
    std::string text;
    for (const Piece& piece : m_pieces)
        text += "\nGLSLShader " + piece.name + "\n{\n" + piece.code + "}\n";
    return text + "\n" + m_techniques;
}

std::vector<QorTranslateScope::ReadProgram> QorTranslatePasses::Programs() const
{
    std::vector<QorTranslateScope::ReadProgram> programs;
    for (const auto& [program, names] : m_programs)
        programs.push_back({program.get(), &names});
    return programs;
}
