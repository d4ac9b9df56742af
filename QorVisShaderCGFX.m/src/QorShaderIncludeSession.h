/// @file
/// The includes of one compilation of a CgFX effect. The Cg compiler asks for each
/// include name it reaches: ".cgh"/".hfx" names are files on the search paths, every
/// other name an in-memory include (QorShaderIncludeManager).
///
/// The compiler asks only once per name and keeps the text, and its preprocessor expands
/// an include cycle forever. So every text handed over has the names in its #include
/// lines made unique to the chain of includes that reached it: each nested inclusion the
/// preprocessor really reaches is asked for, with its chain. Guarded headers and includes
/// in skipped code are never reached and never refused; a chain that keeps growing is a
/// real cycle and gets an #error naming it. A #line in front of each text keeps the
/// compiler's messages on the include's own name.
///
/// The compiler reads an include file by itself when the callback hands it nothing, and
/// it gives every name with a leading "/", so "/etc/x.cgh" and "etc/x.cgh" arrive alike.
/// An effect from a package is confined: its include names are taken relative to the
/// search paths only, a ".." that would leave them is refused, and every refusal hands
/// the compiler an #error so that it never falls back to reading the file itself.
#pragma once

#include <Cg/cg.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

class QorShaderIncludeSession
{
public:
    /// Resolves the includes `context` asks for while this object lives (around one
    /// cgCreateEffect); each include file is read once. `confined`: the effect came from
    /// a package (see above).
    QorShaderIncludeSession(CGcontext context, bool confined);
    ~QorShaderIncludeSession();
    QorShaderIncludeSession(const QorShaderIncludeSession&) = delete;
    QorShaderIncludeSession& operator=(const QorShaderIncludeSession&) = delete;

    /// The Cg compiler's include callback: resolves `name` (as the compiler gives it, with
    /// a leading "/") into the context, or reports why it cannot.
    static void ResolveInclude(CGcontext context, const char* name);

    /// The includes that could not be found, by the names the effect wrote, each once.
    const std::vector<std::string>& GetMissing() const { return m_missing; }

private:
    /// One inclusion the preprocessor reached: the include's name and where it stands.
    struct Inclusion
    {
        std::string name;
        int parent; ///< the inclusion whose text holds it; -1 for the effect source
        int depth;
    };

    void Resolve(const std::string& requested, int parent);
    /// Hands the compiler, for `requested`, a text that only stops the compilation.
    void Stop(const std::string& requested, const std::string& line, const std::string& why);
    /// Hands the compiler `text` for `requested`.
    void Hand(const std::string& requested, const std::string& text);
    /// The include's text, looked up once per compilation; nothing when it cannot be had
    /// (reported once).
    const std::optional<std::string>& Text(const std::string& name);
    /// `text` with each #include name carrying the inclusion `node`.
    std::string MarkIncludes(const std::string& text, int node) const;
    /// "/a.cgh -> /b.cgh -> /a.cgh": the repeating part of the chain ending at `node`.
    std::string Cycle(int node) const;

    CGcontext m_context;
    bool m_confined;
    std::vector<Inclusion> m_inclusions;
    std::map<std::string, std::optional<std::string>> m_texts;
    std::vector<std::string> m_missing;
};
