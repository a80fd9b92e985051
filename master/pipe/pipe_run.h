// One run of wavo_pipe: from bytes to lines to viewers.
#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "master/pipe/line_cutter.h"
#include "master/pipe/number_stream.h"
#include "master/pipe/pipe_options.h"
#include "master/publisher.h"
#include "platform/byte_input.h"

namespace wavo::master {

class PipeRun : private LineSink {
 public:
    explicit PipeRun(PipeOptions options);

    /// Publishes until the input ends or a request to end comes. Returns the exit status.
    int Run();

 private:
    using Clock = std::chrono::steady_clock;

    bool OpenInput();
    bool OpenStream();
    void ReadInput();
    bool Take(const platform::InputPart& part);
    bool TakeLines();
    bool EndClient();
    void Wait();
    bool WaitForRoom();
    int End();

    // LineSink
    bool Begin(const std::vector<std::string>& axes, double cycle_time) override;
    bool Line(std::span<const double> values) override;

    // Constant after construction.
    const PipeOptions m_options;

    // State.
    std::unique_ptr<platform::ByteInput> m_input;
    std::unique_ptr<NumberStream> m_stream;  ///< of the standard input, or of the client
    std::unique_ptr<MasterPublisher> m_publisher;
    Reports m_bad_lines;
    Reports m_gaps;
    Reports m_refused;
    LineCutter m_cutter;
    bool m_wait_viewer = false;
    std::string m_error;
};

}  // namespace wavo::master
