#include "session/source_switch.h"

#include <utility>

namespace wavo {

void SourceSwitch::Show(ValueSource& other) {
    if (IsLive()) {
        m_is_taken_up = false;
        m_live.SetComesBack(false);
        m_live.Hold();
    }
    m_shown = &other;
    other.SetEvents(m_events);
    m_events->Described(false);
    m_events->StateChanged();
    m_events->ValuesBegin(false);
}

void SourceSwitch::ShowLive() {
    m_shown = &m_live;
    m_live.SetComesBack(m_comes_back);
}

void SourceSwitch::TakeUp() {
    m_is_taken_up = true;
    if (m_live.Start()) {
        m_is_taken_up = false;
    }
}

MaybeFault SourceSwitch::Start() {
    m_is_taken_up = false;
    return m_shown->Start();
}

void SourceSwitch::Hold() {
    m_is_taken_up = false;
    m_shown->Hold();
}

void SourceSwitch::SetEvents(ValueSourceEvents* events) {
    m_events = events;
    m_live.SetEvents(this);
}

void SourceSwitch::SetComesBack(bool comes_back) {
    m_comes_back = comes_back;
    if (IsLive()) {
        m_live.SetComesBack(comes_back);
    }
}

void SourceSwitch::Stop() {
    m_shown->Stop();
    if (!IsLive()) {
        m_live.Stop();
    }
}

BatchOutcome SourceSwitch::Take(ValueBatch& batch) {
    ValueSource* const taken = m_shown;
    const BatchOutcome outcome = taken->Take(batch);
    // A box may have stood open meanwhile, and another source have taken the place of this one.
    return taken == m_shown ? outcome : BatchOutcome::kFailed;
}

void SourceSwitch::Described(bool by_itself) {
    if (IsLive()) {
        m_events->Described(by_itself || m_is_taken_up);
    }
}

void SourceSwitch::StateChanged() {
    if (IsLive()) {
        m_events->StateChanged();
    }
}

void SourceSwitch::ValuesBegin(bool by_itself) {
    if (IsLive()) {
        m_events->ValuesBegin(std::exchange(m_is_taken_up, false) || by_itself);
    }
}

void SourceSwitch::ShowFault(const std::string& text) {
    if (IsLive()) {
        m_events->ShowFault(text);
    }
}

void SourceSwitch::ShowBatchFault(const std::string& text) {
    if (IsLive()) {
        m_events->ShowBatchFault(text);
    }
}

}  // namespace wavo
