// The samplers of the controller that runs on this computer, and our component in its HAL. The only
// place that knows the controller's library.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "master/linuxcnc/cycle_reader.h"

namespace wavo::master {

/// Name of our component, for which `loadusr -W` waits.
inline constexpr char kComponentName[] = "wavo_linuxcnc";

/// Whether a controller runs that this user may read from; `*error` tells why not.
bool ControllerRuns(std::string* error);

class HalSamplers {
 public:
    /// Attaches to these samplers. Null on failure; `*error` tells why: there is no such sampler,
    /// it has a reader already, or its columns are not as many as expected. The controller never
    /// waits for a reader.
    static std::unique_ptr<HalSamplers> Attach(const std::vector<std::size_t>& channels,
                                               const std::vector<std::size_t>& columns,
                                               std::string* error);

    /// Detaches, and takes our component out of the HAL.
    virtual ~HalSamplers() = default;
    HalSamplers(const HalSamplers&) = delete;
    HalSamplers& operator=(const HalSamplers&) = delete;

    /// Tells those who wait for our component that it is at work.
    virtual void SetReady() = 0;

    /// The samplers, in the order of Attach; they live as long as this object.
    [[nodiscard]] virtual std::vector<SampleChannel*> Channels() = 0;

    /// Whether somebody still has the samplers who could write into them.
    [[nodiscard]] virtual bool HaveWriter() const = 0;

 protected:
    HalSamplers() = default;
};

}  // namespace wavo::master
