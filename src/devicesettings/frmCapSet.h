#pragma once

#include "frame/forms.h"

class QComboBox;
class VideoCap;

/// "장치설정": the operator chooses device, format and input by their positions in the lists of the video control. What
/// is chosen goes into `DeviceSettings` and `CapSet.ini`; the device itself is left alone.
class frmCapSet : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmCapSet";

    frmCapSet();

protected:
    void Form_Load() override;
    /// Escape is "취소".
    void keyPressEvent(QKeyEvent* event) override;

private:
    void BuildControls();
    void FillDeviceLists();
    void TakePositions();

    QComboBox* m_cmbDevices = nullptr;
    QComboBox* m_cmbSizes = nullptr;
    QComboBox* m_cmbColors = nullptr;
    QComboBox* m_cmbSources = nullptr;
};

/// Shows the screen for that control, and returns when it is closed.
void ShowDeviceSettings(VideoCap& capture);
