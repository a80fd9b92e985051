#include "accessible_walk.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QFrame>
#include <QLabel>
#include <QMenu>
#include <QRubberBand>
#include <QScrollBar>
#include <QSizeGrip>
#include <QStackedWidget>
#include <QStatusBar>

namespace wavo::testing {

namespace {

enum class Need { kNothing, kName, kBoth };

/// Whether a widget is a part of one of the toolkit's own.
bool IsPart(const QWidget& widget) {
    if (widget.objectName().startsWith(QStringLiteral("qt_")) ||
        qobject_cast<const QScrollBar*>(&widget) != nullptr ||
        qobject_cast<const QSizeGrip*>(&widget) != nullptr ||
        qobject_cast<const QRubberBand*>(&widget) != nullptr) {
        return true;
    }
    for (const QWidget* above = widget.parentWidget(); above != nullptr;
         above = above->parentWidget()) {
        if (qobject_cast<const QComboBox*>(above) != nullptr ||
            qobject_cast<const QAbstractSpinBox*>(above) != nullptr ||
            qobject_cast<const QAbstractItemView*>(above) != nullptr ||
            qobject_cast<const QMenu*>(above) != nullptr) {
            return true;
        }
    }
    return false;
}

/// Whether a widget only holds others.
bool IsHolder(const QWidget& widget) {
    const std::string name = widget.metaObject()->className();
    return name == "QWidget" || name == "QStackedWidget" || name == "QToolBarSeparator" ||
           qobject_cast<const QDialogButtonBox*>(&widget) != nullptr ||
           qobject_cast<const QMenu*>(&widget) != nullptr;
}

Need NeedOf(const QWidget& widget) {
    if (IsPart(widget) || IsHolder(widget)) {
        return Need::kNothing;
    }
    if (widget.isWindow()) {
        return Need::kName;  // its title
    }
    if (qobject_cast<const QDockWidget*>(&widget) != nullptr) {
        return Need::kName;  // the toolkit tells nothing else of it; its content does
    }
    const bool is_pane = qobject_cast<const QStatusBar*>(widget.parentWidget()) != nullptr ||
                         widget.objectName().startsWith(QStringLiteral("control_"));
    return qobject_cast<const QLabel*>(&widget) != nullptr && !is_pane ? Need::kName : Need::kBoth;
}

std::string FaultOf(const QWidget& widget) {
    const Need need = NeedOf(widget);
    if (need == Need::kNothing) {
        return {};
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): asking changes nothing
    QAccessibleInterface* const access =
        QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
    const auto lacks = [access](QAccessible::Text text) {
        return access == nullptr || access->text(text).trimmed().isEmpty();
    };
    if (lacks(QAccessible::Name)) {
        return "no name";
    }
    return need == Need::kBoth && lacks(QAccessible::Description) ? "no description" : "";
}

QList<const QWidget*> WidgetsOf(const QWidget& window) {
    QList<const QWidget*> widgets{&window};
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
        if (widget->window() == &window) {
            widgets.append(widget);
        }
    }
    return widgets;
}

}  // namespace

std::vector<std::string> WithoutAccessibleTexts(const QWidget& window) {
    std::vector<std::string> found;
    for (const QWidget* const widget : WidgetsOf(window)) {
        if (const std::string fault = FaultOf(*widget); !fault.empty()) {
            found.push_back(widget->metaObject()->className() + (" " + fault) + ": " +
                            widget->objectName().toStdString());
        }
    }
    return found;
}

int AskedForAccessibleTexts(const QWidget& window) {
    int asked = 0;
    for (const QWidget* const widget : WidgetsOf(window)) {
        asked += NeedOf(*widget) == Need::kBoth ? 1 : 0;
    }
    return asked;
}

}  // namespace wavo::testing
