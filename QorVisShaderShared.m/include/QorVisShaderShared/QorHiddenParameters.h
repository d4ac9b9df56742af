/// @file
/// Which parameters of an effect never become user values, for both back ends: those
/// the back end's renderer feeds by semantic (QorSemanticTable says which for each) and
/// those whose name carries the material's description or a switch the renderer reads.
#pragma once

#include "QorVisShaders/QorFxImplementation.h"

namespace QorHiddenParameters {

/// Whether `name` is "Category", "keywords", "description", "NeedTandB" or
/// "AutomaticEnvironmentMapTracking". A null name is not.
bool IsHiddenName(const char* name);

/// Whether `implementation` keeps a parameter from the user's values: its non-empty
/// semantic is one it hides, or its name is hidden.
bool IsHidden(QorFxImplementation implementation, const char* semantic, const char* name);

} // namespace QorHiddenParameters
