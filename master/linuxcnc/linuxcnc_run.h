// One run of wavo_linuxcnc: from the controller's samplers to viewers.
#pragma once

#include <memory>
#include <string>

#include "master/linuxcnc/cycle_reader.h"
#include "master/linuxcnc/hal_samplers.h"
#include "master/linuxcnc/linuxcnc_options.h"
#include "master/linuxcnc/machine.h"
#include "master/publisher.h"

namespace wavo::master {

class LinuxcncRun {
 public:
    explicit LinuxcncRun(LinuxcncOptions options);

    /// Publishes until the end is requested or the controller has gone. Returns the exit status.
    int Run();

 private:
    bool Open();
    bool Attach(const Machine& machine);
    bool Publish(const Machine& machine);
    /// Returns false when the controller has gone.
    bool PublishLines();
    void Tell(const CycleReader::Outcome& outcome);

    const LinuxcncOptions m_options;
    std::unique_ptr<HalSamplers> m_samplers;
    bool m_have_fingerprint = false;
    std::unique_ptr<MasterPublisher> m_publisher;
    bool m_told_apart = false;
    std::string m_error;
};

}  // namespace wavo::master
