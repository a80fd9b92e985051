// The graphs on the screen, as far as a session needs to know of them.
#pragma once

#include <cstdint>

namespace wavo {

class WavoGraph;

class ShownGraphs {
 public:
    virtual ~ShownGraphs() = default;

    /// The definition that a graph is shown with; null for one that is not on the screen.
    [[nodiscard]] virtual const WavoGraph* Shown(std::uint32_t number) const = 0;
    /// Some graph was stopped by its trigger.
    [[nodiscard]] virtual bool IsAnyStopped() const = 0;
    /// Some graph is not stopped, and yet a buffer of it takes no values.
    [[nodiscard]] virtual bool IsAnyWithoutValues() const = 0;
    /// Graphs that their triggers have stopped go back to the state that they began in.
    virtual void RestartAfterTrigger() = 0;
};

}  // namespace wavo
