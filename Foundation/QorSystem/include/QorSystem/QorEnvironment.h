/// @file
/// Environment variables: the framework's only configuration.
#pragma once

/// The variable's value, or null when it is unset. The pointer stays valid until
/// the variable is next changed.
const char* QorGetEnv(const char* name);

/// Sets a variable for this process; a null value unsets it. Returns 0, or -1 on failure.
int QorSetEnv(const char* name, const char* value);
