#include "ui/bars/command_actions.h"

#include <QActionGroup>
#include <QKeySequence>
#include <QPixmap>
#include <algorithm>

#include "ui/bars/command_icons.h"

namespace wavo {

namespace {

constexpr int kUserImageSize = 16;

bool IsLook(CommandId id) {
    return id >= CommandId::kLookClassic && id <= CommandId::kLookAqua;
}

bool IsSwitch(CommandId id) {
    return IsLook(id) || id == CommandId::kStatusBar || id == CommandId::kMeasurements ||
           id == CommandId::kHideMeasurements || id == CommandId::kSpectrum ||
           id == CommandId::kHideSpectrum || id == CommandId::kCircleTest ||
           id == CommandId::kAxisTest || id == CommandId::kReference || id == CommandId::kFollow ||
           id == CommandId::kLineStyles;
}

}  // namespace

std::vector<QIcon> LoadUserImages(const QString& file) {
    std::vector<QIcon> images;
    const QImage strip = QImage(file).convertToFormat(QImage::Format_ARGB32);
    for (int x = 0; x + kUserImageSize <= strip.width() && strip.height() >= kUserImageSize;
         x += kUserImageSize) {
        QImage image = strip.copy(x, 0, kUserImageSize, kUserImageSize);
        for (int row = 0; row < kUserImageSize; ++row) {
            for (int column = 0; column < kUserImageSize; ++column) {
                if (image.pixel(column, row) == qRgb(192, 192, 192)) {
                    image.setPixel(column, row, qRgba(0, 0, 0, 0));
                }
            }
        }
        images.emplace_back(QPixmap::fromImage(image));
    }
    return images;
}

CommandActions::CommandActions(QWidget& frame, const Handler& handler) {
    auto* const looks = new QActionGroup(&frame);  // one of them at a time
    for (const Command& command : Commands()) {
        auto* const action = new QAction(MenuText(command), &frame);
        const QString shortcut = ShortcutText(command);
        action->setObjectName(QString::fromLatin1(command.object_name));
        action->setShortcut(QKeySequence(shortcut));
        action->setStatusTip(StatusPrompt(command));
        action->setToolTip(shortcut.isEmpty() ? ToolTip(command)
                                              : ToolTip(command) + " (" + shortcut + ")");
        action->setIcon(CommandIcon(command.id));
        action->setCheckable(IsSwitch(command.id));
        if (IsLook(command.id)) {
            looks->addAction(action);
        }
        action->setMenuRole(QAction::NoRole);
        QObject::connect(action, &QAction::triggered, &frame,
                         [handler, id = command.id] { handler(id); });
        frame.addAction(action);
        m_actions[command.id] = action;
    }
}

QAction* CommandActions::Find(CommandId id) const {
    const auto found = m_actions.find(id);
    return found == m_actions.end() ? nullptr : found->second;
}

void CommandActions::SetUserImages(const std::map<int, int>& by_command,
                                   const std::vector<QIcon>& images) {
    for (const auto& [id, action] : m_actions) {
        const auto found = by_command.find(static_cast<int>(id));
        const bool own =
            found == by_command.end() || static_cast<std::size_t>(found->second) >= images.size();
        action->setIcon(own ? CommandIcon(id) : images[static_cast<std::size_t>(found->second)]);
    }
}

bool CommandActions::IsHarmless(const QAction& action) const {
    return std::any_of(m_actions.begin(), m_actions.end(), [&action](const auto& entry) {
        return entry.second == &action && wavo::IsHarmless(entry.first);
    });
}

QAction* CommandActions::FindShortcut(const QKeySequence& keys) const {
    for (const auto& [id, action] : m_actions) {
        if (action->isEnabled() && !keys.isEmpty() && action->shortcut() == keys) {
            return action;
        }
    }
    return nullptr;
}

}  // namespace wavo
