#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "contracts/ImagXpress.h"
#include "contracts/MSComm.h"
#include "contracts/StatusPanels.h"
#include "contracts/VideoCap.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/ElidedLabel.h"
#include "frame/twips.h"
#include "screenparts/NoteBox.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/ValueCombo.h"

#include <QLabel>
#include <QLineEdit>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace {

QLabel* MakeLabel(QWidget* parent, const QString& name, const QString& text, const QRect& place)
{
    return Named(new PlainLabel(text, parent), name, text, place);
}

} // namespace

void frmCapture::BuildControls()
{
    setWindowTitle(u"캡쳐화면"_s);
    setFixedSize(PixelsFromTwips(15240), PixelsFromTwips(10500));

    m_sbarCap = Named(&PlaceControl<StatusPanels>(u"MSComctlLib.StatusBar"_s, this), u"sbarCap"_s, u"환자 정보"_s,
                      RectFromTwips(0, 405, 15240, 270));
    m_sbarCap->setPanelCount(8);
    m_capCapture = Named(&PlaceControl<VideoCap>(u"VIDEOCAPLib.VideoCap"_s, this), u"capCapture"_s, u"영상"_s,
                         RectFromTwips(0, 690, 8400, 6300));
    m_notices = Named(new NoticeStrip(this), u"notices"_s, u"알림"_s, RectFromTwips(0, 6600, 8400, 390));
    m_count = Named(new PlainLabel(this), u"lblCount"_s, QString(), RectFromTwips(7620, 6690, 780, 300));
    m_count->setProperty("pictureCount", true);
    m_count->setAlignment(Qt::AlignCenter);
    m_commCapture = &PlaceControl<MSComm>(u"MSCommLib.MSComm"_s, this);
    m_commCapture->setObjectName(u"commCapture"_s);
    m_sprCap[0] = Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, this), u"sprCap(1)"_s, u"캡쳐그림"_s,
                        RectFromTwips(0, 7020, 8400, 3465));

    QLabel* label = MakeLabel(this, u"lbl(4)"_s, u"저장일자"_s, RectFromTwips(8490, 690, 915, 315));
    m_dtpYmd = Named(new QLineEdit(this), u"dtpYmd"_s, u"저장일자"_s, RectFromTwips(9480, 690, 1575, 315));
    m_dtpYmd->setReadOnly(true);
    label->setBuddy(m_dtpYmd);
    m_dtpYmd->setFocusPolicy(Qt::NoFocus);
    label = MakeLabel(this, u"lbl(1)"_s, u"장치종류"_s, RectFromTwips(12000, 690, 855, 255));
    m_cmbEtc =
        Named(new ValueCombo(u"cmbEtc"_s, this), u"cmbEtc"_s, u"장치종류"_s, RectFromTwips(12840, 690, 2385, 315));
    // A section outside the list stands as its text all the same; nothing can be typed.
    m_cmbEtc->lineEdit()->setReadOnly(true);
    label->setBuddy(m_cmbEtc);

    label = MakeLabel(this, u"label(2)"_s, u"참고사항"_s, RectFromTwips(8490, 1035, 915, 315));
    m_txtCapChamgo = Named(new NoteBox(this), u"txtCapChamgo"_s, u"참고사항"_s, RectFromTwips(9480, 1035, 5730, 390));
    label->setBuddy(m_txtCapChamgo);
    m_txtCapChamgo->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_txtCapChamgo->setInputMethodHints(Qt::ImhMultiLine | Qt::ImhPreferLatin);
    m_lblMovie = Named(new PlainLabel(this), u"lblMovie"_s, u"동영상 상태"_s, RectFromTwips(9480, 1440, 5745, 240));
    m_lblMovieStatus =
        Named(new PlainLabel(this), u"lblMovieStatus"_s, u"동영상 프레임"_s, RectFromTwips(9480, 1695, 5745, 240));

    m_picture1 = Named(&PlaceControl<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, this), u"Picture1"_s, QString(),
                       RectFromTwips(15960, 1320, 10215, 8535));
    m_picture1->hide();

    auto* pic = Named(new QWidget(this), u"pic"_s, u"캡쳐과거내역"_s, RectFromTwips(8415, 1950, 6810, 8535));
    label = MakeLabel(pic, u"label(1)"_s, u"캡쳐과거내역"_s, RectFromTwips(90, 0, 1575, 240));
    m_lblHisYmd = Named(new PlainLabel(pic), u"lblHisYmd"_s, u"과거 캡쳐일자"_s, RectFromTwips(1680, 0, 1335, 240));
    m_lblHisEtc = Named(new ElidedLabel(pic), u"lblHisEtc"_s, u"과거 캡쳐종류"_s, RectFromTwips(3000, 0, 2295, 240));
    m_sprCap[2] = Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, pic), u"sprCap(3)"_s, u"캡쳐과거내역"_s,
                        RectFromTwips(15, 240, 6750, 3195));
    label->setBuddy(m_sprCap[2]);
    m_sprCap[1] = Named(&PlaceControl<fpSpread>(u"FPSpreadADO.fpSpread"_s, pic), u"sprCap(2)"_s, u"과거 캡쳐그림"_s,
                        RectFromTwips(15, 3450, 6750, 5040));
}

void frmCapture::ShowCount(int pictures)
{
    m_count->setText(u"%1/%2"_s.arg(pictures).arg(VisitGrid::MostPictures));
    m_count->setAccessibleName(u"그림 %1장, 한도 %2장"_s.arg(pictures).arg(VisitGrid::MostPictures));
    const bool isFull = pictures >= VisitGrid::MostPictures;
    if (m_count->property("full").toBool() == isFull)
        return;
    m_count->setProperty("full", isFull);
    m_count->style()->unpolish(m_count);
    m_count->style()->polish(m_count);
}
