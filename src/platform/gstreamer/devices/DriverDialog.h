#pragma once

#include "platform/gstreamer/devices/PictureControl.h"
#include "platform/gstreamer/devices/VideoDevices.h"
#include "platform/gstreamer/devices/VideoMode.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QFormLayout;
class QWidget;

/// A small modal dialog of a device's properties, each of which acts at once.
class DriverDialog : public QDialog
{
    Q_OBJECT

public:
    /// `apply` gives false when the device refuses; the shown value then goes back.
    using Apply = std::function<bool(quint32 control, int value)>;

    DriverDialog(QWidget* owner, const QString& title);

    void AddControl(const PictureControl& control, const Apply& apply);
    void AddOption(const QString& label, bool present, const std::function<void(bool)>& choose);
    void AddChoice(const QString& label, const QStringList& names, int present, const std::function<void(int)>& choose);
    /// Runs the dialog until it is closed; says so when it holds nothing to change.
    void Run();

private:
    QCheckBox* AddBox(const QString& label, bool ticked);
    void AddSwitch(const PictureControl& control, const Apply& apply);
    void AddSlider(const PictureControl& control, const Apply& apply);

    QFormLayout* m_rows;
};

/// The window of that handle; the one that holds `control` when there is none.
QWidget* FindOwner(int handle, QWidget* control);

/// How the stream runs: the frame rate among those of the format, the television standard, and whether interlaced
/// pictures are deinterlaced; the next start applies them. Throws PlatformError when the device can't be asked.
void ShowStreamDialog(QWidget* owner, const VideoDevice& device, const VideoMode& mode, StreamChoice& choice,
                      bool& deinterlaces, const std::shared_ptr<VideoDevices>& devices);
/// What the picture looks like. Throws PlatformError when the device can't be asked.
void ShowPictureDialog(QWidget* owner, const VideoDevice& device, const std::shared_ptr<VideoDevices>& devices);
