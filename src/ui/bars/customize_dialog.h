// The dialog in which the user arranges tool bars and menus.
//
// Invariant: it works on a copy; nothing changes before OK.
#pragma once

#include <QIcon>
#include <span>
#include <vector>

#include "ui/bars/bar_setup.h"
#include "ui/dialogs/table_dialog.h"

class QGridLayout;

namespace wavo {

namespace customize {

enum Control : int {
    kOk = 1,
    kCancel = 2,
    kBar = 101,
    kNewBar = 102,
    kDeleteBar = 103,
    kBarName = 104,
    kCommands = 105,
    kButtons = 106,
    kAdd = 107,
    kRemove = 108,
    kUp = 109,
    kDown = 110,
    kSeparator = 111,
    kImage = 112,
    kIconSize = 113,
    kFullMenus = 114,
    kReset = 115,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> Controls();

}  // namespace customize

class CustomizeDialog : public TableDialog {
 public:
    CustomizeDialog(BarSetup setup, std::vector<QIcon> user_images, QWidget* parent = nullptr);

    /// The arrangement as it stands in the dialog.
    [[nodiscard]] const BarSetup& Setup() const { return m_setup; }

    void accept() override;

 private:
    void LayOut();
    void LayOutBarRow(QGridLayout& layout);
    void LayOutLists(QGridLayout& layout);
    void LayOutOptions(QGridLayout& layout);
    void FillChoices();
    void ConnectControls();

    void ShowAll();
    void ShowBar(int row_of_button);
    void ShowEnabling();
    void ShowImage();
    [[nodiscard]] BarContent& Bar();
    [[nodiscard]] int SelectedItem() const;  ///< number of the selected button's command, else 0

    void NewBar();
    void DeleteBar();
    void RenameBar();
    void Add();
    void AddSeparator();
    void Insert(int item);
    void Remove();
    void Up() { Move(-1); }
    void Down() { Move(1); }
    void Move(int step);
    void ChooseImage();
    void Reset();

    BarSetup m_setup;
    const std::vector<QIcon> m_images;
};

}  // namespace wavo
