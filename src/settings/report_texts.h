// What the settings file reports to the error log and to the trace, where others rely on the words:
// service tools search logs for them. They stay byte for byte; names in them may be those of a
// former time.
#pragma once

namespace wavo::settings_texts {

// The error log.
inline constexpr char kNotOpened[] = "CWavoView::WriteProperties: failed to open '%s'";
inline constexpr char kBackgroundIncomplete[] =
    "CWavoView::ReadProperties: back ground defination not complete, create default back ground "
    "color";
inline constexpr char kFontIncomplete[] =
    "CWavoView::ReadProperties: graphs font defination not complete, create default font";
inline constexpr char kFontNameInvalid[] =
    "CWavoView::ReadProperties: graphs font name is invalid, create default font";
inline constexpr char kNotSaved[] = "CWavoView::WriteProperties: failed to svae '%s'";

// The trace.
inline constexpr char kReadingSettings[] = "CWavoView::ReadProperties(): Reading ini. file [&s]";

}  // namespace wavo::settings_texts
