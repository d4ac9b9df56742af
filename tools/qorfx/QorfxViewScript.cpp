#include "QorfxViewScript.h"

#include "QorfxViewSession.h"

#include "QorSystem/QorFiles.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

// A script is a short list of actions; anything larger is not one.
constexpr std::size_t kMaxScriptBytes = 1u << 20;
constexpr double kMaxSleepSeconds = 600;

double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string Trim(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The words each verb takes after it: 0, 1 or 2 (a name and the rest of the line).
int Arguments(const std::string& verb)
{
    if (verb == "touch" || verb == "quit")
        return 0;
    if (verb == "set")
        return 2;
    if (verb == "technique" || verb == "reset" || verb == "png" || verb == "zpk" || verb == "sleep")
        return 1;
    return -1;
}

} // namespace

bool QorfxViewScript::Read(const std::string& file, std::string& problem)
{
    m_file = file;
    std::string text, why;
    if (!QorReadRegularFile(file.c_str(), text, kMaxScriptBytes, &why)) {
        problem = file + ": cannot read the script (" + why + ")";
        return false;
    }
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        line = Trim(line);
        if (line.empty() || line[0] == '#')
            continue;
        const std::size_t space = line.find_first_of(" \t");
        Action action{number, line.substr(0, space), "", ""};
        const std::string rest = space == std::string::npos ? "" : Trim(line.substr(space));
        const int arguments = Arguments(action.verb);
        const std::string where = file + ":" + std::to_string(number) + ": ";
        if (arguments < 0) {
            problem = where + "unknown action \"" + action.verb +
                      "\"; actions are set, technique, reset, png, zpk, touch, sleep and quit";
            return false;
        }
        if (arguments == 2) {
            const std::size_t split = rest.find_first_of(" \t");
            action.name = rest.substr(0, split);
            action.value = split == std::string::npos ? "" : Trim(rest.substr(split));
        } else {
            action.name = rest;
        }
        const bool counted =
            arguments == 0 ? rest.empty() : !action.name.empty() && (arguments == 1 || !action.value.empty());
        if (!counted) {
            static const char* const usage[] = {"\"%s\" takes nothing after it", "\"%s\" takes one argument",
                                                "\"%s\" takes a name and a value"};
            char message[96];
            std::snprintf(message, sizeof message, usage[arguments], action.verb.c_str());
            problem = where + message;
            return false;
        }
        if (action.verb == "sleep") {
            char* end = nullptr;
            const double seconds = std::strtod(action.name.c_str(), &end);
            if (*end != '\0' || !std::isfinite(seconds) || seconds < 0 || seconds > kMaxSleepSeconds) {
                problem = where + "\"sleep\" takes seconds from 0 to 600, not \"" + action.name + "\"";
                return false;
            }
        }
        m_actions.push_back(action);
    }
    return true;
}

QorfxViewScript::Outcome QorfxViewScript::Step(QorfxViewSession& session, std::string& problem)
{
    if (Done())
        return Continue;
    const Action& action = m_actions[m_next];
    if (action.verb == "sleep") {
        // The frames go on while it sleeps: the window draws and watches its files.
        if (m_sleepUntil < 0)
            m_sleepUntil = Now() + std::strtod(action.name.c_str(), nullptr);
        if (Now() < m_sleepUntil)
            return Continue;
        m_sleepUntil = -1;
    }
    ++m_next;
    if (action.verb == "quit")
        return Quit;
    problem = action.verb == "set"         ? session.Set(action.name, action.value)
              : action.verb == "technique" ? session.ChooseTechnique(action.name)
              : action.verb == "reset"     ? session.Reset(action.name)
              : action.verb == "png"       ? session.SavePicture(action.name)
              : action.verb == "zpk"       ? session.SavePackage(action.name)
              : action.verb == "touch"     ? session.Touch()
                                           : "";
    if (problem.empty())
        return Continue;
    problem = m_file + ":" + std::to_string(action.line) + ": " + problem;
    return Failed;
}
