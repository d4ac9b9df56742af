/// @file
/// Host settings of the visualization environment.
#pragma once

class QorVisBaseEnv
{
public:
    /// Whether the host runs its newer visualization path; false until the host says so.
    static bool IsNewVisu();
    static void SetNewVisu(bool newVisu);
};
