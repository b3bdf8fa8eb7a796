#include "findings/popup_window.h"

#include "frame/twips.h"

#include <QDialog>
#include <QScreen>

void PlacePopup(QDialog& popup, int leftTwips, int topTwips)
{
    const QRect room = popup.screen()->availableGeometry();
    const QWidget* parent = popup.parentWidget();
    const QPoint corner = parent != nullptr ? parent->mapToGlobal(QPoint()) : QPoint();
    QRect place(corner + QPoint(PixelsFromTwips(leftTwips), PixelsFromTwips(topTwips)), popup.size());
    place.moveRight(qMin(place.right(), room.right()));
    place.moveBottom(qMin(place.bottom(), room.bottom()));
    place.moveLeft(qMax(place.left(), room.left()));
    place.moveTop(qMax(place.top(), room.top()));
    popup.move(place.topLeft());
}
