/// @file
/// Where things stand in an effect's own text, for messages in "file(line)" form: the
/// Cg runtime reflects techniques, passes, states and parameters, but not their lines.
/// Found by their words in the text (comments skipped); something declared in an
/// include is not found, and the place is then the file alone.
#pragma once

#include <cstddef>
#include <string>

class QorCgFXSourceLines
{
public:
    QorCgFXSourceLines(std::string file, const std::string& source);

    /// "file(line)" of technique `technique`; of its pass `pass` when given; of the state
    /// `state` in that pass when given. The file alone when not found.
    std::string Pass(const std::string& technique, const std::string& pass = "", const std::string& state = "") const;
    /// "file(line)" of the first line naming `parameter` as a word; the file alone when none does.
    std::string Parameter(const std::string& parameter) const;
    const std::string& File() const { return m_file; }

private:
    /// Position of the first word `word` at or after `from` (optionally followed by
    /// `next` as the following word); npos when none.
    std::size_t Find(const std::string& word, std::size_t from, const std::string& next = "") const;
    std::string Place(std::size_t position) const;

    std::string m_file;
    std::string m_text; // the source with comments blanked, lines kept
};
