// Numbers of the commands; never reused.
#pragma once

namespace wavo {

enum class CommandId : int {
    kConnect = 32773,
    kStop = 32777,
    kStart = 32779,
    kProperties = 32781,
    kAdditionalText = 32786,
    kExit = 57665,
};

}  // namespace wavo
