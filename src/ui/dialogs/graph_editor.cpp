#include "ui/dialogs/graph_editor.h"

#include "ui/dialogs/app_messages.h"

namespace wavo {

bool WindowlessGraphEditor::Init(std::vector<WavoGraph>& graphs, const std::vector<std::string>&) {
    m_initialised = !graphs.empty();
    PostAppMessage(
        m_view, AppMessage::kGraphChanged, 0,
        graphs.empty() ? kNoGraph : static_cast<std::int64_t>(graphs.front().GraphNumber));
    return true;
}

}  // namespace wavo
