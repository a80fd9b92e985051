// The process' links to shared memory segments that the master publishes.
//
// A segment is mapped once, however many users in this process link its name: a registry, keyed by
// mapped address, counts the links, and the last unlink unmaps. The segments are never created
// here.
//
// Reports go to the error trace. One process-wide lock guards the registry.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "platform/shared_memory.h"

namespace wavo {

/// Links the segment `name` and returns the base address of its mapping, or null.
/// Balanced by MSharedMem_Unlink.
void* MSharedMem_Link(const std::string& name);

/// Drops one link; the last one unmaps and closes. False when there was no link to drop.
bool MSharedMem_Unlink(void* address);

/// Size in bytes of the linked mapping at `address`; 0 when none is registered there.
std::uint64_t MSharedMem_Size(const void* address);

/// What has become of the linked segment at `address`; kRemoved when none is registered there.
platform::SegmentState MSharedMem_State(const void* address);

/// The registry behind the calls above.
class LinkRegistry {
 public:
    struct LinkInfo {
        std::string name;
        platform::MappingHandle handle = 0;
        std::uint64_t size = 0;
        std::int32_t link_count = 0;
    };
    using Map = std::map<const void*, LinkInfo>;

    /// Registers a mapping with a link count of 0. An existing record at the address is
    /// overwritten, unless the name's record is that same one and its data differ: then nothing
    /// changes and the conflict is reported. Returns the record's position, or End() when a null
    /// address or an empty name was refused.
    Map::iterator SetNewLinkInfo(const std::string& name, const void* address,
                                 platform::MappingHandle handle, std::uint64_t size);

    /// Removes the record at the address. False when there is none.
    bool DeleteLinkInfo(const void* address);

    Map::iterator FindByAddress(const void* address) { return m_links.find(address); }
    /// The first record of that name in address order.
    Map::iterator FindByName(const std::string& name);
    Map::iterator End() { return m_links.end(); }

 private:
    Map m_links;
};

}  // namespace wavo
