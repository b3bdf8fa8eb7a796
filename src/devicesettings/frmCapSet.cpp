#include "devicesettings/frmCapSet.h"

#include "contracts/setup_components.h"
#include "contracts/VideoCap.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"
#include "visit/device_settings.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {
/// The control whose lists are shown.
QPointer<VideoCap>& Capture()
{
    static QPointer<VideoCap> capture;
    return capture;
}

void FillList(QComboBox& list, const VideoNames& names)
{
    list.clear();
    for (int position = 0; position < names.Count(); ++position)
        list.addItem(u"%1 %2"_s.arg(position, 2, 10, QChar(u'0')).arg(names.Name(position)));
    list.setCurrentIndex(-1);
}

/// A position that the list doesn't have leaves it with nothing selected.
void Select(QComboBox& list, int position)
{
    list.setCurrentIndex(position >= 0 && position < list.count() ? position : -1);
}

int ChosenPosition(const QComboBox& list)
{
    return Trim(list.currentText()).isEmpty() ? 0 : list.currentIndex();
}
} // namespace

frmCapSet::frmCapSet() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
}

void frmCapSet::BuildControls()
{
    setWindowTitle(u"장치설정"_s);
    setFixedSize(PixelsFromTwips(6600), PixelsFromTwips(3600));
    Named(new PlainLabel(u"   장치설정..."_s, this), u"Label"_s, u"장치설정"_s, RectFromTwips(120, 120, 6360, 360));

    int top = 600;
    const auto addList = [this, &top](const QString& name, const QString& caption) {
        auto* label = new PlainLabel(caption, this);
        label->setGeometry(RectFromTwips(240, top, 1200, 360));
        auto* list = Named(new QComboBox(this), name, caption, RectFromTwips(1500, top, 4860, 360));
        label->setBuddy(list);
        top += 510;
        return list;
    };
    m_cmbDevices = addList(u"cmbDevices"_s, u"캡쳐장치"_s);
    m_cmbSizes = addList(u"cmbSizes"_s, u"화면크기"_s);
    m_cmbColors = addList(u"cmbColors"_s, u"색상구성"_s);
    m_cmbSources = addList(u"cmbSources"_s, u"캡쳐소스"_s);

    const auto addButton = [this](const QString& name, const QString& caption, int left) {
        return Named(new QPushButton(caption, this), name, caption, RectFromTwips(left, 2880, 1350, 450));
    };
    connect(addButton(u"cmdSet"_s, u"설정"_s, 3510), &QPushButton::clicked, this, GuardedSlot([this](bool) {
                TakePositions();
                SaveDeviceSettings();
                Unload();
            }));
    connect(addButton(u"cmdCancel"_s, u"취소"_s, 5010), &QPushButton::clicked, this,
            GuardedSlot([this](bool) { Unload(); }));
}

void frmCapSet::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        findChild<QPushButton*>(u"cmdCancel"_s)->click();
    else
        StationForm::keyPressEvent(event);
}

void frmCapSet::Form_Load()
{
    CreateObject<clsThemeShell>(u"prjThemeShell.clsThemeShell"_s)
        ->skinchang(*this, static_cast<int>(winId()), Connection);
    LoadDeviceSettings();
    FillDeviceLists();
    if (m_cmbDevices->count() == 0) {
        ShowInformation(u"캡쳐장치를 찾을수 없습니다.!!"_s);
        Unload();
        return;
    }
    Select(*m_cmbDevices, DeviceSettings.Devices);
    Select(*m_cmbSources, DeviceSettings.Sources);
    Select(*m_cmbSizes, DeviceSettings.Sizes);
}

void frmCapSet::FillDeviceLists()
{
    if (Capture() == nullptr)
        return;
    FillList(*m_cmbDevices, Capture()->Devices());
    FillList(*m_cmbSources, Capture()->VideoInputs());
    FillList(*m_cmbSizes, Capture()->VideoFormats());
}

void frmCapSet::TakePositions()
{
    DeviceSettings.Sizes = ChosenPosition(*m_cmbSizes);
    DeviceSettings.Colors = ChosenPosition(*m_cmbColors);
    DeviceSettings.Sources = ChosenPosition(*m_cmbSources);
    DeviceSettings.Devices = ChosenPosition(*m_cmbDevices);
}

void ShowDeviceSettings(VideoCap& capture)
{
    Capture() = &capture;
    Form<frmCapSet>().ShowModal();
}
