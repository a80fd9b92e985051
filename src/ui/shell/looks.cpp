#include "ui/shell/looks.h"

#include <QApplication>
#include <QCursor>
#include <QToolTip>

#include "ui/shell/look_style.h"

namespace wavo {

namespace {

// clang-format off: a row per group of colours
constexpr Look kLooks[] = {
    {CommandId::kLookClassic, "Windows", BarPainting::kRaised, 0xd4d0c8, 0xffffff, 0x000000,
     0xd4d0c8, 0x0a246a, 0xffffff, 0xd4d0c8, 0xd4d0c8, 0x000000, 0xd4d0c8, 0xd4d0c8, 0x808080,
     0x000000},
    {CommandId::kLookFlat, "Fusion", BarPainting::kFlat, 0xe4e6ea, 0xffffff, 0x101418, 0xdfe2e8,
     0x316ac5, 0xffffff, 0xe4e6ea, 0xe4e6ea, 0x101418, 0xc1d2ee, 0xc1d2ee, 0x316ac5, 0x101418},
    {CommandId::kLookNative, "Fusion", BarPainting::kFlat, 0xece9d8, 0xffffff, 0x14120c, 0xf4f2e8,
     0x2f62b8, 0xffffff, 0xece9d8, 0xece9d8, 0x14120c, 0xffffff, 0xf6efd8, 0xd59a2b, 0x14120c},
    {CommandId::kLookBlueBars, "Fusion", BarPainting::kGradient, 0xc8dbf7, 0xffffff, 0x06163a,
     0xd8e6fb, 0x1f52ae, 0xffffff, 0xe0ecff, 0x86adea, 0x06163a, 0xfff5cf, 0xffcf88, 0x1f3c88,
     0x06163a},
    {CommandId::kLookStudio, "Fusion", BarPainting::kGradient, 0xf0eee4, 0xffffff, 0x1a1a16,
     0xf6f4ec, 0x2a62b8, 0xffffff, 0xfcfbf7, 0xd8d4c4, 0x1a1a16, 0xc6d6ef, 0xc6d6ef, 0x2a62b8,
     0x1a1a16},
    {CommandId::kLookBlue, "Fusion", BarPainting::kGlass, 0xdce9f8, 0xffffff, 0x0f2748, 0xe6f0fb,
     0x2d62a8, 0xffffff, 0xe9f2fd, 0xc0d8f2, 0x0f2748, 0xfffbe2, 0xffdc82, 0xc09a4c, 0x0f2748},
    {CommandId::kLookBlack, "Fusion", BarPainting::kGlass, 0x34373c, 0x1f2226, 0xeceef1, 0x42464d,
     0xc07a1c, 0x000000, 0x565b63, 0x2a2d32, 0xf4f5f7, 0x8a6a2c, 0x6e4f14, 0xe0a848, 0xffffff},
    {CommandId::kLookSilver, "Fusion", BarPainting::kGlass, 0xe3e5ea, 0xffffff, 0x22252b, 0xeff0f4,
     0x5a6478, 0xffffff, 0xf7f8fa, 0xc4c9d3, 0x22252b, 0xfff4d2, 0xffd47c, 0xa88d4e, 0x22252b},
    {CommandId::kLookAqua, "Fusion", BarPainting::kGlass, 0xd9efec, 0xfbffff, 0x06302e, 0xe4f6f3,
     0x0e6f74, 0xffffff, 0xf2fdfb, 0xa6dcd6, 0x06302e, 0xe0f4ff, 0x9fd3f2, 0x1c7fa8, 0x06302e},
};
// clang-format on

/// Between two colours: `part` 0 is `a`, 1 is `b`.
QColor Mix(const QColor& a, const QColor& b, double part) {
    const auto mixed = [part](int x, int y) {
        return static_cast<int>(x * (1 - part) + y * part + 0.5);
    };
    return {mixed(a.red(), b.red()), mixed(a.green(), b.green()), mixed(a.blue(), b.blue())};
}

/// What text that cannot be used now keeps of its colour.
constexpr double kDisabledPart = 0.5;

}  // namespace

std::span<const Look> Looks() {
    return kLooks;
}

const Look& FindLook(int number) {
    const Look* found = nullptr;
    for (const Look& look : kLooks) {
        if (static_cast<int>(look.id) == number) {
            return look;
        }
        found = look.id == kDefaultLook ? &look : found;
    }
    return *found;
}

QPalette LookPalette(const Look& look) {
    const QColor window(look.window);
    const QColor base(look.base);
    const QColor text(look.text);
    const QColor button(look.button);
    const bool dark = window.lightness() < 128;
    QPalette palette(text, button,
                     dark ? Mix(button, Qt::white, 0.25) : Mix(button, Qt::white, 0.7),
                     Mix(button, Qt::black, 0.5), Mix(button, Qt::black, 0.3), text, base);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::AlternateBase, Mix(base, window, 0.4));
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Highlight, QColor(look.highlight));
    palette.setColor(QPalette::HighlightedText, QColor(look.highlighted_text));
    palette.setColor(QPalette::Link, QColor(dark ? 0xff7ab8ff : 0xff0b4fa8));
    palette.setColor(QPalette::LinkVisited, QColor(dark ? 0xffc9a6ff : 0xff6a2c91));
    palette.setColor(QPalette::ToolTipBase, dark ? Mix(base, Qt::white, 0.12) : QColor(0xffffffe1));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, Mix(text, base, 0.4));
    palette.setColor(QPalette::Shadow, dark ? QColor(Qt::black) : Mix(button, Qt::black, 0.65));
    for (const auto& [role, ground] : {std::pair{QPalette::WindowText, window},
                                       {QPalette::Text, base},
                                       {QPalette::ButtonText, button},
                                       {QPalette::PlaceholderText, base}}) {
        palette.setColor(QPalette::Disabled, role, Mix(text, ground, kDisabledPart));
    }
    palette.setColor(QPalette::Disabled, QPalette::Base, Mix(base, window, 0.7));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Mix(window, text, 0.3));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, text);
    return palette;
}

QPalette BarPalette(const Look& look) {
    QPalette palette = LookPalette(look);
    const QColor text(look.bar_text);
    const QColor dim =
        Mix(text, Mix(QColor(look.bar_top), QColor(look.bar_bottom), 0.5), kDisabledPart);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, dim);
    }
    return palette;
}

void ApplyLook(const Look& look) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QPalette palette = LookPalette(look);
    QApplication::setStyle(new LookStyle(look));
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
    QApplication::restoreOverrideCursor();
}

}  // namespace wavo
