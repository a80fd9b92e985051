#include "ui/shell/headless_prompts.h"

#include <utility>

namespace wavo {

Prompts HeadlessPrompts(std::function<void(const std::string& text)> tell) {
    Prompts prompts;
    prompts.is_somebody_there = false;
    prompts.box = [tell = std::move(tell)](QWidget*, const Box& box) {
        tell(box.text);
        switch (box.buttons) {
            case BoxButtons::kOk:
                return BoxAnswer::kOk;
            case BoxButtons::kOkCancel:
                return BoxAnswer::kCancel;
            case BoxButtons::kYesNo:
                break;
        }
        return BoxAnswer::kNo;
    };
    prompts.color = [](QWidget*, const QColor&) { return std::nullopt; };
    prompts.font = [](QWidget*, const QFont&) { return std::nullopt; };
    prompts.open_file = [](QWidget*, const FileQuestion&) { return std::nullopt; };
    prompts.save_file = [](QWidget*, const FileQuestion&) { return std::nullopt; };
    prompts.choose_several = [](QWidget*, const SeveralQuestion&) { return std::vector<int>(); };
    prompts.trigger = [](QWidget*, TriggerEntry&) { return false; };
    prompts.print = [](QWidget*, QPrinter&) { return false; };
    prompts.page_setup = [](QWidget*, QPrinter&) {};
    prompts.print_preview = [](QWidget*, QPrinter&, const std::function<void(QPrinter&)>&) {};
    prompts.open_page = [](QWidget*, const QUrl&) { return true; };
    return prompts;
}

}  // namespace wavo
