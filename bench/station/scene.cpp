#include "scene.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>

QByteArray ScenePicture(int seed, QSize size)
{
    QRandomGenerator random(static_cast<quint32>(seed));
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(QColor(150, 70, 60));
    QPainter painter(&picture);
    for (int blob = 0; blob < 120; ++blob) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(120 + random.bounded(100), 40 + random.bounded(80), 40 + random.bounded(60), 90));
        painter.drawEllipse(QPoint(random.bounded(size.width()), random.bounded(size.height())),
                            20 + random.bounded(200), 20 + random.bounded(200));
    }
    painter.end();
    for (int y = 0; y < picture.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const int grain = random.bounded(13) - 6;
            line[x] = qRgb(qBound(0, qRed(line[x]) + grain, 255), qBound(0, qGreen(line[x]) + grain, 255),
                           qBound(0, qBlue(line[x]) + grain, 255));
        }
    }
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", 90);
    return jpeg;
}
