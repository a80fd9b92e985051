// Writes the icon of the program as files: make_icons FOLDER, with QT_QPA_PLATFORM=offscreen.
//
// The files are wavo-SIZE.png and, with all sizes in one, wavo.ico: the container of Windows around
// the same PNG pictures.
#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <array>
#include <cstdio>
#include <vector>

#include "ui/bars/command_icons.h"

namespace {

constexpr std::array kSizes{16, 24, 32, 48, 64, 128, 256};

/// The icon in one size, as the bytes of a PNG file.
QByteArray PaintedPng(int size) {
    QImage picture(size, size, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    wavo::PaintProgramIcon(painter, size);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return bytes;
}

/// All sizes in one file: a header, an entry of 16 bytes per picture, the pictures.
QByteArray IconFile(const std::vector<QByteArray>& pictures) {
    constexpr quint16 kIcon = 1;
    constexpr quint16 kPlanes = 1;
    constexpr quint16 kBitsPerPixel = 32;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << quint16{0} << kIcon << static_cast<quint16>(pictures.size());
    auto place = static_cast<quint32>(6 + 16 * pictures.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const auto size = static_cast<quint8>(kSizes[i]);  // 256 is written as 0
        const auto length = static_cast<quint32>(pictures[i].size());
        stream << size << size << quint8{0} << quint8{0} << kPlanes << kBitsPerPixel << length
               << place;
        place += length;
    }
    for (const QByteArray& picture : pictures) {
        bytes += picture;
    }
    return bytes;
}

bool Write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_icons FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    std::vector<QByteArray> pictures;
    bool written = true;
    for (const int size : kSizes) {
        pictures.push_back(PaintedPng(size));
        written &= Write(QStringLiteral("%1/wavo-%2.png").arg(folder).arg(size), pictures.back());
    }
    if (!written || !Write(folder + QStringLiteral("/wavo.ico"), IconFile(pictures))) {
        std::fprintf(stderr, "make_icons: cannot write to %s\n", argv[1]);
        return 1;
    }
    return 0;
}
