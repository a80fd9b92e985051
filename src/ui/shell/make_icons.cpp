// Writes the icon of the program as files: make_icons FOLDER, with QT_QPA_PLATFORM=offscreen.
#include <QGuiApplication>
#include <QImage>
#include <cstdio>

#include "ui/shell/command_icons.h"

int main(int argc, char** argv) {
    const QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_icons FOLDER\n");
        return 2;
    }
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        QImage picture(size, size, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        wavo::PaintProgramIcon(painter, size);
        painter.end();
        if (!picture.save(QStringLiteral("%1/wavo-%2.png").arg(argv[1]).arg(size))) {
            std::fprintf(stderr, "make_icons: cannot write to %s\n", argv[1]);
            return 1;
        }
    }
    return 0;
}
