// What the master tells about its axes: limits by axis name.
//
// The master announces new capabilities with a message; from then on every lookup fetches the
// module anew, once: the flag that says so is never cleared, since the master may rewrite the
// module at any time without a second message, and another master that takes its place has a module
// of its own.
//
// A master that does not answer is not asked again until it was heard of: lookups then give what
// was fetched last, and at most one of them waits.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "link/axis_capabilities.h"
#include "link/master_channel.h"

namespace wavo {

class SlaveGlobalCapabilities : public AxisLimitsSource {
 public:
    /// `channel` is not owned and outlives this object.
    explicit SlaveGlobalCapabilities(MasterChannel& channel) : m_channel(channel) {}

    /// On the master's announcement: takes its window and the number of the module (the viewer's
    /// own window handle) and sets the new-capabilities flag.
    void OnCapabilitiesChanged(platform::WindowHandle master, platform::WindowHandle module_number);

    /// The master from now on: the one that lookups ask.
    void SetMaster(platform::WindowHandle master) { m_master = master; }

    /// Fetches the module first when the flag is set.
    std::optional<AxisCapabilities> FindAxis(const std::string& name) override;

 private:
    void GetNewCapabilitiesFromMaster();
    void LoadModule(const std::string& segment_name);
    void LoadRecords(const void* segment, const std::string& segment_name);

    MasterChannel& m_channel;
    std::map<std::string, AxisCapabilities> m_records;
    platform::WindowHandle m_master = 0;
    platform::WindowHandle m_module_number = 0;
    bool m_new_capabilities = false;
};

}  // namespace wavo
