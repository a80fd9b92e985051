// What the status bar says of the recording that is open: what is wrong with it, else what it is;
// or for a while what was found at a place of it.
#pragma once

#include <string>

#include "session/session.h"

namespace wavo {

class RecordingStatus {
 public:
    /// `session` is not owned and outlives this object.
    explicit RecordingStatus(Session& session) : m_session(session) {}

    /// Says it. Nothing, like the others, when no recording is open.
    void Tell();
    /// Says it if it is not what was said last.
    void TellNews();
    /// Says what was found at a place instead, until LeavePlace or until something is wrong.
    void TellOfPlace(const std::string& text);
    /// What was found is seen no more: the next news takes its place.
    void LeavePlace() { m_tells_place = false; }

 private:
    /// Axes that graphs have and the recording has not, in words; empty when there are none.
    [[nodiscard]] std::string UnknownAxes() const;
    [[nodiscard]] std::string WhatIsWrong() const;

    Session& m_session;
    std::string m_wrong;  // that was told
    std::string m_state;  // of the source, the same
    bool m_tells_place = false;
};

}  // namespace wavo
