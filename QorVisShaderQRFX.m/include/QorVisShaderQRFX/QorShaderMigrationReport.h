/// @file
/// What a migration did with one stored material: which GLSL effect it looked for and
/// whether it loaded, and, for every stored value, whether it was carried and, when not,
/// why. Kept by QorShaderQRFXMigration for the tools that report a migration; each line a
/// tool prints from it is what the migration did.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include <string>
#include <vector>

struct QOR_VISSHADERS_API QorShaderMigrationReport
{
    /// What became of one stored value.
    enum class Outcome
    {
        Carried,          ///< copied as stored
        CarriedNarrowed,  ///< a colour into one of fewer components: those past them were dropped
        CarriedWidened,   ///< a colour into one of more components: those past the stored ones kept the GLSL default
        NoImage,          ///< a texture stored without its image: the GLSL effect keeps its own
        NotAValue,        ///< the stored record's type code names no kind of value
        NoEffect,         ///< no GLSL effect was loaded for the material (see the report's twin fields)
        NoParameter,      ///< the GLSL effect has nothing of that name
        NotUserParameter, ///< the GLSL effect declares the name, but not as a user parameter (`why` says how)
        OtherType,        ///< the GLSL effect's parameter is of another kind
        Unpaired,         ///< the stored material holds fewer values than names: this name has none
    };

    struct Value
    {
        std::string name;
        int storedType = 0; ///< the stored value's type code; 0 for an empty place
        int newType = 0;    ///< the GLSL parameter's type code; 0 when there is none
        Outcome outcome = Outcome::NoEffect;
        std::string why;    ///< for NotUserParameter: how the GLSL effect declares the name
    };

    bool shaderGone = false;   ///< the shader was destroyed before the migration ran: nothing was done
    std::string glslfxName;    ///< the ".glslfx" name the stored effect name leads to
    bool found = false;        ///< the file was found on the search paths
    std::string foundPath;     ///< where, as the search built it
    bool loaded = false;       ///< the GLSL effect loaded and gave the shader its parameters
    int storedNames = 0;       ///< names in the stored material
    int storedValues = 0;      ///< values (and empty places) in the stored material
    std::vector<Value> values; ///< one per stored name, in stored order

    /// True when every stored value was carried (narrowed and widened colours count).
    bool CarriedEverything() const;
};
