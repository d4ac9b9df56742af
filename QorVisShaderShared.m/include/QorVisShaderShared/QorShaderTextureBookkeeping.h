/// @file
/// Keeps the shared texture registry (QorShaderManager) in step with the texture values
/// of parameter sets. A texture value holding a file name holds one reference of the
/// texture registered under that name: taken when the name is set, handed back to the
/// destroy list when the name changes or the value goes. An empty name, like a null one,
/// names no texture.
#pragma once

namespace QorShaderTextureBookkeeping {

/// Who changes a texture value; each answers a reload of its own way.
enum class Holder
{
    Value,          ///< a parameter, member or slot: a reload of the same file makes the texture again
    DefaultTexture, ///< the set's default texture: a reload forgets the registered name
};

/// What the value must do after ChangeTexture.
enum class Outcome
{
    Keep,     ///< keep its file name: the same name and no reload
    Reloaded, ///< keep its file name: the texture was made again from its file
    Take,     ///< take `file`; the registry now holds the value's reference for it
};

/// The registry side of a texture value going from `current` to `file` (either may be
/// null): hands the reference of `current` back when the name changes, takes one for a
/// non-null new name, or, with `reload` and the same name, makes the texture again.
Outcome ChangeTexture(const char* current, const char* file, int reload, Holder holder);

/// Hands the caller's reference of the texture registered under `file` back to the
/// destroy list; nothing for a null or unregistered name.
void HandBack(const char* file);

/// Takes one more reference of the texture registered under `file` (creating it);
/// nothing for null.
void Take(const char* file);

} // namespace QorShaderTextureBookkeeping
