/// @file
/// The techniques of a translated effect: each pass's programs compiled again by the Cg
/// runtime for its GLSL profile and renamed into the effect scope, and its states turned
/// into the GLSL runtime's render states. A technique that cannot be translated is left
/// out whole, with the first reason.
#pragma once

#include "QorCgFXSourceLines.h"
#include "QorCgGlslProgram.h"
#include "QorTranslateScope.h"

#include "QorVisShaderTranslate/QorCgFXTranslation.h"

#include <Cg/cg.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class QorTranslatePasses
{
public:
    QorTranslatePasses(CGcontext context, const QorCgFXSourceLines& lines, QorTranslateScope& scope);

    /// Translates `technique` (the `index`th); its entry and dropped states go to
    /// `report`. False when it is left out.
    bool Translate(CGtechnique technique, int index, QorCgFXTranslation& report);

    /// The code pieces of every translated pass, then the techniques.
    std::string Text() const;
    /// The Cg programs read with the names they were given, for the name checks.
    std::vector<QorTranslateScope::ReadProgram> Programs() const;

private:
    struct Piece
    {
        std::string name, code;
    };

    /// The code piece of `domain` of the pass, added to `pieces` (or one already there
    /// with the same code); empty with `why` when the program does not translate.
    std::string Program(CGpass pass, CGdomain domain, const std::string& stem, std::vector<Piece>& pieces,
                        std::string& why);
    /// The pass's render states; what the GLSL runtime lacks goes to `dropped`.
    std::string States(CGpass pass, const std::string& technique, const std::string& passName,
                       std::vector<QorCgFXTranslation::DroppedState>& dropped) const;
    /// The Cg listing of the last compilation, its places given as "file(line)".
    std::string Listing() const;

    CGcontext m_context;
    const QorCgFXSourceLines& m_lines;
    QorTranslateScope& m_scope;
    std::vector<Piece> m_pieces;
    std::string m_techniques;
    std::set<std::string> m_techniqueNames; // of the techniques translated
    std::vector<std::pair<std::unique_ptr<QorCgGlslProgram>, std::map<std::string, std::string>>> m_programs;
    std::map<std::string, std::string> m_compiled; // Cg's GLSL by domain and entry, for entries without arguments
};
