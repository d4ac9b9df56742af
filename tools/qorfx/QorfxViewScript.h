/// @file
/// A material window driven without a person: a file of actions, one a line, run one a
/// frame: "set NAME VALUE", "technique N|NAME", "reset NAME", "png FILE", "zpk FILE",
/// "touch", "sleep SECONDS" and "quit". Blank lines and lines starting with "#" are skipped.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

class QorfxViewSession;

class QorfxViewScript
{
public:
    enum Outcome
    {
        Continue, ///< the action ran (or a sleep goes on); come back next frame
        Quit,     ///< "quit": the window closes, exit 0
        Failed    ///< an action failed: the window closes, exit 1 with `problem`
    };

    /// Reads and checks every line of `file`. False with `problem` naming the file and
    /// line of the first bad one.
    bool Read(const std::string& file, std::string& problem);
    bool Done() const { return m_next >= m_actions.size(); }
    /// Runs the next action on `session`; `problem` names the script's line on failure.
    Outcome Step(QorfxViewSession& session, std::string& problem);

private:
    struct Action
    {
        int line;
        std::string verb, name, value;
    };

    std::string m_file;
    std::vector<Action> m_actions;
    std::size_t m_next = 0;
    double m_sleepUntil = -1; ///< when the current "sleep" ends, in seconds of the steady clock
};
