#pragma once

#include "capture/frmCapture.h"
#include "frame/guard.h"
#include "screenparts/NoteBox.h"
#include "screenparts/picture_grid.h"
#include "screenparts/VisitPictures.h"
#include "support/StationInABox.h"

/// The operator at the capture screen of a station in a box.
namespace capture_screen {

inline const QString Stomach = QStringLiteral("위내시경");
inline const QString Colon = QStringLiteral("대장내시경");
inline const QString Day = QString::fromUtf16(StationInABox::Today);

inline frmCapture* opened = nullptr; ///< The screen opened last.

/// Opens the screen and fills it, as a program does that has just begun: a wait would be left by one that is ending.
inline frmCapture& OpenScreen()
{
    dynamic_cast<ScriptedDesktop&>(UseService<Desktop>()).ended = false;
    opened = &Form<frmCapture>();
    opened->Show();
    if (!opened->IsUnloaded())
        Guarded([] { opened->ShowStored(); });
    return *opened;
}

/// Until no still is on its way any more.
inline void AwaitStills()
{
    if (!QTest::qWaitFor([] { return opened->IsUnloaded() || opened->StillsAreAtRest(); }, 30000))
        qFatal("a still never came to its end");
}

/// A button of the toolbar; what it files has come to its end then.
inline void Press(const QString& caption)
{
    opened->findChild<QToolButton*>(caption)->click();
    if (caption == QStringLiteral("캡쳐") || caption == QStringLiteral("파일"))
        AwaitStills();
}

/// The screen with the live picture and one still.
inline frmCapture& OpenWithOneStill()
{
    frmCapture& screen = OpenScreen();
    Press(QStringLiteral("연결"));
    Press(QStringLiteral("캡쳐"));
    return screen;
}

/// Over a picture of the visit's grid.
inline QString Mark(int number)
{
    fpSpread& grid = opened->sprCap(1);
    const std::optional<QPoint> place = opened->PicturesOf(1).PlaceOf({{}, number});
    if (!place)
        return QStringLiteral("no picture");
    grid.setRow(place->y());
    grid.setCol(place->x());
    return grid.TypePictMark();
}

/// An entry of a button's drop-down list, or, with "팝업메뉴", of the menu over a picture.
inline void Choose(const QString& entry, const QString& menu = {})
{
    for (QAction* action : opened->findChildren<QAction*>(entry)) {
        if (qobject_cast<QMenu*>(action->parent())->objectName() == menu)
            action->trigger();
    }
}

inline void ChooseSection(const QString& section)
{
    QComboBox& list = opened->cmbEtc();
    list.setCurrentIndex(list.findText(section));
    Q_EMIT list.activated(list.currentIndex());
}

inline void DoubleClick(int element, int column, int row)
{
    Q_EMIT opened->sprCap(element).DblClick(column, row);
}

/// Chooses the history line of a date.
inline void ShowLine(const QString& ymd)
{
    fpSpread& visits = opened->sprCap(3);
    for (int row = 1; row <= visits.DataRowCnt(); ++row) {
        if (CellText(visits, 1, row) == ymd)
            DoubleClick(3, 1, row);
    }
}

/// Opens the menu over a picture and chooses an entry.
inline void ChooseOver(int element, int column, int row, const QString& entry)
{
    Q_EMIT opened->sprCap(element).RightClick(0, column, row, 150, 150);
    const QString menu = QStringLiteral("팝업메뉴");
    Choose(entry, menu);
    opened->findChild<QMenu*>(menu)->hide();
}

} // namespace capture_screen

using namespace capture_screen;
