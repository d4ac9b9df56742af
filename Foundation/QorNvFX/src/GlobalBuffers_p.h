/// @file
/// The constant buffers effects declare `global`: one per name in the process, shared by
/// every loaded effect that declares it with the same members. Private to QorNvFX.
#pragma once

#include "ConstantBuffer_p.h"
#include "EffectDescription_p.h"

#include <memory>
#include <string>

namespace nvFX::detail {

/// The live buffer `description` declares, or a new one made from it (count 1 more for
/// each container that holds it; the registry holds none, so the last container to go
/// takes it). Null with `why` when the live one of that name has other members, or when
/// every binding point kept for global buffers is taken. `place` is where `description`
/// stands ("glow.glslfx(12)"), kept with a new buffer for the messages of later ones.
/// Safe to call from any thread.
std::shared_ptr<ConstantBuffer> shareGlobalBuffer(const BufferDescription& description, const std::string& place,
                                                  std::string& why);

/// Makes the buffer `description` declares, members and all, on `bindingPoint`.
std::unique_ptr<ConstantBuffer> makeConstantBuffer(const BufferDescription& description, unsigned int bindingPoint);

} // namespace nvFX::detail
