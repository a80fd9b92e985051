#include "recording/recording_fault.h"

#include <utility>

#include "platform/last_error.h"

namespace wavo::recording {

Fault MakeFault(RecordingFault code, std::string text) {
    return {std::move(text), static_cast<int>(code)};
}

Fault SystemFault(RecordingFault code, const std::string& what, const std::string& path) {
    const std::string words = platform::ErrorText(platform::LastError());
    return MakeFault(code, what + " \"" + path + "\": " + words);
}

}  // namespace wavo::recording
