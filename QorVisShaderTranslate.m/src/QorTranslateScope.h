/// @file
/// The effect scope of a translated effect: which effect parameters the GLSL effect
/// declares, how (a user-visible uniform with its semantic, default and annotations; a
/// member of the constant buffer of values no user edits; the lights and environment the
/// renderer feeds a GLSL effect), and the names each Cg GLSL program gets for them.
#pragma once

#include "QorCgFXSourceLines.h"
#include "QorCgGlslProgram.h"

#include <Cg/cg.h>

#include <map>
#include <set>
#include <string>
#include <vector>

class QorTranslateScope
{
public:
    /// `visible`: the names of the CgFX effect's user parameters, which the GLSL effect
    /// must show alike; every one is declared even when no program reads it.
    QorTranslateScope(CGeffect effect, const QorCgFXSourceLines& lines, std::set<std::string> visible);

    /// The names that give `program`'s code its effect names back (see
    /// QorCgGlslProgram::Renamed); the parameters it reads join the effect scope. False
    /// with `why` for a uniform the translation has no place for.
    bool MapProgram(const QorCgGlslProgram& program, std::map<std::string, std::string>& names, std::string& why);

    /// Declares the user-visible parameters (whether read or not). False with the
    /// problems in `errors` for a parameter the GLSL effect cannot declare.
    bool DeclareVisible(std::vector<std::string>& errors);
    /// A program read and the names its code was given.
    struct ReadProgram
    {
        const QorCgGlslProgram* program;
        const std::map<std::string, std::string>* names;
    };
    /// Checks that no declared name clashes with GLSL or with a name a program's code
    /// keeps (one it was not given in place of).
    bool CheckNames(const std::vector<ReadProgram>& programs, std::vector<std::string>& errors) const;
    /// The effect-scope text: uniforms in the effect's parameter order, then the
    /// constant buffers.
    std::string Text() const;
    /// What the GLSL effect does differently from the CgFX one, one sentence each.
    const std::vector<std::string>& Notes() const { return m_notes; }
    bool UsesLights() const { return m_lights; }
    bool UsesEnvironment() const { return m_environment; }

private:
    struct Declaration
    {
        int order = 0;            ///< the parameter's place in the effect
        bool hidden = false;      ///< in the constant buffer of values no user edits
        std::string text;         ///< "uniform TYPE NAME[N] : SEMANTIC <...> = ...;"
    };

    /// Declares the effect parameter `parameter` (once). False with `why`.
    bool Declare(CGparameter parameter, std::string& why);
    bool DeclareStructure(CGparameter parameter, int order, std::string& why);
    bool MapLight(const QorCgGlslVariable& variable, std::map<std::string, std::string>& names, std::string& why);
    bool MapEnvironment(const QorCgGlslVariable& variable, std::map<std::string, std::string>& names,
                        std::string& why);
    void Note(const std::string& note);
    int OrderOf(CGparameter parameter) const;

    CGeffect m_effect;
    const QorCgFXSourceLines& m_lines;
    std::set<std::string> m_visible;
    std::map<CGparameter, int> m_order;            // each effect parameter's place
    std::map<std::string, Declaration> m_declared; // by effect-scope name
    std::set<std::string> m_intParameters;         // visible int/bool parameters, declared as float
    std::vector<std::string> m_notes;
    bool m_lights = false;
    bool m_environment = false;
};
