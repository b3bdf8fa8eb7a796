#include "platform/gstreamer/devices/DriverDialog.h"

#include "contracts/PlatformError.h"
#include "frame/plain_text.h"
#include "platform/gstreamer/devices/V4l2Device.h"
#include "platform/gstreamer/testpicture/TestPictureState.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>

using namespace Qt::StringLiterals;

DriverDialog::DriverDialog(QWidget* owner, const QString& title) : QDialog(owner), m_rows(new QFormLayout)
{
    setWindowTitle(title);
    setMinimumWidth(380);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(m_rows);
    auto* buttons = new QDialogButtonBox;
    connect(buttons->addButton(u"닫기"_s, QDialogButtonBox::RejectRole), &QPushButton::clicked, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void DriverDialog::AddControl(const PictureControl& control, const Apply& apply)
{
    if (control.IsSwitch())
        AddSwitch(control, apply);
    else
        AddSlider(control, apply);
}

void DriverDialog::AddSwitch(const PictureControl& control, const Apply& apply)
{
    QCheckBox* box = AddBox(control.name, control.value != 0);
    connect(box, &QCheckBox::toggled, this, [box, control, apply](bool on) {
        if (apply(control.id, on ? 1 : 0))
            return;
        const QSignalBlocker blocker(box);
        box->setChecked(!on);
    });
}

void DriverDialog::AddSlider(const PictureControl& control, const Apply& apply)
{
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(control.name);
    slider->setAccessibleName(control.name);
    // The slider counts steps, so that it stops at values that the driver has.
    slider->setRange(0, int((qint64(control.maximum) - control.minimum) / control.step));
    slider->setPageStep(qMax(1, slider->maximum() / 10));
    slider->setValue((control.value - control.minimum) / control.step);
    auto* value = new PlainLabel(QString::number(control.value), this);
    value->setMinimumWidth(48);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* standard = new QPushButton(u"기본값"_s);
    standard->setAccessibleName(u"%1 기본값"_s.arg(control.name));
    connect(standard, &QPushButton::clicked, slider,
            [slider, control] { slider->setValue((control.standard - control.minimum) / control.step); });
    connect(slider, &QSlider::valueChanged, this,
            [slider, value, control, apply, accepted = slider->value()](int step) mutable {
                if (apply(control.id, control.minimum + step * control.step)) {
                    accepted = step;
                    value->setText(QString::number(control.minimum + step * control.step));
                    return;
                }
                const QSignalBlocker blocker(slider);
                slider->setValue(accepted);
            });
    auto* row = new QHBoxLayout;
    row->addWidget(slider, 1);
    row->addWidget(value);
    row->addWidget(standard);
    m_rows->addRow(new PlainLabel(control.name, this), row);
}

void DriverDialog::AddOption(const QString& label, bool present, const std::function<void(bool)>& choose)
{
    connect(AddBox(label, present), &QCheckBox::toggled, this, choose);
}

QCheckBox* DriverDialog::AddBox(const QString& label, bool ticked)
{
    auto* box = new QCheckBox(CaptionText(label));
    box->setObjectName(label);
    box->setChecked(ticked);
    m_rows->addRow(box);
    return box;
}

void DriverDialog::AddChoice(const QString& label, const QStringList& names, int present,
                             const std::function<void(int)>& choose)
{
    auto* box = new QComboBox;
    box->setObjectName(label);
    box->setAccessibleName(label);
    box->addItems(names);
    box->setCurrentIndex(present);
    connect(box, &QComboBox::activated, this, choose);
    m_rows->addRow(new PlainLabel(label, this), box);
}

void DriverDialog::Run()
{
    if (m_rows->rowCount() == 0)
        m_rows->addRow(new PlainLabel(u"바꿀수 있는 항목이 없습니다."_s, this));
    exec();
}

QWidget* FindOwner(int handle, QWidget* control)
{
    QWidget* window = handle != 0 ? QWidget::find(WId(handle)) : nullptr;
    return window != nullptr ? window : control->window();
}

namespace {
void RunDialog(QWidget* owner, const QString& title, const std::function<void(DriverDialog&)>& fill)
{
    // An owner that is closed while the dialog stands takes it along.
    const QPointer<DriverDialog> dialog(new DriverDialog(owner, title));
    fill(*dialog);
    dialog->Run();
    delete dialog.data();
}

void AddControls(DriverDialog& dialog, const QList<PictureControl>& controls, const DriverDialog::Apply& apply)
{
    for (const PictureControl& control : controls)
        dialog.AddControl(control, apply);
}

bool ApplyToTestPicture(quint32 id, int value)
{
    TestDevice().SetControl(id, value);
    return true;
}
} // namespace

void ShowStreamDialog(QWidget* owner, const VideoDevice& device, const VideoMode& mode, StreamChoice& choice,
                      bool& deinterlaces, const std::shared_ptr<VideoDevices>& devices)
{
    QList<VideoMode> rates;
    QStringList names;
    for (const VideoMode& other : device.modes) {
        if (!other.IsSamePicture(mode) || other.rateNumerator == 0)
            continue;
        rates.append(other);
        names.append(u"초당 %1 프레임"_s.arg(other.FramesPerSecond(), 0, 'g', 4));
    }
    const int present = int(rates.indexOf(choice.Applied(device.name, mode)));
    QList<VideoStandard> standards;
    QStringList standardNames;
    int presentStandard = -1;
    if (!device.isTestPicture) {
        const V4l2Device opened(devices->Calls(), device.node);
        standards = opened.Standards();
        const quint64 chosen = choice.Standard(device.name) != 0 ? choice.Standard(device.name) : opened.Standard();
        for (const VideoStandard& standard : standards) {
            if (standard.id == chosen)
                presentStandard = int(standardNames.size());
            standardNames.append(standard.name);
        }
    }
    RunDialog(
        owner, u"기타설정1"_s, [&, isTestPicture = device.isTestPicture, name = device.name](DriverDialog& dialog) {
            if (isTestPicture)
                AddControls(dialog, TestDevice().StreamControls(), ApplyToTestPicture);
            if (!rates.isEmpty() && !isTestPicture)
                dialog.AddChoice(u"프레임 속도"_s, names, present,
                                 [&choice, &rates, name](int index) { choice.Choose(name, rates.at(index)); });
            // A running stream refuses another standard; the next start sets it.
            if (!standards.isEmpty())
                dialog.AddChoice(u"영상방식"_s, standardNames, presentStandard, [&choice, &standards, name](int index) {
                    choice.ChooseStandard(name, standards.at(index).id);
                });
            if (!isTestPicture)
                dialog.AddOption(u"인터레이스 영상의 빗살무늬 없애기"_s, deinterlaces,
                                 [&deinterlaces](bool on) { deinterlaces = on; });
        });
}

void ShowPictureDialog(QWidget* owner, const VideoDevice& device, const std::shared_ptr<VideoDevices>& devices)
{
    QList<PictureControl> controls = TestDevice().PictureControls();
    DriverDialog::Apply apply = ApplyToTestPicture;
    if (!device.isTestPicture) {
        controls = V4l2Device(devices->Calls(), device.node).Controls();
        apply = [devices, node = device.node](quint32 id, int value) {
            try {
                return V4l2Device(devices->Calls(), node).SetControl(id, value);
            } catch (const PlatformError&) {
                return false; // Unplugged while the dialog stands.
            }
        };
    }
    RunDialog(owner, u"기타설정2"_s, [&](DriverDialog& dialog) { AddControls(dialog, controls, apply); });
}
