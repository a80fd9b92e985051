// What a user does to a dialog, by the numbers of its controls, and what every dialog has to keep.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "ui/controls/control_table.h"
#include "ui/controls/controls.h"

namespace wavo::testing {

/// The control; one that is not there ends the test.
template <typename Widget>
Widget& Control(const QWidget& dialog, int id) {
    auto* const control = FindControl<Widget>(dialog, id);
    if (control == nullptr) {
        qFatal("no control %d", id);
    }
    return *control;
}

inline void Click(QDialog& dialog, int id) {
    auto& button = Control<QAbstractButton>(dialog, id);
    // Near the left border: a check box is clicked on itself or its text, not behind it.
    QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(8, button.height() / 2));
}

/// Replaces the text of an edit, key by key where a keyboard has the key.
inline void Type(QDialog& dialog, int id, const QString& text) {
    auto& edit = Control<QLineEdit>(dialog, id);
    edit.setFocus();
    edit.selectAll();
    QTest::keyClick(&edit, Qt::Key_Delete);
    for (const QChar character : text) {
        if (character.unicode() < 0x80) {
            QTest::keyClick(&edit, character.toLatin1());
        } else {
            edit.insert(character);
        }
    }
}

inline std::string TextOf(const QDialog& dialog, int id) {
    return Control<QLineEdit>(dialog, id).text().toStdString();
}

/// Numbers of the controls in the order of the tab key.
inline std::vector<int> TabOrder(const QDialog& dialog) {
    std::vector<int> order;
    for (const QWidget* widget = dialog.nextInFocusChain(); widget != &dialog;
         widget = widget->nextInFocusChain()) {
        const QString name = widget->objectName();
        if (name.startsWith(QStringLiteral("control_")) &&
            (widget->focusPolicy() & Qt::TabFocus) != 0) {
            order.push_back(name.section(u'_', 1).toInt());
        }
    }
    return order;
}

/// The table names every numbered control once, with a text and a tool tip; the controls show
/// them, stand in reading order, and the tab key follows it.
inline void ExpectControlsOfTable(QDialog& dialog, std::span<const ControlRow> table) {
    dialog.show();
    std::set<int> ids;
    std::vector<int> order;
    const QWidget* before = nullptr;
    for (const ControlRow& row : table) {
        SCOPED_TRACE(row.id);
        EXPECT_TRUE(ids.insert(row.id).second);
        const auto& control = Control<QWidget>(dialog, row.id);
        const QString text = QString::fromUtf8(row.text);
        EXPECT_FALSE(text.isEmpty());
        EXPECT_EQ(control.toolTip(), QString::fromUtf8(row.tool_tip));
        EXPECT_FALSE(control.toolTip().isEmpty());
        EXPECT_EQ(control.accessibleName(), text);
        bool shown = false;
        if (const auto* const button = qobject_cast<const QAbstractButton*>(&control)) {
            shown = button->text() == text;
        }
        for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
            shown |= label->buddy() == &control && label->text() == text;
        }
        EXPECT_TRUE(shown) << row.text;
        if ((control.focusPolicy() & Qt::TabFocus) != 0) {
            order.push_back(row.id);
        }
        const QPoint place = control.mapTo(&dialog, QPoint(0, 0));
        if (before != nullptr) {
            const QRect last(before->mapTo(&dialog, QPoint(0, 0)), before->size());
            EXPECT_TRUE(place.y() >= last.bottom() || place.x() >= last.right());
        }
        EXPECT_TRUE(dialog.rect().contains(QRect(place, control.size())));
        before = &control;
    }
    EXPECT_EQ(TabOrder(dialog), order);
    for (const QWidget* const control : dialog.findChildren<QWidget*>()) {
        if (control->objectName().startsWith(QStringLiteral("control_"))) {
            EXPECT_EQ(ids.count(control->objectName().section(u'_', 1).toInt()), 1U)
                << control->objectName().toStdString();
        }
    }
}

}  // namespace wavo::testing
