// What recording reports to the error log, where others rely on the words: service tools search
// logs for them. They stay byte for byte; names in them may be those of a former time.
#pragma once

namespace wavo::record_texts {

inline constexpr char kTriggerWithoutTest[] =
    "GraphDraw::IsTrigger(): m_TriggerData[i].pTestTriggerEvent undefined";

}  // namespace wavo::record_texts
