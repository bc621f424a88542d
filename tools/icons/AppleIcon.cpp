#include "tools/icons/AppleIcon.h"

#include <QtEndian>

namespace vesk {

namespace {

/// A block: its name, its length with these eight bytes, its content.
QByteArray block(const QByteArray& name, const QByteArray& content) {
    constexpr qsizetype head = 8;
    QByteArray length(sizeof(quint32), Qt::Uninitialized);
    qToBigEndian(static_cast<quint32>(head + content.size()), length.data());
    return name + length + content;
}

} // namespace

const QList<ApplePicture>& applePictures() {
    static const QList<ApplePicture> pictures{
        {.type = "icp4", .edge = 16},  {.type = "ic11", .edge = 32},  {.type = "icp5", .edge = 32},
        {.type = "ic12", .edge = 64},  {.type = "ic07", .edge = 128}, {.type = "ic13", .edge = 256},
        {.type = "ic08", .edge = 256}, {.type = "ic14", .edge = 512}, {.type = "ic09", .edge = 512},
        {.type = "ic10", .edge = 1024}};
    return pictures;
}

QByteArray appleIcon(const QList<QByteArray>& files) {
    Q_ASSERT(files.size() == applePictures().size());
    QByteArray blocks;
    for (qsizetype index = 0; index < files.size(); ++index) {
        blocks += block(applePictures().at(index).type, files.at(index));
    }
    return block("icns", blocks);
}

} // namespace vesk
