#include "ui/dialogs/dialog_prompts.h"

#include <QDesktopServices>
#include <QUrl>

#include "ui/dialogs/choose_several.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/dialogs/print_dialogs.h"
#include "ui/dialogs/trigger_condition.h"

namespace wavo {

Prompts DialogPrompts() {
    Prompts prompts;
    prompts.box = ShowBox;
    prompts.color = ChooseColor;
    prompts.font = ChooseFont;
    prompts.open_file = ChooseOpenFile;
    prompts.save_file = ChooseSaveFile;
    prompts.choose_several = ChooseSeveral;
    prompts.trigger = [](QWidget* parent, TriggerEntry& trigger) {
        return CTriggerCondition(trigger, parent).exec() == QDialog::Accepted;
    };
    prompts.print = ChooseHowToPrint;
    prompts.page_setup = SetUpPage;
    prompts.print_preview = ShowPrintPreview;
    prompts.open_page = [](QWidget*, const QUrl& page) { return QDesktopServices::openUrl(page); };
    return prompts;
}

}  // namespace wavo
