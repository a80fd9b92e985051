// Where lines of values come from: a master in another process, a recording, a test.
//
// A line holds one value per axis, all of one moment; one line comes per cycle time. Lines come in
// batches: the source says that one is ready, the session takes it and answers it once it is shown.
// One batch is outstanding at most.
//
// Everything happens on one thread. Events are raised from within calls of the source and from the
// event loop; a handler may show a message box, which runs the loop, and call the source again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/fault.h"

namespace wavo {

class AxisLimitsSource;

/// What the lines of a source are.
struct SourceDescription {
    std::vector<std::string> axis_names;  ///< column order of a line; empty while nothing is there
    double cycle_time = 0.0;              ///< seconds per line; 0 before anything was known

    friend bool operator==(const SourceDescription&, const SourceDescription&) = default;
};

/// The lines of a batch, one after another. They are the source's and stay until the next Take.
struct ValueBatch {
    const double* lines = nullptr;
    std::uint64_t count = 0;
    std::size_t axes = 0;  ///< values per line
};

enum class BatchOutcome {
    kTaken,
    kDrained,  ///< its lines had to be thrown away
    kFailed,   ///< it could not be read
};

/// What became of what was there to be read, since the start of the program.
struct SourceCounters {
    std::uint64_t lines_thrown_away = 0;  ///< taken and not accepted
    std::uint64_t lines_left = 0;         ///< not read when a link ended
    std::uint64_t links = 0;              ///< begun
    std::uint64_t links_broken = 0;       ///< ended because the other side cannot be relied on
    std::uint64_t overruns = 0;           ///< reported by the other side

    friend bool operator==(const SourceCounters&, const SourceCounters&) = default;
};

/// What a source tells.
class ValueSourceEvents {
 public:
    virtual ~ValueSourceEvents() = default;

    /// A batch can be taken. True when it was.
    virtual bool BatchReady() = 0;
    /// What the lines are was looked up anew; it may be the same. `by_itself`: nobody has asked for
    /// it, so what is shown stays as far as it can.
    virtual void Described(bool by_itself) = 0;
    /// The text about the source, or whether it can be started, may be another one.
    virtual void StateChanged() = 0;
    /// The next lines do not follow those before. `by_itself`: as above.
    virtual void ValuesBegin(bool by_itself) = 0;
    /// Batches that are announced or not answered are void.
    virtual void Closed() = 0;
    /// The other side has ended the link in order.
    virtual void Ended() = 0;
    /// The other side wants this program to end.
    virtual void Quit() = 0;
    /// A fault that the user must see before the source goes on.
    virtual void ShowFault(const std::string& text) = 0;
    /// The same while a batch is taken: not again what the user has just closed.
    virtual void ShowBatchFault(const std::string& text) = 0;
};

class ValueSource {
 public:
    virtual ~ValueSource() = default;

    /// Who is told, from now on; not owned, outlives the source. To be called before the others.
    virtual void SetEvents(ValueSourceEvents* events) = 0;

    /// Looks for the values and lets them come. A fault, for the user, when there are none.
    virtual MaybeFault Start() = 0;
    /// Whether the source may start by itself as soon as there is somebody again.
    virtual void SetComesBack(bool /*comes_back*/) {}
    /// Lets no more values come until GoOn.
    virtual void Hold() = 0;
    /// False when nothing is there to go on with.
    virtual bool GoOn() = 0;
    /// The end: no more values, no more events.
    virtual void Stop() = 0;

    /// Takes the batch that is ready.
    virtual BatchOutcome Take(ValueBatch& batch) = 0;
    /// Answers the batch that was taken last. False when nobody wants the answer any more.
    virtual bool Answer() = 0;

    [[nodiscard]] virtual const SourceDescription& Description() const = 0;
    /// Limits of the axes.
    [[nodiscard]] virtual AxisLimitsSource& Limits() = 0;
    /// There is somebody who sends values.
    [[nodiscard]] virtual bool IsPresent() const = 0;
    /// Start makes sense: there is nobody, or the link to him broke.
    [[nodiscard]] virtual bool CanStart() const = 0;
    /// One line for the status bar.
    [[nodiscard]] virtual const std::string& StateText() const = 0;
    [[nodiscard]] virtual SourceCounters Counters() const = 0;
};

}  // namespace wavo
