#include "GlobalBuffers_p.h"

#include "ValueTypes_p.h"

#include <map>
#include <mutex>

namespace nvFX::detail {

namespace {

// GL offers at least 36 uniform-buffer binding points; an effect's own buffers take them
// from 0, the global ones from 24, so that the two never meet in a program.
constexpr unsigned int kFirstGlobalPoint = 24;
constexpr unsigned int kGlobalPoints = 12;

struct Entry
{
    std::weak_ptr<ConstantBuffer> buffer;
    std::string members; ///< the declaration's members, as compared
    std::string place;   ///< where the first declaration stands
    unsigned int bindingPoint = 0;
};

struct Registry
{
    std::mutex mutex;
    std::map<std::string, Entry> entries;
};

Registry& Globals()
{
    static Registry registry;
    return registry;
}

// Two declarations are one buffer when their members have the same types, names and
// sizes in the same order; defaults may differ (the first declaration's stay).
std::string Members(const BufferDescription& description)
{
    std::string members;
    for (const UniformDescription& member : description.members)
        members += std::string(member.type->keyword) + " " + member.name + "[" + std::to_string(member.arraySize) + "];";
    return members;
}

} // namespace

std::unique_ptr<ConstantBuffer> makeConstantBuffer(const BufferDescription& description, unsigned int bindingPoint)
{
    auto buffer = std::make_unique<ConstantBuffer>(description.name, bindingPoint, description.global);
    for (const UniformDescription& member : description.members)
        buffer->addMember(std::make_unique<Uniform>(member, buffer.get(), 0));
    return buffer;
}

std::shared_ptr<ConstantBuffer> shareGlobalBuffer(const BufferDescription& description, const std::string& place,
                                                  std::string& why)
{
    Registry& registry = Globals();
    std::lock_guard<std::mutex> lock(registry.mutex);
    const std::string members = Members(description);
    bool used[kGlobalPoints] = {};
    for (auto entry = registry.entries.begin(); entry != registry.entries.end();) {
        if (entry->second.buffer.expired()) {
            entry = registry.entries.erase(entry);
            continue;
        }
        used[entry->second.bindingPoint - kFirstGlobalPoint] = true;
        ++entry;
    }
    if (auto found = registry.entries.find(description.name); found != registry.entries.end()) {
        // The last holder may have gone since the sweep: then the name is free again.
        if (std::shared_ptr<ConstantBuffer> live = found->second.buffer.lock()) {
            if (found->second.members == members)
                return live;
            why = "global constant buffer '" + description.name + "' is declared with other members at " +
                  found->second.place + ", which an effect still holds";
            return nullptr;
        }
        used[found->second.bindingPoint - kFirstGlobalPoint] = false;
        registry.entries.erase(found);
    }
    unsigned int point = 0;
    while (point < kGlobalPoints && used[point])
        ++point;
    if (point == kGlobalPoints) {
        why = "more than " + std::to_string(kGlobalPoints) + " global constant buffers are alive at once";
        return nullptr;
    }
    std::shared_ptr<ConstantBuffer> buffer = makeConstantBuffer(description, kFirstGlobalPoint + point);
    registry.entries[description.name] = {buffer, members, place, kFirstGlobalPoint + point};
    return buffer;
}

} // namespace nvFX::detail
