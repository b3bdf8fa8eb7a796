#pragma once

#include "frame/forms.h"

#include <array>

class AdoRecordset;
class fpSpread;
class QLineEdit;

/// "캡쳐소견서조회...": the list of all reports. The report chosen is in `FindingsRecord` when the form has closed.
class frmSoFind : public StationForm
{
    Q_OBJECT

public:
    static constexpr const char16_t* FormName = u"frmSoFind";

    frmSoFind();

    /// Fills the list with all reports, newest first. False, with a message, when there is none.
    bool FillAll();

    fpSpread& sprSo() { return *m_sprSo; }

protected:
    void Form_Load() override;
    void Form_Unload() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildControls();
    void ConnectControls();

    /// Writes the rows into the list, serving events before each. False when a newer fill, or the end of the form, has
    /// ended this one.
    bool WriteRows(AdoRecordset& rows);
    void SearchFindings(int key, const QString& value);
    void LoadFindingsByNumber(const QString& number);

    void ShowSearchBox(int x, int y);
    void RunSearchBox(int key);
    void HideSearchBox(int key);
    void OpenRow(int row);

    fpSpread* m_sprSo = nullptr;
    std::array<QLineEdit*, 6> m_txtSoFind = {};
};
